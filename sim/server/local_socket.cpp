// Making the connections of a world. Tested by tests/unit/sim/world_server_test.cpp.
#include "sim/server/local_socket.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "sim/world/socket_address.h"

namespace pagersim {

int Listen(const std::string& path) {
    if (!FitsAddress(path)) {
        errno = ENAMETOOLONG;
        return -1;
    }
    const sockaddr_un address = AddressOf(path);
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    constexpr int kWaiting = 128;
    if (fd < 0 || bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(fd, kWaiting) != 0) {
        return -1;
    }
    return fd;
}

int ConnectTo(const std::string& path) {
    const sockaddr_un address = AddressOf(path);
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    TellSender(fd);
    if (fd < 0 || connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    return fd;
}

void TellSender(int fd) {
    const int on = 1;
    setsockopt(fd, SOL_SOCKET, SO_PASSCRED, &on, sizeof on);
}

pid_t PeerOf(int fd) {
    ucred peer{};
    socklen_t size = sizeof peer;
    const bool known = getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0;
    return known && peer.uid == geteuid() ? peer.pid : 0;
}

}  // namespace pagersim
