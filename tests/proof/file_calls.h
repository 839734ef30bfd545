// Looks on at the writes and syncs of the files of this process: the functions of the C library are
// replaced by ones that look, then do the same.
#ifndef PAGERFWD_TESTS_PROOF_FILE_CALLS_H
#define PAGERFWD_TESTS_PROOF_FILE_CALLS_H

#include <cstdint>

namespace proof {

enum class FileDeed { kWrite, kSync };

// before and after may be null. Called by the thread that makes the call; what they do with files
// themselves is not looked at. Not while another thread may write.
using FileHook = void (*)(FileDeed deed, int fd);
void SetFileHooks(FileHook before, FileHook after);

// Which of these calls the file system refuses for want of space. Null: none.
// end: of what is written, as an offset in the file; 0 of a sync.
using FileRefusal = bool (*)(FileDeed deed, int fd, int64_t end);
void SetFileRefusal(FileRefusal refuses);

// A full disk: what lies within a file is written, what would make it longer isn't.
bool WouldGrow(FileDeed deed, int fd, int64_t end);

// From now on a sync answers that it is done without doing it. What a killed process has written is
// there either way: only a power cut tells the difference.
void SkipSyncs();

}  // namespace proof

#endif
