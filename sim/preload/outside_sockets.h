// Sockets that lead out of the world, to a server that lives in real time, such as a database's:
// time stands still while one is asked.
//
// Which they are says PAGERSIM_OUTSIDE: the folder of a server's socket, or a TCP port.
#ifndef PAGERFWD_SIM_PRELOAD_OUTSIDE_SOCKETS_H
#define PAGERFWD_SIM_PRELOAD_OUTSIDE_SOCKETS_H

#include <sys/socket.h>

#include <array>
#include <atomic>
#include <cstddef>

#include "sim/world/descriptors.h"

namespace pagersim {

// Threads    May be used by anybody at any time.
class OutsideSockets {
 public:
    static bool IsNamed(const sockaddr* address, socklen_t size);

    static bool Has(int fd) {
        return IsIn(fd) && sockets_[static_cast<size_t>(fd)].load(std::memory_order_relaxed);
    }
    static void Note(int fd) { Set(fd, true); }
    static void Forget(int fd) { Set(fd, false); }

 private:
    static bool IsIn(int fd) { return fd >= 0 && fd < kDescriptorLimit; }
    static void Set(int fd, bool outside) {
        if (IsIn(fd)) {
            sockets_[static_cast<size_t>(fd)].store(outside, std::memory_order_relaxed);
        }
    }

    static inline std::array<std::atomic<bool>, kDescriptorLimit> sockets_{};
};

}  // namespace pagersim

#endif
