// Points at which a process of a site can be killed, as the program that keeps the site arms them.
// A file that the processes of the site share: kill_points.cpp is preloaded into them.
#ifndef PAGERFWD_TESTS_PROOF_KILL_POINTS_H
#define PAGERFWD_TESTS_PROOF_KILL_POINTS_H

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "tests/proof/process_role.h"

namespace proof {

// What a process is about to do, or has just done. The store is a file that is written and synced,
// or a server: a write is what it is asked, a sync the hearing of an answer. kWorld: it asks the
// simulation for something: bytes on the line, the device, time that passes.
enum class PointKind { kStoreWrite, kStoreSync, kOtherWrite, kWorld };
constexpr size_t kPointKinds = 4;

constexpr const char* kPointsVariable = "PAGERFWD_KILL_POINTS";  // names the file

// Lies in the file as it is.
struct KillPoints {
    std::array<std::atomic<int32_t>, kRoles> processes{};  // their numbers; 0: none
    // Armed while `left` is above 0: the so manyth point of this kind in this role.
    std::atomic<int32_t> left{0};
    std::atomic<uint32_t> role{0};
    std::atomic<uint32_t> kind{0};
    std::atomic<uint32_t> victims{0};  // a bit for each role
    std::atomic<int32_t> kills{0};     // so far
    // How often a line of this role has ended itself, since its node's lease was over.
    std::array<std::atomic<int32_t>, kRoles> fenced{};
};

}  // namespace proof

#endif
