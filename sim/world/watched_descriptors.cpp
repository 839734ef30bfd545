// What processes of a shared world wait for outside the simulation. Tested by
// tests/unit/sim/shared_world_test.cpp.
#include "sim/world/watched_descriptors.h"

#include <sys/epoll.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "sim/preload/real_calls.h"
#include "sim/world/link.h"

namespace pagersim {
namespace {

constexpr int kMostEvents = 64;

bool AreSame(const std::vector<pollfd>& one, const std::vector<pollfd>& other) {
    return std::equal(
        one.begin(), one.end(), other.begin(), other.end(),
        [](const pollfd& a, const pollfd& b) { return a.fd == b.fd && a.events == b.events; });
}

}  // namespace

void WatchedDescriptors::Begin(int world, uint32_t member) {
    world_ = MovedUp(world);
    member_ = member;
    Make();
}

void WatchedDescriptors::Make() {
    own_ = MovedUp(epoll_create1(EPOLL_CLOEXEC));
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.u32 = member_;
    epoll_ctl(world_, EPOLL_CTL_ADD, own_, &event);
}

void WatchedDescriptors::Leave() {
    for (int* const fd : {&world_, &own_}) {
        if (*fd >= 0) {
            Real().close(std::exchange(*fd, -1));
        }
    }
    latest_.clear();
    events_.clear();
}

// Two threads may wait for the same one.
void WatchedDescriptors::Set(const std::vector<pollfd>& descriptors) {
    if (AreSame(descriptors, latest_)) {
        return;
    }
    latest_ = descriptors;
    std::map<int, uint32_t> wanted;
    for (const pollfd& each : descriptors) {
        if (each.fd >= 0) {
            wanted[each.fd] |= static_cast<uint16_t>(each.events);
        }
    }
    for (const auto& [fd, events] : events_) {
        const auto still = wanted.find(fd);
        if (still == wanted.end() || still->second != events) {
            epoll_ctl(own_, EPOLL_CTL_DEL, fd, nullptr);
        }
    }
    for (const auto& [fd, events] : wanted) {
        epoll_event event{};
        event.events = events;
        epoll_ctl(own_, EPOLL_CTL_ADD, fd, &event);  // One that is in it stays.
    }
    events_ = std::move(wanted);
}

void WatchedDescriptors::Forget(int fd) {
    if (events_.erase(fd) > 0) {
        epoll_ctl(own_, EPOLL_CTL_DEL, fd, nullptr);
        latest_.clear();
    }
}

void WatchedDescriptors::Renew() {
    if (own_ >= 0) {
        Real().close(std::exchange(own_, -1));
        latest_.clear();
        events_.clear();
        Make();
    }
}

void WatchedDescriptors::MoveAway(int fd) {
    if (fd == world_) {
        world_ = MovedUp(fd, fd + 1);
    } else if (fd == own_) {
        Renew();  // It is known by its number in the world's set.
    }
}

bool WatchedDescriptors::OthersAreReady() const {
    std::array<epoll_event, kMostEvents> ready{};
    const int count = Real().epoll_wait(world_, ready.data(), kMostEvents, 0);
    return std::any_of(ready.begin(), ready.begin() + std::max(count, 0),
                       [this](const epoll_event& each) { return each.data.u32 != member_; });
}

}  // namespace pagersim
