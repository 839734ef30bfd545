// Finds the C library's own functions.
#include "sim/preload/real_calls.h"

#include <dlfcn.h>

#include <atomic>

namespace pagersim {
namespace {

RealCalls table;
std::atomic<bool> filled{false};

template <typename Function>
void Find(const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

template <typename Function>
void FindCondition(const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlvsym(RTLD_NEXT, name, "GLIBC_2.3.2"));
}

// Twice at once does no harm: both find the same.
void Fill() {
#define PAGERSIM_FIND(name) Find(#name, table.name);
#define PAGERSIM_FIND_CONDITION(name) FindCondition(#name, table.name);
    PAGERSIM_REAL_CALLS(PAGERSIM_FIND)
    PAGERSIM_REAL_CONDITION_CALLS(PAGERSIM_FIND_CONDITION)
#undef PAGERSIM_FIND
#undef PAGERSIM_FIND_CONDITION
    filled.store(true, std::memory_order_release);
}

}  // namespace

const RealCalls& Real() {
    if (!filled.load(std::memory_order_acquire)) {
        Fill();
    }
    return table;
}

}  // namespace pagersim
