// Which thread is calling.
#include "sim/world/program_thread.h"

namespace pagersim {
namespace {

thread_local ProgramThread* me = nullptr;

}  // namespace

ProgramThread* Me() {
    return me;
}

void SetMe(ProgramThread* thread) {
    me = thread;
}

}  // namespace pagersim
