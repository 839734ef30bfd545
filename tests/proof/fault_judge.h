// Whether a world whose system failed ended as it should have: no page lost, none sent twice, no
// process that crashed, and the operator told of the trouble and of its end, without end.
#ifndef PAGERFWD_TESTS_PROOF_FAULT_JUDGE_H
#define PAGERFWD_TESTS_PROOF_FAULT_JUDGE_H

#include <cstdint>
#include <filesystem>
#include <istream>
#include <string>
#include <vector>

#include "tests/proof/kill_judge.h"

namespace proof::kills {

struct Told {
    int64_t failed_calls = 0;
    std::vector<std::string> complaints;  // empty: all is as it should be
};

// status: of the world's end, as waitpid has it. lasting: the calls failed for a while, as one
// trouble; else each is a trouble of its own.
Told JudgeWorld(const std::filesystem::path& folder, int status, Tries tries, bool lasting);

// Which of these pages, "ALARM PAGER", no line of the log says that they were given up.
std::vector<std::string> JudgeGivenUp(const std::vector<std::string>& pages, std::istream& log);

// What is told too often in what the processes of a site told.
std::vector<std::string> JudgeLog(std::istream& log);

}  // namespace proof::kills

#endif
