// Commands that run at a moment of the virtual clock: what a person or another program does
// meanwhile.
#ifndef PAGERFWD_SIM_COMMANDS_H
#define PAGERFWD_SIM_COMMANDS_H

#include <string>

namespace pagersim {

// In a process so started no command is planned: it is a command's own.
inline constexpr const char* kIsCommand = "PAGERSIM_IS_COMMAND";

// Runs the command in a shell, whose parent ($PPID) is this process, and waits for its end. Virtual
// time stands still meanwhile; the command finds the simulated lines closed to it, and this
// instant.
void RunShell(const std::string& command);

}  // namespace pagersim

#endif
