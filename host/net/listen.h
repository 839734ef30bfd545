// Sockets that a server listens on.
//
// Errors     ListenError, naming the address.
#ifndef PAGERFWD_HOST_NET_LISTEN_H
#define PAGERFWD_HOST_NET_LISTEN_H

#include <stdexcept>
#include <string>
#include <vector>

#include "host/files/descriptor.h"

namespace host {

class ListenError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

// "127.0.0.1:8420", "[::1]:8420", or "unix:/run/pagerfwd/web.sock". A socket that a process has
// left behind is removed, one that is listened on is not. Port 0: one that is free.
Descriptor Listen(const std::string& address);

// Those that the service manager has opened for this process; none without one. The name is that
// which the manager gives to a socket: "snpp", say; empty where it gives none.
struct NamedSocket {
    std::string name;
    Descriptor socket;
};
std::vector<NamedSocket> SocketsOfManager();

// What a socket listens on: as above.
std::string AddressOf(const Descriptor& socket);

}  // namespace host

#endif
