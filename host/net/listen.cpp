// Listening. Tested by tests/unit/host/web_server_test.cpp and cli_web_test.cpp.
#include "host/net/listen.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace host {
namespace {

constexpr std::string_view kUnix = "unix:";
constexpr int kWaiting = 128;

// An address of any kind, as the system takes it.
struct Address {
    sockaddr_storage storage{};
    socklen_t size = 0;

    const sockaddr* Get() const { return reinterpret_cast<const sockaddr*>(&storage); }
    sockaddr* Get() { return reinterpret_cast<sockaddr*>(&storage); }
};

std::optional<uint16_t> PortIn(std::string_view text) {
    uint16_t port = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, port);
    return read.ec == std::errc() && read.ptr == end ? std::optional<uint16_t>(port) : std::nullopt;
}

std::optional<Address> UnixAddress(const std::string& path) {
    Address address;
    auto& un = reinterpret_cast<sockaddr_un&>(address.storage);
    if (path.empty() || path.size() >= sizeof un.sun_path) {
        return std::nullopt;
    }
    un.sun_family = AF_UNIX;
    std::memcpy(&un.sun_path[0], path.c_str(), path.size() + 1);
    address.size = static_cast<socklen_t>(sizeof un);
    return address;
}

std::optional<Address> InternetAddress(const std::string& text) {
    const size_t colon = text.rfind(':');
    const std::optional<uint16_t> port =
        colon == std::string::npos ? std::nullopt : PortIn(text.substr(colon + 1));
    if (!port) {
        return std::nullopt;
    }
    std::string host = text.substr(0, colon);
    Address address;
    auto& in = reinterpret_cast<sockaddr_in&>(address.storage);
    if (inet_pton(AF_INET, host.c_str(), &in.sin_addr) == 1) {
        in.sin_family = AF_INET;
        in.sin_port = htons(*port);
        address.size = static_cast<socklen_t>(sizeof in);
        return address;
    }
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
        host = host.substr(1, host.size() - 2);
    }
    auto& in6 = reinterpret_cast<sockaddr_in6&>(address.storage);
    if (inet_pton(AF_INET6, host.c_str(), &in6.sin6_addr) != 1) {
        return std::nullopt;
    }
    in6.sin6_family = AF_INET6;
    in6.sin6_port = htons(*port);
    address.size = static_cast<socklen_t>(sizeof in6);
    return address;
}

Descriptor MakeSocket(int family) {
    return Descriptor(socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

// Only a socket, and only one that nobody listens on.
void RemoveLeftBehind(const std::string& path, const Address& address) {
    struct stat status {};
    const Descriptor probe = MakeSocket(AF_UNIX);
    if (lstat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode) && probe.IsOpen() &&
        connect(probe.Number(), address.Get(), address.size) != 0 && errno == ECONNREFUSED) {
        unlink(path.c_str());
    }
}

}  // namespace

Descriptor Listen(const std::string& text) {
    const bool is_unix = text.compare(0, kUnix.size(), kUnix) == 0;
    const std::string path = is_unix ? text.substr(kUnix.size()) : "";
    const std::optional<Address> address = is_unix ? UnixAddress(path) : InternetAddress(text);
    if (!address) {
        throw ListenError(text +
                          ": no address to listen on; write 127.0.0.1:8420, [::1]:8420 or "
                          "unix:/run/pagerfwd/web.sock");
    }
    if (is_unix) {
        RemoveLeftBehind(path, *address);
    }
    Descriptor made = MakeSocket(address->storage.ss_family);
    const int on = 1;
    if (!made.IsOpen() ||
        setsockopt(made.Number(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
        bind(made.Number(), address->Get(), address->size) != 0 ||
        listen(made.Number(), kWaiting) != 0) {
        throw ListenError(text + ": can't be listened on: " + std::strerror(errno));
    }
    return made;
}

std::vector<NamedSocket> SocketsOfManager() {
    constexpr int kFirst = 3;
    constexpr int kMost = 16;
    const char* const process = std::getenv("LISTEN_PID");
    const char* const count = std::getenv("LISTEN_FDS");
    std::vector<NamedSocket> sockets;
    if (process == nullptr || count == nullptr || std::to_string(getpid()) != process) {
        return sockets;
    }
    const char* const given = std::getenv("LISTEN_FDNAMES");
    std::string_view names = given == nullptr ? "" : given;
    const std::optional<uint16_t> number = PortIn(count);
    for (int i = 0; number && i < *number && i < kMost; ++i) {
        const int descriptor = kFirst + i;
        static_cast<void>(fcntl(descriptor, F_SETFD, FD_CLOEXEC));
        static_cast<void>(fcntl(descriptor, F_SETFL, O_NONBLOCK));
        const size_t end = std::min(names.find(':'), names.size());
        sockets.push_back({std::string(names.substr(0, end)), Descriptor(descriptor)});
        names.remove_prefix(std::min(end + 1, names.size()));
    }
    return sockets;
}

std::string AddressOf(const Descriptor& socket) {
    Address address;
    address.size = sizeof address.storage;
    if (getsockname(socket.Number(), address.Get(), &address.size) != 0) {
        return "a socket";
    }
    std::array<char, INET6_ADDRSTRLEN> host{};
    if (address.storage.ss_family == AF_INET) {
        const auto& in = reinterpret_cast<const sockaddr_in&>(address.storage);
        inet_ntop(AF_INET, &in.sin_addr, host.data(), host.size());
        return std::string(host.data()) + ":" + std::to_string(ntohs(in.sin_port));
    }
    if (address.storage.ss_family == AF_INET6) {
        const auto& in6 = reinterpret_cast<const sockaddr_in6&>(address.storage);
        inet_ntop(AF_INET6, &in6.sin6_addr, host.data(), host.size());
        return "[" + std::string(host.data()) + "]:" + std::to_string(ntohs(in6.sin6_port));
    }
    const auto& un = reinterpret_cast<const sockaddr_un&>(address.storage);
    return std::string(kUnix) + &un.sun_path[0];
}

}  // namespace host
