// What kind of program a command starts.
#ifndef PAGERFWD_SIM_RUNNER_PROGRAM_FILE_H
#define PAGERFWD_SIM_RUNNER_PROGRAM_FILE_H

#include <optional>
#include <string>

namespace pagersim {

// The file that execvp would start for `command`; none when there is none.
std::optional<std::string> FindProgram(const std::string& command);

// 32 or 64 for an ELF file of this machine, also for the interpreter of a script; 0 for others.
int WordSizeOf(const std::string& path);

}  // namespace pagersim

#endif
