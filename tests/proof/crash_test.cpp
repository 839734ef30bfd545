// The crash test: runs of a service that is killed (SIGKILL) at some point, started again, and run
// to its end; each is judged by its ledger. And the full disk: runs in which the file system
// refuses a write of the store, or all for a minute, or for twenty.
//   crash_test SITE_PROGRAM KILLS [FOLDER]   FOLDER keeps the ledgers of runs that fail
//   crash_test SITE_PROGRAM full RUNS [FOLDER]
// Prints how many kills fell into each phase. Fails when a run does, or a phase has too few.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/proof/crash_judge.h"
#include "tests/support/temp_dir.h"

namespace proof::crash {
namespace {

namespace fs = std::filesystem;

constexpr int kLeastKills = 20;       // a phase, or the run proves nothing about it
constexpr size_t kPlannedKills = 30;  // a phase, at least
// Two runs need not write the store's files in exactly the same steps, so that a few points at the
// end may not be reached.
constexpr double kSpareRuns = 1.06;
constexpr size_t kFullDiskEvery = 3;  // so many kills, one is on a full disk
constexpr const char* kTemplate = "../template.db";
constexpr int kMostComplaints = 20;  // printed

// The exit code; a signal's number negative.
int Run(const std::string& program, std::vector<std::string> words) {
    words.insert(words.begin(), program);
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    pid_t process = -1;
    if (posix_spawn(&process, program.c_str(), nullptr, nullptr, arguments.data(), environ) != 0) {
        throw std::runtime_error("can't be started: " + program);
    }
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

void Require(bool holds, const std::string& what) {
    if (!holds) {
        throw std::runtime_error(what);
    }
}

// The working directory, emptied, with a fresh database.
void Prepare() {
    for (const auto& entry : fs::directory_iterator(".")) {
        fs::remove_all(entry.path());
    }
    fs::copy_file(kTemplate, kDatabase);
}

// The points of a run without a crash, in their order.
std::vector<Target> TakeCensus(const std::string& program) {
    Prepare();
    Require(Run(program, {"run", WordFor({Target::Kind::kCensus})}) == 0,
            "the run without a crash failed");
    std::ifstream ledger(kLedger);
    for (const std::string& complaint : Judge(ledger).complaints) {
        throw std::runtime_error("the run without a crash: " + complaint);
    }
    std::ifstream census(kCensus);
    std::vector<Target> points;
    std::map<Phase, long> passed;
    for (char digit = 0; census.get(digit);) {
        const auto phase = static_cast<Phase>(digit - '0');
        points.push_back({Target::Kind::kPoint, phase, ++passed[phase]});
    }
    return points;
}

// So many of them, evenly spread.
std::vector<Target> Spread(const std::vector<Target>& points, size_t count) {
    std::vector<Target> chosen;
    for (size_t i = 0; i < count && !points.empty(); ++i) {
        chosen.push_back(points[(2 * i + 1) * points.size() / (2 * count)]);
    }
    return chosen;
}

std::vector<Target> InPhase(const std::vector<Target>& points, Phase phase) {
    std::vector<Target> in_phase;
    std::copy_if(points.begin(), points.end(), std::back_inserter(in_phase),
                 [phase](const Target& point) { return point.phase == phase; });
    return in_phase;
}

// A share for each phase, and the rest wherever it falls.
std::vector<Target> Plan(const std::vector<Target>& points, size_t runs) {
    std::vector<Target> plan;
    const size_t share = std::max(kPlannedKills, runs / (kPhaseNames.size() + 3));
    for (size_t phase = 1; phase < kPhaseNames.size(); ++phase) {
        const std::vector<Target> chosen =
            Spread(InPhase(points, static_cast<Phase>(phase)), share);
        plan.insert(plan.end(), chosen.begin(), chosen.end());
    }
    const std::vector<Target> rest = Spread(points, runs > plan.size() ? runs - plan.size() : 0);
    plan.insert(plan.end(), rest.begin(), rest.end());
    for (size_t i = 0; i < plan.size(); i += kFullDiskEvery) {
        plan[i].full = true;
    }
    return plan;
}

Verdict RunOnce(const std::string& program, const Target& point) {
    Prepare();
    const int first = Run(program, {"run", WordFor(point)});
    const int second = first == -SIGKILL ? Run(program, {"run", WordFor({})}) : 0;
    std::ifstream ledger(kLedger);
    Verdict verdict = Judge(ledger);
    if (first != -SIGKILL && first != 0) {
        verdict.complaints.push_back("the first life ended with " + std::to_string(first));
    }
    if (second != 0) {
        verdict.complaints.push_back("the second life ended with " + std::to_string(second));
    }
    return verdict;
}

// --- Full disks.

constexpr std::array<int, 3> kRefusalSeconds = {0, 60, 1200};

long CountWrites() {
    std::ifstream ledger(kLedger);
    for (std::string line; std::getline(ledger, line);) {
        const std::string word = "writes ";
        if (line.compare(0, word.size(), word) == 0) {
            return std::stol(line.substr(word.size()));
        }
    }
    throw std::runtime_error("the census has counted no write");
}

// Each of the two moments is told once, and nothing else; nothing where all was made good at once.
void JudgeWhatWasTold(Verdict& verdict, int& refusals) {
    int kept = 0;
    int written = 0;
    std::ifstream ledger(kLedger);
    for (std::string line; std::getline(ledger, line);) {
        if (line.compare(0, 5, "told ") != 0) {
            continue;
        }
        if (line.find("kept in memory until it can") != std::string::npos) {
            ++kept;
        } else if (line.find("can be written again") != std::string::npos) {
            ++written;
        } else {
            verdict.complaints.push_back(line);
        }
    }
    if (kept > 1 || written != kept) {
        verdict.complaints.push_back("told " + std::to_string(kept) + " times of the refusal, " +
                                     std::to_string(written) + " times of its end");
    }
    refusals += kept;
}

Verdict RunOnFullDisk(const std::string& program, const Target& target, int& refusals) {
    Prepare();
    const int life = Run(program, {"run", WordFor(target)});
    std::ifstream ledger(kLedger);
    Verdict verdict = Judge(ledger);
    JudgeWhatWasTold(verdict, refusals);
    if (life != 0) {
        verdict.complaints.push_back("the life ended with " + std::to_string(life));
    }
    return verdict;
}

class Tally {
 public:
    Tally(int wanted, fs::path kept) : wanted_(wanted), kept_(std::move(kept)) {}

    void Count(const Target& point, const Verdict& verdict) {
        if (verdict.killed) {
            ++kills_.at(static_cast<size_t>(*verdict.killed));
        }
        if (verdict.complaints.empty()) {
            return;
        }
        ++failed_;
        for (const std::string& complaint : verdict.complaints) {
            if (++complaints_ <= kMostComplaints) {
                std::cerr << "at point " << WordFor(point) << ": " << complaint << "\n";
            }
        }
        if (!kept_.empty()) {
            fs::copy_file(kLedger, kept_ / ("ledger-" + WordFor(point)),
                          fs::copy_options::overwrite_existing);
        }
    }

    bool ReportFullDisks(int refusals) const {
        std::cout << refusals << " runs in which a write was refused; "
                  << (failed_ == 0 ? "no page lost, none sent again"
                                   : std::to_string(failed_) + " runs failed")
                  << std::endl;
        return refusals >= wanted_ / 2 && failed_ == 0;
    }

    bool Report() const {
        const int all = std::accumulate(kills_.begin(), kills_.end(), 0);
        bool enough = all >= wanted_;
        std::cout << all << " kills by phase:\n";
        for (size_t i = 0; i < kills_.size(); ++i) {
            const bool few = i != static_cast<size_t>(Phase::kOther) && kills_[i] < kLeastKills;
            enough = enough && !few;
            std::cout << "  " << kPhaseNames[i] << ": " << kills_[i] << (few ? "  too few" : "")
                      << "\n";
        }
        std::cout << (failed_ == 0 ? "no page lost, none sent too often"
                                   : std::to_string(failed_) + " runs failed")
                  << std::endl;
        return enough && failed_ == 0;
    }

 private:
    const int wanted_;
    const fs::path kept_;
    std::array<int, kPhaseNames.size()> kills_{};
    int failed_ = 0;
    int complaints_ = 0;
};

// An empty working directory beside a fresh database.
void MakeRoom(const std::string& program) {
    Require(Run(program, {"make"}) == 0, "the database can't be made");
    fs::rename(kDatabase, "template.db");
    fs::create_directory("run");
    fs::current_path("run");
    setenv("PAGERFWD_LOCKS", fs::current_path().c_str(), 1);
}

bool KillAll(const std::string& program, int kills, const fs::path& kept) {
    Tally tally(kills, kept);
    for (const Target& point : Plan(TakeCensus(program), static_cast<size_t>(kills * kSpareRuns))) {
        tally.Count(point, RunOnce(program, point));
    }
    return tally.Report();
}

bool FillDisks(const std::string& program, int runs, const fs::path& kept) {
    TakeCensus(program);
    const long writes = CountWrites();
    Tally tally(runs, kept);
    int refusals = 0;
    for (int run = 0; run < runs; ++run) {
        const Target target =
            RefusalFrom(1 + run * writes / runs,
                        kRefusalSeconds.at(static_cast<size_t>(run) % kRefusalSeconds.size()));
        tally.Count(target, RunOnFullDisk(program, target, refusals));
    }
    return tally.ReportFullDisks(refusals);
}

bool RunTest(const std::vector<std::string>& words) {
    const bool full = words.size() > 1 && words[1] == "full";
    const size_t number = full ? 2 : 1;
    const int count = std::stoi(words.at(number));
    const fs::path kept = words.size() > number + 1 ? fs::absolute(words[number + 1]) : fs::path();
    const test_support::TempDir folder;
    MakeRoom(words[0]);
    return full ? FillDisks(words[0], count, kept) : KillAll(words[0], count, kept);
}

}  // namespace
}  // namespace proof::crash

int main(int argc, char** argv) {
    try {
        return proof::crash::RunTest({argv + 1, argv + argc}) ? 0 : 1;
    } catch (const std::exception& fault) {
        std::cerr << "crash_test SITE_PROGRAM [full] COUNT [FOLDER]: " << fault.what() << "\n";
        return 1;
    }
}
