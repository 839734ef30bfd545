// Memory that runs out, met where a step has an outcome to give for it: a page that fails, a call
// that answers no. Everywhere else std::bad_alloc passes through, and each scope gives back what it
// holds.
#ifndef PAGERFWD_LINUX_OUT_OF_MEMORY_H
#define PAGERFWD_LINUX_OUT_OF_MEMORY_H

#include <new>

// Runs the step. False: there was not enough memory to end it.
template <typename Step>
bool MemorySufficesFor(Step step) {
    try {
        step();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

#endif
