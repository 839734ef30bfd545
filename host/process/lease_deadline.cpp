// The shared deadline. Tested by tests/unit/host/lease_deadline_test.cpp.
#include "host/process/lease_deadline.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <system_error>
#include <utility>

namespace host {
namespace {

void Require(bool done) {
    if (!done) {
        throw std::system_error(errno, std::generic_category(), "the deadline of a lease");
    }
}

}  // namespace

LeaseDeadline::LeaseDeadline() : file_(memfd_create("lease", MFD_CLOEXEC)) {
    Require(file_.IsOpen() && ftruncate(file_.Number(), sizeof(Shared)) == 0);
    Map();
}

LeaseDeadline::LeaseDeadline(Descriptor file) : file_(std::move(file)) {
    Map();
}

LeaseDeadline::~LeaseDeadline() {
    munmap(shared_, sizeof(Shared));
}

// New memory is all zeroes, which is an instant long over.
void LeaseDeadline::Map() {
    void* const memory =
        mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED, file_.Number(), 0);
    Require(memory != MAP_FAILED);
    shared_ = static_cast<Shared*>(memory);
}

LeaseDeadline::Instant LeaseDeadline::Now() {
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    constexpr int64_t kMs = 1000;
    constexpr int64_t kNsInMs = 1000000;
    return Instant(int64_t{now.tv_sec} * kMs + now.tv_nsec / kNsInMs);
}

}  // namespace host
