// Looks on at the writes and syncs of the files of this process: the functions of the C library are
// replaced by ones that look, then do the same.
#ifndef PAGERFWD_TESTS_PROOF_FILE_CALLS_H
#define PAGERFWD_TESTS_PROOF_FILE_CALLS_H

namespace proof {

enum class FileDeed { kWrite, kSync };

// before and after may be null. Called by the thread that makes the call; what they do with files
// themselves is not looked at. Not while another thread may write.
using FileHook = void (*)(FileDeed deed, int fd);
void SetFileHooks(FileHook before, FileHook after);

// From now on a sync answers that it is done without doing it. What a killed process has written is
// there either way: only a power cut tells the difference.
void SkipSyncs();

}  // namespace proof

#endif
