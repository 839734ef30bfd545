// The process's own open, for processes that serve one line, and for the trace. Its dynamic list
// shows it to the library.
#undef _FILE_OFFSET_BITS  // or this would be open64, which the library doesn't call
#include <dlfcn.h>
#include <fcntl.h>

#include <cerrno>
#include <cstdarg>

#include "host/platform/device_turn.h"
#include "host/platform/fence.h"
#include "host/platform/own_device.h"
#include "host/platform/trace_file.h"

extern "C" int open(const char* path, int flags, ...) {
    using Open = int (*)(const char*, int, ...);
    static const auto next = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "open"));
    const char* const opened = host::OpenedFor(path);
    if (opened == nullptr) {
        errno = ENOENT;
        return -1;
    }
    va_list arguments;
    va_start(arguments, flags);
    const bool has_mode = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    const mode_t mode = has_mode ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const auto system = [&] { return next(opened, flags, mode); };
    if (opened != path) {
        host::PassFenceToOpen();
    }
    const int file = opened == path ? system() : host::OpenAtItsTurn(system);
    host::NoteOpened(path, flags, file);
    return file;
}
