// Bells between processes. Tested by tests/unit/host/bell_socket_test.cpp.
#include "host/process/bell_socket.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace host {

std::pair<BellSocket, BellSocket> BellSocket::Pair() {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) != 0) {
        throw std::system_error(errno, std::generic_category(), "a bell for a line");
    }
    return {BellSocket(Descriptor(ends[0])), BellSocket(Descriptor(ends[1]))};
}

void BellSocket::Ring() const {
    const char bell = 0;
    static_cast<void>(send(Number(), &bell, 1, MSG_NOSIGNAL | MSG_DONTWAIT));
}

BellSocket::Heard BellSocket::Listen() const {
    std::array<char, 64> bells{};
    Heard heard = Heard::kNothing;
    for (;;) {
        const ssize_t size = recv(Number(), bells.data(), bells.size(), MSG_DONTWAIT);
        if (size > 0) {
            heard = Heard::kBell;
        } else if (size < 0 && errno == EINTR) {
            continue;
        } else if (size == 0 || (errno != EAGAIN && errno != EWOULDBLOCK)) {
            return Heard::kEnd;
        } else {
            return heard;
        }
    }
}

}  // namespace host
