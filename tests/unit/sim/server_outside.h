// A server that lives in real time: another process, which takes one call at the socket "server" in
// a folder, and answers a moment later.
#ifndef PAGERFWD_TESTS_UNIT_SIM_SERVER_OUTSIDE_H
#define PAGERFWD_TESTS_UNIT_SIM_SERVER_OUTSIDE_H

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <ctime>
#include <filesystem>

namespace pagersim {

class ServerOutside {
 public:
    explicit ServerOutside(const std::filesystem::path& folder,
                           std::chrono::milliseconds moment = std::chrono::milliseconds(50)) {
        address_.sun_family = AF_UNIX;
        (folder / "server").string().copy(address_.sun_path, sizeof address_.sun_path - 1);
        const int listening = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(0, bind(listening, Address(), sizeof address_));
        EXPECT_EQ(0, listen(listening, 1));
        process_ = fork();
        if (process_ == 0) {
            const int call = accept(listening, nullptr, nullptr);
            const timespec time{0, static_cast<long>(moment.count()) * 1'000'000};
            syscall(SYS_nanosleep, &time, nullptr);
            _exit(write(call, "x", 1) == 1 ? 0 : 1);
        }
        close(listening);
    }
    ~ServerOutside() {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    ServerOutside(const ServerOutside&) = delete;
    ServerOutside& operator=(const ServerOutside&) = delete;

    int Call() const {
        const int call = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(0, connect(call, Address(), sizeof address_));
        return call;
    }

 private:
    const sockaddr* Address() const { return reinterpret_cast<const sockaddr*>(&address_); }

    sockaddr_un address_{};
    pid_t process_ = -1;
};

}  // namespace pagersim

#endif
