// Starting processes and waiting for them. Tested by tests/unit/sim/pagersim_test.cpp and
// pagersim_commands_test.cpp.
#include "sim/runner/processes.h"

#include <fcntl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <utility>

#include "sim/runner/preload.h"
#include "sim/runner/program_file.h"

namespace pagersim {
namespace {

constexpr int kCannotStart = 127;
constexpr int kKilled = 128;
constexpr Micros kAfterwards = std::chrono::hours(1);

constexpr const char* kShell = "/bin/sh";
constexpr const char* kPrograms = "PAGERSIM_PROGRAMS";

// A shell of another word size than the preload would complain of it: the programs it starts get
// it.
constexpr const char* kPreloadForPrograms = "LD_PRELOAD=$PAGERSIM_PROGRAMS; export LD_PRELOAD; ";

bool TakesPart(const std::string& command, const Environment& environment) {
    const auto program = FindProgram(command);
    const auto preloads = environment.find(kPreloads);
    return program && preloads != environment.end() &&
           Serves(preloads->second, WordSizeOf(*program));
}

}  // namespace

void Become(const std::vector<std::string>& command, const Environment& environment) {
    for (const auto& [name, value] : environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    std::fprintf(stderr, "pagersim: %s can't be started: %s\n", arguments[0], std::strerror(errno));
    _exit(kCannotStart);
}

HeldSignals::HeldSignals() {
    sigemptyset(&held_);
    for (const int signal : {SIGCHLD, SIGINT, SIGQUIT, SIGTERM, SIGHUP}) {
        sigaddset(&held_, signal);
    }
    sigprocmask(SIG_BLOCK, &held_, &before_);
}

int HeldSignals::OpenDescriptor() const {
    return signalfd(-1, &held_, SFD_CLOEXEC | SFD_NONBLOCK);
}

Processes::Processes(WorldServer& world, Environment environment)
    : world_(world), environment_(std::move(environment)), signals_(held_.OpenDescriptor()) {}

void Processes::Start(const std::vector<std::string>& command) {
    command_ = Spawn(command, environment_);
    world_.StopAtEndOf(command_);  // What happens then, happens at that time.
}

void Processes::RunShell(const std::string& command) {
    Environment environment = environment_;
    // Where a shell lets nobody set it, it is pagersim's.
    const std::string parent = std::to_string(command_ != 0 ? command_ : getpid());
    std::string text = "(PPID=1) 2>/dev/null && PPID=" + parent + "; ";
    if (!TakesPart(kShell, environment)) {
        environment[kPrograms] = std::exchange(environment[kPreloads], "");
        text += kPreloadForPrograms;
    }
    Spawn({kShell, "-c", text + command}, environment);
}

pid_t Processes::Spawn(const std::vector<std::string>& command, const Environment& environment) {
    const Descriptor link = world_.Invite();
    const pid_t child = fork();
    if (child < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (child == 0) {
        held_.Release();
        fcntl(link.Number(), F_SETFD, 0);
        Become(command, environment);
    }
    world_.Invited(child, TakesPart(command.front(), environment));
    return child;
}

int Processes::AwaitCommand() {
    while (!ended_) {
        world_.Serve(signals_.Number());
        TakeSignals();
    }
    return status_;
}

void Processes::AwaitEnd(bool until_left) {
    bool was_joined = false;
    while (!asked_ && !(until_left && was_joined && world_.IsEmpty())) {
        world_.Serve(signals_.Number());
        TakeSignals();
        was_joined = was_joined || !world_.IsEmpty();
    }
    AskOthers();
}

void Processes::AskOthers() {
    world_.SignalParticipants(SIGTERM);
}

void Processes::AwaitOthers(Milliseconds patience) {
    const Micros last = world_.Now() + kAfterwards;
    Micros now = world_.Now();
    auto since = std::chrono::steady_clock::now();
    while (!world_.IsEmpty() && !world_.IsIdle() && now < last &&
           std::chrono::steady_clock::now() - since < patience) {
        world_.Serve(signals_.Number());
        TakeSignals();
        if (std::exchange(now, world_.Now()) != world_.Now()) {
            since = std::chrono::steady_clock::now();
        }
    }
    world_.SignalParticipants(SIGKILL);
}

void Processes::TakeSignals() {
    signalfd_siginfo info{};
    while (read(signals_.Number(), &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
        const auto signal = static_cast<int>(info.ssi_signo);
        const bool asks = signal == SIGTERM || signal == SIGHUP;
        if (command_ == 0) {
            asked_ = asked_ || asks || signal == SIGINT;
        } else if (!ended_ && asks) {
            kill(command_, signal);
        }
    }
    Reap();
}

void Processes::Reap() {
    int status = 0;
    for (pid_t child = 0; (child = waitpid(-1, &status, WNOHANG)) > 0;) {
        if (child == command_) {
            ended_ = true;
            status_ = WIFSIGNALED(status) ? kKilled + WTERMSIG(status) : WEXITSTATUS(status);
        }
    }
}

}  // namespace pagersim
