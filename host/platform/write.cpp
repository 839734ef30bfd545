// The process's own write. Its dynamic list shows it to the library.
#include <dlfcn.h>
#include <unistd.h>

#include "host/platform/fence.h"
#include "host/platform/trace_file.h"

extern "C" ssize_t write(int file, const void* bytes, size_t size) {
    static const auto next = reinterpret_cast<host::SystemWrite>(dlsym(RTLD_NEXT, "write"));
    host::PassFence();
    return host::WriteAsOneEntry(next, file, {static_cast<const char*>(bytes), size});
}
