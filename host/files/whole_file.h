// Writing a file so that no reader ever sees half of it.
#ifndef PAGERFWD_HOST_FILES_WHOLE_FILE_H
#define PAGERFWD_HOST_FILES_WHOLE_FILE_H

#include <sys/types.h>

#include <string>

namespace host {

// Puts the text in the place of what is there, under a name that nobody can foresee until it is
// complete and on the disk. mode: whatever the umask.
//
// Errors     FileError, naming the file; what was there stays.
void WriteWhole(const std::string& path, const std::string& text, mode_t mode);

// Numbers and texts of a site are for its owner and group.
inline constexpr mode_t kPrivate = 0640;
inline constexpr mode_t kForEveryone = 0644;

}  // namespace host

#endif
