// Whether what a ledger tells of a run is what one crash, and the rules, explain.
#ifndef PAGERFWD_TESTS_PROOF_CRASH_JUDGE_H
#define PAGERFWD_TESTS_PROOF_CRASH_JUDGE_H

#include <istream>
#include <optional>
#include <string>
#include <vector>

#include "tests/proof/crash_scenario.h"

namespace proof::crash {

struct Verdict {
    std::optional<Phase> killed;          // in which phase
    std::vector<std::string> complaints;  // empty: all is as it should be
};

Verdict Judge(std::istream& ledger);

}  // namespace proof::crash

#endif
