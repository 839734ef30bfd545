// Real descriptors that processes of a shared world wait for.
#ifndef PAGERFWD_SIM_WORLD_WATCHED_DESCRIPTORS_H
#define PAGERFWD_SIM_WORLD_WATCHED_DESCRIPTORS_H

#include <poll.h>

#include <cstdint>
#include <map>
#include <vector>

namespace pagersim {

// Each process has a set of the descriptors that its threads wait for (epoll(7)), and all these
// sets are in one of the world's. So whoever has the turn sees by one look whether something that
// it has done, to a pipe say, lets another process go on; nobody else has to wake up for it.
//
// Threads    Every operation requires the world's lock.
class WatchedDescriptors {
 public:
    // A program begins: it is `member` in the world's set, which is a descriptor, from now on ours.
    void Begin(int world, uint32_t member);

    // After fork, in the child: the parent's are none of its.
    void Leave();

    // These are waited for from now on, and no others. Negative ones count for nothing.
    void Set(const std::vector<pollfd>& descriptors);

    // The descriptor is about to be closed.
    void Forget(int fd);

    // Drops what is in the set and isn't open in this process any more.
    void Renew();

    // Whether another process of the world could go on.
    bool OthersAreReady() const;

    // One of ours, since the program wants that number for itself.
    void MoveAway(int fd);

    bool Owns(int fd) const { return fd >= 0 && (fd == world_ || fd == own_); }

 private:
    void Make();

    int world_ = -1;
    int own_ = -1;
    uint32_t member_ = 0;
    std::vector<pollfd> latest_;
    std::map<int, uint32_t> events_;  // of each descriptor in the set
};

}  // namespace pagersim

#endif
