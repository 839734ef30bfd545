// Which process of a site this one is, as its command line tells: for what is preloaded into all.
#ifndef PAGERFWD_TESTS_PROOF_PROCESS_ROLE_H
#define PAGERFWD_TESTS_PROOF_PROCESS_ROLE_H

#include <cstddef>

namespace proof {

constexpr size_t kNodeRole = 0;  // behind it the lines: COM 1 is 1
constexpr size_t kRoles = 4;
constexpr size_t kNoRole = kRoles;

struct ProcessRole {
    size_t role = kNoRole;
    bool asks = false;  // of a line: it only asks the modem
};

ProcessRole FindRole();

}  // namespace proof

#endif
