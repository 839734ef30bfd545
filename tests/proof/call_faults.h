// Calls of the system that fail in the processes of a site, as the program that keeps the site
// plans it. A file that the processes of the site share: call_faults.cpp is preloaded into them.
#ifndef PAGERFWD_TESTS_PROOF_CALL_FAULTS_H
#define PAGERFWD_TESTS_PROOF_CALL_FAULTS_H

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "tests/proof/process_role.h"

namespace proof {

// kSpawn: a process that is to be made, and the program that it is to be. kPipe: what has two ends,
// or no name. kOpen: a file or a device, or a library. The rest is what a store is made of: files
// that are read and written at a place, brought to the disk, and locked.
enum class CallKind { kSpawn, kPipe, kOpen, kRead, kWrite, kSync, kLock };
constexpr size_t kCallKinds = 7;

constexpr const char* kFaultsVariable = "PAGERFWD_CALL_FAULTS";  // names the file

// Lies in the file as it is.
struct CallFaults {
    // What fails: these calls of these processes, with this error.
    std::atomic<uint32_t> roles{0};  // a bit for each; 0: nothing fails
    std::atomic<uint32_t> kind{0};
    std::atomic<int32_t> error{0};
    // Each process counts from its site's beginning. lasting 0: the calls first, first + every,
    // first + 2 * every …; else all from the first on, for so many seconds.
    std::atomic<int32_t> first{0};
    std::atomic<int32_t> every{0};
    std::atomic<int32_t> lasting{0};
    std::atomic<int64_t> until{0};  // 0: not come to yet

    std::array<std::array<std::atomic<int32_t>, kCallKinds>, kRoles> made{};
    std::atomic<int32_t> failed{0};
};

}  // namespace proof

#endif
