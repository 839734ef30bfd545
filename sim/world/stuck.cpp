// Threads that wait for each other, for ever. Tested by tests/unit/sim/locks_test.cpp.
#include "sim/world/scheduler.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace pagersim {
namespace {

const char* NameOf(WaitKind kind) {
    switch (kind) {
        case WaitKind::kSleep:
            return "sleeps";
        case WaitKind::kInput:
            return "waits for input";
        case WaitKind::kLook:
            return "looks at a quiet line";
        case WaitKind::kLock:
            return "waits for lock";
        case WaitKind::kCondition:
            return "waits for condition";
        case WaitKind::kJoin:
            return "waits for the end of thread";
        case WaitKind::kProcess:
            return "waits for another process";
        case WaitKind::kOutside:
            return "is in a call of the system";
    }
    return "";
}

}  // namespace

bool Scheduler::IsStuck() {
    CollectDescriptors();
    return running_ == 0 && descriptors_.empty() && events_.Next() == kNever &&
           std::all_of(threads_.begin(), threads_.end(), [](const auto& thread) {
               return thread->ended ||
                      (thread->wait != nullptr && thread->wait->deadline == kNever &&
                       thread->wait->kind != WaitKind::kOutside);
           });
}

void Scheduler::ReportStuck() const {
    std::fprintf(stderr, "pagersim: after %lld ms all threads wait for each other, for ever:\n",
                 static_cast<long long>(Now().count() / 1000));
    TellWaits();
    std::abort();
}

void Scheduler::TellWaits() const {
    for (const auto& thread : threads_) {
        if (thread->wait != nullptr) {
            std::fprintf(stderr, "  thread %#llx %s %p\n",
                         static_cast<unsigned long long>(thread->handle),
                         NameOf(thread->wait->kind), thread->wait->object);
        }
    }
}

}  // namespace pagersim
