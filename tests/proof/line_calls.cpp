// write and read, wrapped at link time.
#include "tests/proof/line_calls.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace proof {

Blocking blocking;
InputOutputErrors read_errors;
InputOutputErrors write_errors;
std::vector<LineWrite> line_writes;

}  // namespace proof

using namespace proof;

extern "C" {
ssize_t __real_write(int fd, const void* bytes, size_t count);
ssize_t __wrap_write(int fd, const void* bytes, size_t count) {
    if (isatty(fd) == 0) {
        return __real_write(fd, bytes, count);
    }
    line_writes.push_back({std::string(static_cast<const char*>(bytes), count), read_errors.calls});
    if (write_errors.MeetsOne()) {
        errno = EIO;
        return -1;
    }
    const bool is_slow = blocking.writes_before >= 0 && blocking.writes >= blocking.writes_before;
    if (is_slow && blocking.tries > 0) {
        --blocking.tries;
        errno = EAGAIN;
        return -1;
    }
    ++blocking.writes;
    return __real_write(fd, bytes, is_slow ? std::min<size_t>(count, 3) : count);
}

ssize_t __real_read(int fd, void* bytes, size_t count);
ssize_t __wrap_read(int fd, void* bytes, size_t count) {
    if (isatty(fd) == 0) {
        return __real_read(fd, bytes, count);
    }
    if (!read_errors.MeetsOne()) {
        return __real_read(fd, bytes, count);
    }
    __real_read(fd, bytes, 0);  // takes nothing, but tells the clock that there was nothing
    errno = EIO;
    return -1;
}
}
