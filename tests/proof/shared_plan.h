// A plan that the processes of a site share, in a file which a variable of theirs names: made by
// the program that keeps the site, read by what is preloaded into them.
#ifndef PAGERFWD_TESTS_PROOF_SHARED_PLAN_H
#define PAGERFWD_TESTS_PROOF_SHARED_PLAN_H

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <new>

namespace proof {

template <typename Plan>
Plan* MapPlan(int file) {
    void* const shared = mmap(nullptr, sizeof(Plan), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    return shared == MAP_FAILED ? nullptr : static_cast<Plan*>(shared);
}

// file: an absolute path. Null: it can't be made.
template <typename Plan>
Plan* MakePlan(const char* file, const char* variable) {
    const int made = open(file, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    Plan* const plan =
        made >= 0 && ftruncate(made, sizeof(Plan)) == 0 ? MapPlan<Plan>(made) : nullptr;
    setenv(variable, file, 1);
    return plan == nullptr ? nullptr : new (plan) Plan;
}

// Null: this process has none.
template <typename Plan>
Plan* FindPlan(const char* variable) {
    const char* const file = std::getenv(variable);
    return file == nullptr ? nullptr : MapPlan<Plan>(open(file, O_RDWR | O_CLOEXEC));
}

}  // namespace proof

#endif
