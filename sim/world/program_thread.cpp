// Which thread is calling.
#include "sim/world/program_thread.h"

namespace pagersim {
namespace {

thread_local ProgramThread* this_thread = nullptr;

}  // namespace

ProgramThread* Me() {
    return this_thread;
}

void SetMe(ProgramThread* thread) {
    this_thread = thread;
}

}  // namespace pagersim
