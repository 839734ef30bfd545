// The processes that pagersim starts in its world.
#ifndef PAGERFWD_SIM_RUNNER_PROCESSES_H
#define PAGERFWD_SIM_RUNNER_PROCESSES_H

#include <signal.h>
#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

#include "sim/server/world_server.h"

namespace pagersim {

// What is added to the environment of every program.
using Environment = std::map<std::string, std::string>;

// The variable that makes it take the simulation.
inline constexpr const char* kPreloads = "LD_PRELOAD";

// The calling process becomes the command, with this environment, or ends with 127.
[[noreturn]] void Become(const std::vector<std::string>& command, const Environment& environment);

// The signals that are read from a descriptor here, instead of doing what they do; as they were
// before when this ends.
class HeldSignals {
 public:
    HeldSignals();
    ~HeldSignals() { Release(); }
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

    void Release() const { sigprocmask(SIG_SETMASK, &before_, nullptr); }
    int OpenDescriptor() const;

 private:
    sigset_t held_{}, before_{};
};

// Errors     Throws std::system_error when a process can't be made.
class Processes {
 public:
    Processes(WorldServer& world, Environment environment);

    // The command that all is about.
    void Start(const std::vector<std::string>& command);

    // Runs a command in a shell, beside it: its $PPID is the command's process.
    void RunShell(const std::string& command);

    // Serves the world until the command has ended. Its exit status as a shell would have it: 128
    // and the number of the signal that killed it, 127 when it can't be started.
    //
    // An interrupt from the terminal reaches the command by itself, a request to end is passed on
    // to it; neither ends this before the command.
    int AwaitCommand();

    // Without a command: serves the world until this process is asked to end, or, with
    // `until_left`, until all processes that have joined it have ended. Then AskOthers.
    void AwaitEnd(bool until_left);

    // Asks all that are in the world to end.
    void AskOthers();

    // Then: until the processes that are still there have ended, for an hour of the world's time at
    // most, and as long as it goes on: not when it has stood still for so much real time. The
    // others are killed; those that take no part are left alone.
    void AwaitOthers(Milliseconds patience = kPatience);

 private:
    static constexpr Milliseconds kPatience{60'000};

    pid_t Spawn(const std::vector<std::string>& command, const Environment& more);
    void TakeSignals();
    void Reap();

    WorldServer& world_;
    const Environment environment_;
    const HeldSignals held_;
    const Descriptor signals_;
    pid_t command_ = 0;
    bool ended_ = false;
    bool asked_ = false;  // to end
    int status_ = 0;
};

}  // namespace pagersim

#endif
