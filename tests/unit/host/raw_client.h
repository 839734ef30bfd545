// A client of a server, at a socket of the machine, that sends what it likes.
#ifndef PAGERFWD_TESTS_UNIT_HOST_RAW_CLIENT_H
#define PAGERFWD_TESTS_UNIT_HOST_RAW_CLIENT_H

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>

#include "host/files/descriptor.h"

class RawClient {
 public:
    enum class Otherwise { kFails, kNothing };
    // otherwise: what it means that nobody listens.
    explicit RawClient(const std::string& path, Otherwise otherwise = Otherwise::kFails)
        : socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(&address.sun_path[0], path.c_str(), sizeof address.sun_path - 1);
        timeval patience{20, 0};
        setsockopt(socket_.Number(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        setsockopt(socket_.Number(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
        const int refused =
            connect(socket_.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
        EXPECT_TRUE(refused == 0 || otherwise == Otherwise::kNothing) << path;
    }

    void Send(std::string_view bytes) const {
        while (!bytes.empty()) {
            const ssize_t sent = send(socket_.Number(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (sent <= 0) {
                return;
            }
            bytes.remove_prefix(static_cast<size_t>(sent));
        }
    }
    void EndSending() const { shutdown(socket_.Number(), SHUT_WR); }

    // All until the server ends the connection.
    std::string ReceiveAll() const {
        std::string all;
        char buffer[4096];
        ssize_t count = 0;
        while ((count = recv(socket_.Number(), buffer, sizeof buffer, 0)) > 0) {
            all.append(buffer, static_cast<size_t>(count));
        }
        EXPECT_FALSE(count < 0 && errno == EAGAIN) << "the server doesn't end it";
        return all;
    }
    // Up to these bytes.
    std::string ReceiveUntil(std::string_view end) const {
        std::string all;
        char c = 0;
        while (all.find(end) == std::string::npos && recv(socket_.Number(), &c, 1, 0) == 1) {
            all += c;
        }
        return all;
    }

 private:
    const host::Descriptor socket_;
};

// What all these bytes are answered, until the server ends the connection.
inline std::string AnswerAt(const std::string& path, std::string_view bytes) {
    const RawClient client(path);
    client.Send(bytes);
    return client.ReceiveAll();
}

#endif
