// What pagersim does: one function for each of its forms. Each returns the exit status.
#ifndef PAGERFWD_SIM_RUNNER_COMMANDS_H
#define PAGERFWD_SIM_RUNNER_COMMANDS_H

#include "sim/runner/options.h"

namespace pagersim {

// A world for a command.
int RunCommand(const RunnerOptions& options);

// A world that commands join, until it is asked to end.
int ServeWorld(const RunnerOptions& options);

// The calling process becomes a command in it.
[[noreturn]] void JoinWorld(const JoinOptions& options);

}  // namespace pagersim

#endif
