// Running the command under simulation and listening to what happens in it.
#ifndef PAGERFWD_SIM_RUNNER_RUN_COMMAND_H
#define PAGERFWD_SIM_RUNNER_RUN_COMMAND_H

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "sim/record/event.h"

namespace pagersim {

// Starts `command` with `environment` added to its own, passes on every event that comes through
// the named pipe `events` (made here) as it comes, and waits for the end. Returns the command's
// exit status as a shell would: 128 and the number of the signal that killed it, 127 when it can't
// be started.
//
// An interrupt from the terminal reaches the command by itself, a request to end is passed on to
// it; neither ends this before the command.
//
// Errors     Throws std::system_error when the pipe or the process can't be made.
int RunCommand(const std::vector<std::string>& command,
               const std::map<std::string, std::string>& environment, const std::string& events,
               const std::function<void(const Event&)>& happens);

}  // namespace pagersim

#endif
