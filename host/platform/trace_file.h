// The library's trace, as this process writes it: one time at the beginning of a line, one entry.
//
// The library writes an entry by one call: its time of day, a tab, and a text, in which what a far
// end has said stands raw. Whatever that is, it must not begin an entry of its own, which a reader
// could not tell from the library's: sent, port taken, given up. So within an entry a tab in the
// ninth place of a line, where the one behind a time stands, becomes a blank.
#ifndef PAGERFWD_HOST_PLATFORM_TRACE_FILE_H
#define PAGERFWD_HOST_PLATFORM_TRACE_FILE_H

#include <sys/types.h>

#include <functional>
#include <string_view>

namespace host {

using SystemWrite = ssize_t (*)(int, const void*, size_t);

// To be told of each file that the library opens. The trace is opened anew for each entry, by the
// thread that writes it, and closed behind it.
void NoteOpened(const char* path, int flags, int file);

// Is told of each entry when it has been written, by the thread that writes it. To be set while one
// thread runs.
void SetTraceListener(std::function<void(std::string_view)> listener);

// What `system` would do, but for an entry of the trace. An entry that there is no memory for is
// not written: ENOMEM.
ssize_t WriteAsOneEntry(SystemWrite system, int file, std::string_view bytes);

}  // namespace host

#endif
