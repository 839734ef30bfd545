// The process's own select. Its dynamic list shows it to the library, which is loaded later and so
// finds it before the C library's.
#include <dlfcn.h>
#include <gnu/libc-version.h>
#include <sys/select.h>

#include "host/platform/patient_select.h"

namespace {

// Whether a function is the C library's.
bool IsTheSystems(host::SystemSelect function) {
    Dl_info found{};
    Dl_info system{};
    return dladdr(reinterpret_cast<void*>(function), &found) != 0 &&
           dladdr(reinterpret_cast<void*>(&gnu_get_libc_version), &system) != 0 &&
           found.dli_fbase == system.dli_fbase;
}

struct Next {
    host::SystemSelect select = reinterpret_cast<host::SystemSelect>(dlsym(RTLD_NEXT, "select"));
    bool is_systems = IsTheSystems(select);
};

}  // namespace

// Another one may stand between the process and the system, such as a simulator with a time of its
// own: then waiting is its business, and every call goes to it as it came.
extern "C" int select(int limit, fd_set* read, fd_set* write, fd_set* except, timeval* timeout) {
    static const Next next;
    return next.is_systems ? host::PatientSelect(next.select, limit, read, write, except, timeout)
                           : next.select(limit, read, write, except, timeout);
}
