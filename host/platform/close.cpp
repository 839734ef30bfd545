// The process's own close, for processes that take turns at a device with the
// library. Its dynamic list shows it to the library.
#include <dlfcn.h>

#include "host/platform/device_turn.h"

extern "C" int close(int file) {
    using Close = int (*)(int);
    static const auto next = reinterpret_cast<Close>(dlsym(RTLD_NEXT, "close"));
    const int result = next(file);
    host::NoteClosed(file);
    return result;
}
