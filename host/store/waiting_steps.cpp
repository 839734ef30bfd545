// Steps that may wait: this version has none. Tested by tests/proof/hosts_upgrade_test.cpp, with a
// program that has one.
#include "host/store/waiting_steps.h"

namespace host {

const std::vector<const char*>& WaitingSteps() {
    static const std::vector<const char*> steps;
    return steps;
}

}  // namespace host
