// Names of sockets. Tested by tests/unit/sim/outside_test.cpp.
#include "sim/preload/outside_sockets.h"

#include <netinet/in.h>
#include <sys/un.h>

#include <cstdlib>
#include <string_view>

namespace pagersim {
namespace {

bool IsInFolder(const sockaddr_un& address, std::string_view folder) {
    const std::string_view path(address.sun_path);
    return path.substr(0, folder.size()) == folder && path.substr(folder.size(), 1) == "/";
}

bool IsAtPort(in_port_t port, const char* named) {
    return ntohs(port) == std::strtoul(named, nullptr, 10);
}

}  // namespace

bool OutsideSockets::IsNamed(const sockaddr* address, socklen_t size) {
    const char* const named = std::getenv("PAGERSIM_OUTSIDE");
    if (named == nullptr || *named == '\0' || size < sizeof(sa_family_t)) {
        return false;
    }
    switch (address->sa_family) {
        case AF_UNIX:
            return IsInFolder(*reinterpret_cast<const sockaddr_un*>(address), named);
        case AF_INET:
            return IsAtPort(reinterpret_cast<const sockaddr_in*>(address)->sin_port, named);
        case AF_INET6:
            return IsAtPort(reinterpret_cast<const sockaddr_in6*>(address)->sin6_port, named);
        default:
            return false;
    }
}

}  // namespace pagersim
