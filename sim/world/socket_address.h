// The address of a world's socket.
#ifndef PAGERFWD_SIM_WORLD_SOCKET_ADDRESS_H
#define PAGERFWD_SIM_WORLD_SOCKET_ADDRESS_H

#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>
#include <string>

namespace pagersim {

// What is too long for one is cut off.
inline sockaddr_un AddressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    return address;
}

inline bool FitsAddress(const std::string& path) {
    return path.size() < sizeof(sockaddr_un::sun_path);
}

}  // namespace pagersim

#endif
