// The judge of worlds whose system fails. Tested by fault_judge_test.cpp.
#include "tests/proof/fault_judge.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <string_view>

#include "tests/proof/fault_scenario.h"
#include "tests/proof/kill_scenario.h"

namespace proof::kills {
namespace {

// Of one trouble of one process: what it makes fail on its way, and tries that come ever more
// seldom.
constexpr int kMostOfOne = 8;

// Without its time, and without figures, which differ from one time to the next; but the lines keep
// their numbers.
std::string Shape(const std::string& line) {
    constexpr size_t kTime = 20;
    constexpr std::string_view kLine = "COM ";
    std::string shape;
    for (size_t i = std::min(kTime, line.size()); i < line.size(); ++i) {
        const bool digit = line[i] >= '0' && line[i] <= '9';
        const bool kept =
            i >= kLine.size() && line.compare(i - kLine.size(), kLine.size(), kLine) == 0;
        shape += digit && !kept ? '#' : line[i];
    }
    return shape;
}

// What a process says that can't begin is said by each.
bool IsOfABeginning(const std::string& line) {
    return line.rfind("pagerfwd: ", 0) == 0;
}

}  // namespace

std::vector<std::string> JudgeLog(std::istream& log) {
    std::vector<std::string> complaints;
    std::map<std::string, int> shapes;
    for (std::string line; std::getline(log, line);) {
        if (!IsOfABeginning(line) && ++shapes[Shape(line)] == kMostOfOne + 1) {
            complaints.push_back("told again and again: " + line);
        }
    }
    return complaints;
}

std::vector<std::string> JudgeGivenUp(const std::vector<std::string>& pages, std::istream& log) {
    const std::string told{std::istreambuf_iterator<char>(log), {}};
    std::vector<std::string> complaints;
    for (const std::string& page : pages) {
        const size_t blank = page.find(' ');
        const std::string words = "error: page of alarm " + page.substr(0, blank) + " to \"" +
                                  page.substr(blank + 1) + "\": given up: its tries are used up";
        if (told.find(words) == std::string::npos) {
            complaints.push_back("page " + page + " was given up, and nobody was told");
        }
    }
    return complaints;
}

Told JudgeWorld(const std::filesystem::path& folder, int status, Tries tries, bool lasting) {
    std::ifstream ledger(folder / kLedger);
    std::ifstream report(folder / kReport);
    std::ifstream counts(folder / kCounts);
    Told told;
    for (int64_t count = 0; counts >> count;) {
        told.failed_calls = count;  // the last of them
    }
    if (status != 0) {
        told.complaints.push_back("the world ended with " + std::to_string(status));
        return told;
    }
    const Verdict verdict = Judge(ledger, report, tries);
    told.complaints = verdict.complaints;
    const auto add = [&told](const std::vector<std::string>& more) {
        told.complaints.insert(told.complaints.end(), more.begin(), more.end());
    };
    std::ifstream log(folder / "log");
    add(JudgeGivenUp(verdict.given_up, log));
    if (lasting) {
        log.clear();
        log.seekg(0);
        add(JudgeLog(log));
    }
    return told;
}

}  // namespace proof::kills
