// Which programs can be simulated, and what they are given for it.
#ifndef PAGERFWD_SIM_RUNNER_PROGRAMS_H
#define PAGERFWD_SIM_RUNNER_PROGRAMS_H

#include <string>

#include "sim/runner/processes.h"

namespace pagersim {

// For programs of a world at `socket`. `links` is a folder that the preload may need, see
// PreloadList. Throws UsageError when there is no preload.
Environment EnvironmentFor(const std::string& socket, const std::string& links);

// The program must take the preload: without it, it would open the machine's real ports. Throws
// UsageError when it doesn't, or isn't there.
void CheckProgram(const std::string& command, const Environment& environment);

}  // namespace pagersim

#endif
