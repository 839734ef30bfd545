// Every call of a kind fails, once and for a while, in the node and in the lines of a site of three
// lines, inside simulated worlds: processes that can't be made, descriptors that there are none of,
// files that can't be opened, a store that is not read, written, synced or locked. Each world is
// judged by its ledger, by what the centres received, and by what the operator was told.
//   fault_test BINARIES LIBRARIES WORLDS [FOLDER]   so many of each kind and process, evenly
//   spread;
//                                                   0: all. FOLDER keeps what is left of worlds
//                                                   that fail
//   fault_test BINARIES LIBRARIES WORLDS FOLDER NAME [FIRST]   only these; names are printed
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "tests/proof/call_faults.h"
#include "tests/proof/fault_judge.h"
#include "tests/proof/fault_scenario.h"
#include "tests/proof/kill_scenario.h"
#include "tests/proof/worlds.h"

namespace proof::kills {
namespace {

namespace fs = std::filesystem;

constexpr int kMostComplaints = 20;

// Of a kind of which a run makes more, several fail in a world, so far apart that each stands
// alone.
constexpr int kFewCalls = 100;
constexpr int kInAWorld = 20;

struct Kind {
    const char* name;
    CallKind kind;
    std::vector<int> errors;  // in turn
};
const std::vector<Kind> kKinds = {
    {"spawn", CallKind::kSpawn, {EAGAIN, ENOMEM, ENOENT, EACCES}},
    {"pipe", CallKind::kPipe, {EMFILE, ENFILE, ENOMEM}},
    {"open", CallKind::kOpen, {EMFILE, ENFILE, EACCES, EIO}},
    {"read", CallKind::kRead, {EIO}},
    {"write", CallKind::kWrite, {ENOSPC, EIO}},
    {"sync", CallKind::kSync, {EIO}},
    {"lock", CallKind::kLock, {EAGAIN, EIO}},
};

struct Whom {
    const char* name;
    unsigned roles;
};
constexpr Whom kWhom[] = {{"node", 1U}, {"line", 4U}, {"lines", 14U}};

struct Case {
    std::string name;
    unsigned roles = 0;
    const Kind* kind = nullptr;
    int first = 1;
    int every = 0;
    int lasting = 0;
};

// [role][kind]
using Counts = std::vector<std::vector<int>>;

Counts ReadCounts(const fs::path& folder) {
    std::ifstream file(folder / kCounts);
    Counts counts(kRoles, std::vector<int>(kCallKinds));
    for (std::vector<int>& role : counts) {
        for (int& made : role) {
            file >> made;
        }
    }
    return counts;
}

std::vector<std::string> CommandFor(const Programs& programs, const Case& one) {
    const size_t turn = static_cast<size_t>(one.first) % (one.kind ? one.kind->errors.size() : 1);
    return {programs.Binary("fault_site"),
            "keep",
            std::to_string(one.roles),
            std::to_string(one.kind ? static_cast<int>(one.kind->kind) : 0),
            std::to_string(one.kind ? one.kind->errors[turn] : 0),
            std::to_string(one.first),
            std::to_string(one.every),
            std::to_string(one.lasting),
            programs.Binary("pagerfwd"),
            programs.Library("PagerFwd"),
            programs.Library("call_faults")};
}

// Evenly spread, from 1 to the highest; all of them where there are no more.
std::vector<int> Spread(int highest, int most) {
    std::vector<int> chosen;
    const int count = most == 0 || most > highest ? highest : most;
    for (int i = 0; i < count; ++i) {
        chosen.push_back(1 + static_cast<int>(int64_t{i} * highest / count));
    }
    return chosen;
}

std::vector<Case> CasesFor(const Counts& counts, int most) {
    std::vector<Case> cases;
    for (const Whom& whom : kWhom) {
        for (const Kind& kind : kKinds) {
            const size_t role = whom.roles == 1U ? 0 : 2;
            const int made = counts[role][static_cast<size_t>(kind.kind)];
            const int every = made > kFewCalls ? made / kInAWorld : 0;
            const std::string name = std::string(whom.name) + "-" + kind.name;
            for (const int first : Spread(every > 0 ? every : made, most)) {
                cases.push_back({name + "-once", whom.roles, &kind, first, every, 0});
            }
            for (const int first : Spread(made, most)) {
                cases.push_back({name + "-while", whom.roles, &kind, first, 0, kForAWhile});
            }
        }
    }
    return cases;
}

Tries TriesOf(const Case& one) {
    const bool opens = one.kind != nullptr && one.kind->kind == CallKind::kOpen;
    return opens ? Tries::kDeviceToo : Tries::kSendingsOnly;
}

class Tally {
 public:
    explicit Tally(fs::path kept) : kept_(std::move(kept)) {}

    void Count(const Case& one, const fs::path& folder, int status) {
        const Told told = JudgeWorld(folder, status, TriesOf(one), one.lasting > 0);
        Sum& sum = sums_[one.name];
        ++sum.worlds;
        sum.failed_calls += told.failed_calls;
        for (const std::string& complaint : told.complaints) {
            ++sum.complaints;
            if (sum.complaints <= kMostComplaints) {
                std::cerr << one.name << " " << one.first << ": " << complaint << "\n";
            }
        }
        if (!kept_.empty() && (!told.complaints.empty() || one.roles == 0)) {
            fs::copy(folder, kept_ / (one.name + "-" + std::to_string(one.first)),
                     fs::copy_options::recursive | fs::copy_options::overwrite_existing);
        }
    }

    bool Report() const {
        bool good = true;
        for (const auto& [name, sum] : sums_) {
            const bool none = name != kPlain && sum.failed_calls == 0;
            std::cout << name << ": " << sum.worlds << " worlds, " << sum.failed_calls
                      << " calls failed, " << sum.complaints << " complaints"
                      << (none ? "  none failed" : "") << "\n";
            good = good && sum.complaints == 0 && !none;
        }
        return good;
    }

    static constexpr const char* kPlain = "plain";

 private:
    struct Sum {
        int worlds = 0;
        int64_t failed_calls = 0;
        int complaints = 0;
    };
    const fs::path kept_;
    std::map<std::string, Sum> sums_;
};

void RunCases(const Programs& programs, const std::vector<Case>& cases, Tally& tally) {
    const auto of = [&](int world) -> const Case& { return cases[static_cast<size_t>(world - 1)]; };
    RunWorlds(
        programs, *OpenSiteDatabases("sqlite"), static_cast<int>(cases.size()),
        [&](int world) { return CommandFor(programs, of(world)); },
        [&](int world, const fs::path& folder, int status) {
            tally.Count(of(world), folder, status);
        });
}

// Of a world in which nothing fails.
Counts CountCalls(const Programs& programs, Tally& tally) {
    Counts counts;
    const Case plain{Tally::kPlain};
    RunWorlds(
        programs, *OpenSiteDatabases("sqlite"), 1, [&](int) { return CommandFor(programs, plain); },
        [&](int, const fs::path& folder, int status) {
            counts = ReadCounts(folder);
            tally.Count(plain, folder, status);
        });
    return counts;
}

bool RunTest(const Programs& programs, int worlds, const fs::path& kept, const std::string& only,
             int first) {
    Tally tally(kept);
    const Counts counts = CountCalls(programs, tally);
    std::vector<Case> cases = CasesFor(counts, worlds);
    if (!only.empty()) {
        cases.erase(std::remove_if(cases.begin(), cases.end(),
                                   [&](const Case& one) {
                                       return one.name != only || (first > 0 && one.first != first);
                                   }),
                    cases.end());
    }
    RunCases(programs, cases, tally);
    return tally.Report();
}

}  // namespace
}  // namespace proof::kills

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    if (argc < 4) {
        std::cerr << "fault_test BINARIES LIBRARIES WORLDS [FOLDER [NAME [FIRST]]]\n";
        return 2;
    }
    try {
        const bool good =
            proof::kills::RunTest({fs::absolute(argv[1]), fs::absolute(argv[2])},
                                  std::atoi(argv[3]), argc > 4 ? fs::absolute(argv[4]) : fs::path(),
                                  argc > 5 ? argv[5] : "", argc > 6 ? std::atoi(argv[6]) : 0);
        return good ? 0 : 1;
    } catch (const std::exception& fault) {
        std::cerr << "fault_test: " << fault.what() << "\n";
        return 1;
    }
}
