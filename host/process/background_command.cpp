// Programs beside this one. Tested by tests/unit/host/background_command_test.cpp.
#include "host/process/background_command.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "host/files/descriptor.h"
#include "host/store/database_name.h"

namespace host {
namespace {

// How the program finds itself: a group of its own, no signal blocked or ignored.
class Attributes {
 public:
    Attributes() {
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setflags(
            &attributes_, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        posix_spawnattr_setpgroup(&attributes_, 0);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setsigdefault(&attributes_, &all);
    }
    ~Attributes() { posix_spawnattr_destroy(&attributes_); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    const posix_spawnattr_t* Get() const { return &attributes_; }

 private:
    posix_spawnattr_t attributes_{};
};

class Actions {
 public:
    explicit Actions(int input) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_adddup2(&actions_, input, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions_, STDERR_FILENO, STDOUT_FILENO);
    }
    ~Actions() { posix_spawn_file_actions_destroy(&actions_); }
    Actions(const Actions&) = delete;
    Actions& operator=(const Actions&) = delete;

    const posix_spawn_file_actions_t* Get() const { return &actions_; }

 private:
    posix_spawn_file_actions_t actions_{};
};

// Not open where the system has no room for it.
Descriptor FileWith(const std::string& text) {
    Descriptor file(memfd_create("input", MFD_CLOEXEC));
    if (file.IsOpen() &&
        (write(file.Number(), text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
         lseek(file.Number(), 0, SEEK_SET) != 0)) {
        return {};
    }
    return file;
}

std::vector<char*> Arguments(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));  // posix_spawn changes nothing
    }
    arguments.push_back(nullptr);
    return arguments;
}

// A database with a password is none of a program's business, which may show it to others.
bool IsSecret(std::string_view variable) {
    for (const std::string_view name : {"PAGERFWD_DATABASE=", "PAGERFWD_LINE_DATABASE="}) {
        if (variable.substr(0, name.size()) == name) {
            return HasPassword(std::string(variable.substr(name.size())));
        }
    }
    return false;
}

std::vector<char*> Environment() {
    std::vector<char*> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        if (!IsSecret(*variable)) {
            variables.push_back(*variable);
        }
    }
    variables.push_back(nullptr);
    return variables;
}

}  // namespace

BackgroundCommand::~BackgroundCommand() {
    if (process_ > 0) {
        kill(-process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
}

std::string BackgroundCommand::Start(const std::vector<std::string>& command,
                                     const std::string& input, std::time_t now) {
    const Descriptor file = FileWith(input);
    if (!file.IsOpen()) {
        return std::string("no room for its input: ") + std::strerror(errno);
    }
    const Actions actions(file.Number());
    const Attributes attributes;
    pid_t process = -1;
    const int error =
        posix_spawnp(&process, command.front().c_str(), actions.Get(), attributes.Get(),
                     Arguments(command).data(), Environment().data());
    if (error != 0) {
        return std::string("can't be started: ") + std::strerror(error);
    }
    process_ = process;
    started_ = now;
    killed_ = false;
    return {};
}

std::optional<std::string> BackgroundCommand::Look(std::time_t now) {
    int status = 0;
    const pid_t ended = waitpid(process_, &status, WNOHANG);
    if (ended != 0) {
        return EndOf(status);
    }
    started_ = std::min(started_, now);  // the clock was set back
    if (!killed_ && now >= started_ + kLimit) {
        killed_ = true;
        kill(-process_, SIGKILL);
    }
    return std::nullopt;
}

std::string BackgroundCommand::EndOf(int status) {
    process_ = -1;
    if (killed_) {
        return "took longer than " + std::to_string(kLimit) + " s, and was killed";
    }
    if (WIFSIGNALED(status)) {
        return std::string("ended by signal ") + strsignal(WTERMSIG(status));
    }
    return WEXITSTATUS(status) == 0 ? std::string()
                                    : "ended with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace host
