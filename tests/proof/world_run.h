// Worlds and their programs, for the soaks of whole sites.
//
// Errors     std::runtime_error.
#ifndef PAGERFWD_TESTS_PROOF_WORLD_RUN_H
#define PAGERFWD_TESTS_PROOF_WORLD_RUN_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace proof {

// A command, until it ends well; its errors are in the file "log".
void RunToEnd(const std::vector<std::string>& words);

// Of all such commands, and what they have started.
double ProcessorSecondsOfChildren();

// Within a world: a program beside the one that starts it.
pid_t StartBeside(const std::vector<std::string>& words);

}  // namespace proof

#endif
