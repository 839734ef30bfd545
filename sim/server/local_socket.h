// A world's socket, seen from its server.
#ifndef PAGERFWD_SIM_SERVER_LOCAL_SOCKET_H
#define PAGERFWD_SIM_SERVER_LOCAL_SOCKET_H

#include <sys/types.h>

#include <string>

namespace pagersim {

// A descriptor; or -1 and errno.
int Listen(const std::string& path);

// A connection of our own. Throws std::system_error.
int ConnectTo(const std::string& path);

// From now on each message comes with its sender's number.
void TellSender(int fd);

// The process that has made the connection; 0: unknown, or another user's.
pid_t PeerOf(int fd);

}  // namespace pagersim

#endif
