// The service manager's socket. Tested by tests/unit/host/systemd_test.cpp.
#include "host/process/systemd.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace host {

bool HasManager() {
    return std::getenv("NOTIFY_SOCKET") != nullptr;
}

void NotifyManager(const std::string& message) {
    const char* const path = std::getenv("NOTIFY_SOCKET");
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path == nullptr || path[0] == '\0' || std::strlen(path) >= sizeof address.sun_path) {
        return;
    }
    std::memcpy(address.sun_path, path, std::strlen(path));
    if (path[0] == '@') {
        address.sun_path[0] = '\0';  // a name that lies in no folder
    }
    const int file = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (file < 0) {
        return;
    }
    const size_t size = offsetof(sockaddr_un, sun_path) + std::strlen(path);
    sendto(file, message.data(), message.size(), MSG_NOSIGNAL | MSG_DONTWAIT,
           reinterpret_cast<const sockaddr*>(&address), static_cast<socklen_t>(size));
    close(file);
}

Heartbeat::Heartbeat() {
    const char* const whom = std::getenv("WATCHDOG_PID");
    const char* const limit = std::getenv("WATCHDOG_USEC");
    if (limit == nullptr || (whom != nullptr && std::to_string(getpid()) != whom)) {
        return;
    }
    const long long microseconds = std::strtoll(limit, nullptr, 10);
    if (microseconds > 0) {
        between_ = static_cast<std::time_t>(microseconds / 2 / 1000000);
    }
}

void Heartbeat::Beat() {
    const std::time_t now = std::time(nullptr);
    const bool was_set_back = now < last_;
    if (between_ && (was_set_back || now - last_ >= *between_)) {
        NotifyManager("WATCHDOG=1");
        last_ = now;
    }
}

}  // namespace host
