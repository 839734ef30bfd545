// Running the command. Tested by tests/unit/sim/pagersim_test.cpp.
#include "sim/runner/run_command.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <system_error>

namespace pagersim {
namespace {

constexpr int kCannotStart = 127;
constexpr int kKilled = 128;

[[noreturn]] void ThrowError(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

class Descriptor {
 public:
    Descriptor(int fd, const std::string& what) : fd_(fd) {
        if (fd < 0) {
            ThrowError(what);
        }
    }
    ~Descriptor() { close(fd_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return fd_; }

 private:
    const int fd_;
};

// Open for writing too, so that it has no end while the programs come and go.
int MakePipe(const std::string& path) {
    constexpr mode_t kOwnOnly = 0600;
    if (mkfifo(path.c_str(), kOwnOnly) != 0) {
        return -1;
    }
    return open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
}

// The signals that are read from a descriptor here, instead of doing what they do; as they were
// before when this ends.
class HeldSignals {
 public:
    HeldSignals() {
        sigemptyset(&held_);
        for (const int signal : {SIGCHLD, SIGINT, SIGQUIT, SIGTERM, SIGHUP}) {
            sigaddset(&held_, signal);
        }
        sigprocmask(SIG_BLOCK, &held_, &before_);
    }
    ~HeldSignals() { Release(); }
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

    void Release() const { sigprocmask(SIG_SETMASK, &before_, nullptr); }
    int OpenDescriptor() const { return signalfd(-1, &held_, SFD_CLOEXEC | SFD_NONBLOCK); }

 private:
    sigset_t held_{}, before_{};
};

[[noreturn]] void Become(const std::vector<std::string>& command,
                         const std::map<std::string, std::string>& environment) {
    for (const auto& [name, value] : environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    std::fprintf(stderr, "pagersim: %s can't be started: %s\n", arguments[0], std::strerror(errno));
    _exit(kCannotStart);
}

class PipeLock {
 public:
    explicit PipeLock(int fd) : fd_(fd) { flock(fd_, LOCK_EX); }
    ~PipeLock() { flock(fd_, LOCK_UN); }
    PipeLock(const PipeLock&) = delete;
    PipeLock& operator=(const PipeLock&) = delete;

 private:
    const int fd_;
};

// Puts events together from what comes through the pipe.
class EventReader {
 public:
    EventReader(int fd, const std::function<void(const Event&)>& happens)
        : fd_(fd), happens_(happens) {}

    // All that is there. The lock tells the writers that what they no longer find in the pipe isn't
    // shown yet.
    void Read() {
        const PipeLock lock(fd_);
        std::array<char, 4096> bytes{};
        for (ssize_t count = 0; (count = read(fd_, bytes.data(), bytes.size())) > 0;) {
            text_.append(bytes.data(), static_cast<std::size_t>(count));
            TakeLines();
        }
    }

 private:
    void TakeLines() {
        for (auto end = text_.find('\n'); end != std::string::npos; end = text_.find('\n')) {
            TakeLine(text_.substr(0, end));
            text_.erase(0, end + 1);
        }
    }

    void TakeLine(const std::string& line) try {
        happens_(EventFromJson(line));
    } catch (const std::invalid_argument& bad) {
        std::fprintf(stderr, "pagersim: an event can't be read: %s\n", bad.what());
    }

    const int fd_;
    const std::function<void(const Event&)>& happens_;
    std::string text_;
};

void PassOn(int signals, pid_t child) {
    signalfd_siginfo info{};
    while (read(signals, &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
        const auto signal = static_cast<int>(info.ssi_signo);
        if (signal == SIGTERM || signal == SIGHUP) {
            kill(child, signal);
        }
    }
}

int WaitWhileReading(pid_t child, int signals, int events, EventReader& reader) {
    int status = 0;
    while (waitpid(child, &status, WNOHANG) == 0) {
        std::array<pollfd, 2> ready = {{{events, POLLIN, 0}, {signals, POLLIN, 0}}};
        poll(ready.data(), ready.size(), -1);
        PassOn(signals, child);
        reader.Read();
    }
    reader.Read();
    return WIFSIGNALED(status) ? kKilled + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

int RunCommand(const std::vector<std::string>& command,
               const std::map<std::string, std::string>& environment, const std::string& events,
               const std::function<void(const Event&)>& happens) {
    const Descriptor pipe(MakePipe(events), events);
    const HeldSignals held;
    const Descriptor signals(held.OpenDescriptor(), "signals");
    const pid_t child = fork();
    if (child < 0) {
        ThrowError("fork");
    }
    if (child == 0) {
        held.Release();
        Become(command, environment);
    }
    EventReader reader(pipe.Get(), happens);
    return WaitWhileReading(child, signals.Get(), pipe.Get(), reader);
}

}  // namespace pagersim
