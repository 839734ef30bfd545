// The process's own poll, for processes that hand over pages one by one. Their
// dynamic list shows it to the library.
#include <dlfcn.h>

#include "host/platform/bell.h"

extern "C" int poll(pollfd* descriptors, nfds_t count, int timeout) {
    static const auto next = reinterpret_cast<host::SystemPoll>(dlsym(RTLD_NEXT, "poll"));
    return host::PollUnlessRung(next, descriptors, count, timeout);
}
