// The kill test: simulated worlds, each with a site of three lines that is killed (SIGKILL) again
// and again, at points that a seed decides: the node, a line, both, or all. Each world is judged by
// its ledger and by what the centres received.
//   kill_test BINARIES LIBRARIES KILLS [DATABASE [FOLDER]]   DATABASE: sqlite or postgres, see
//                           site_databases.h; FOLDER keeps what is left of worlds that fail
// Prints how many kills there were of each kind. Fails when a world does, or there are too few.
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/proof/kill_judge.h"
#include "tests/proof/kill_points.h"
#include "tests/proof/kill_scenario.h"
#include "tests/proof/worlds.h"

namespace proof::kills {
namespace {

namespace fs = std::filesystem;

constexpr int kKillsAWorld = 25;
constexpr int kPlannedInTen = 13;  // for ten kills: some points are not come to
constexpr int kLeastShare = 50;    // one kill in so many, of each victim, kind and moment
constexpr int kMostComplaints = 20;

std::vector<std::string> CommandFor(const Programs& programs, int seed) {
    return {programs.Binary("kill_site"),   "keep",
            std::to_string(seed),           std::to_string(kKillsAWorld),
            programs.Binary("pagerfwd"),    programs.Library("PagerFwd"),
            programs.Library("kill_points")};
}

class Tally {
 public:
    Tally(int wanted, fs::path kept, bool on_server)
        : wanted_(wanted), kept_(std::move(kept)), on_server_(on_server) {}

    void Count(int seed, const fs::path& folder, int status) {
        std::ifstream ledger(folder / kLedger);
        std::ifstream report(folder / kReport);
        Verdict verdict = Judge(ledger, report);
        if (status != 0) {
            verdict.complaints.push_back("the world ended with " + std::to_string(status));
        }
        for (const Kill& kill : verdict.kills) {
            ++kills_;
            ++by_[WordOfVictims(kill.victims)];
            ++by_[WordOfKind(kill.kind)];
            by_[kForgetting] += kill.forgets ? 1 : 0;
            ++doings_[kill.doing];
        }
        pages_ += verdict.pages;
        doubles_ += static_cast<int>(verdict.doubles.size());
        failed_ += verdict.complaints.empty() ? 0 : 1;
        for (const std::string& each : verdict.doubles) {
            std::cout << "world " << seed << ": " << each << "\n";
        }
        for (const std::string& complaint : verdict.complaints) {
            if (++complaints_ <= kMostComplaints) {
                std::cerr << "world " << seed << ": " << complaint << "\n";
            }
        }
        if (!verdict.complaints.empty() && !kept_.empty()) {
            fs::copy(folder, kept_ / ("world-" + std::to_string(seed)),
                     fs::copy_options::recursive | fs::copy_options::overwrite_existing);
        }
    }

    bool Report() const {
        bool enough = kills_ >= wanted_;
        std::cout << kills_ << " kills over " << kLines << " lines:\n";
        for (const std::string& word : Words()) {
            const auto found = by_.find(word);
            const int count = found == by_.end() ? 0 : found->second;
            const bool few = count < wanted_ / kLeastShare;
            enough = enough && !few;
            std::cout << "  " << word << ": " << count << (few ? "  too few" : "") << "\n";
        }
        std::cout << "  lines that were:";
        for (const auto& [doing, count] : doings_) {
            std::cout << " " << doing << " " << count;
        }
        std::cout << "\n"
                  << pages_ << " pages; "
                  << (failed_ == 0 ? "none lost, " + std::to_string(doubles_) +
                                         " sent once more, each by a kill of its line or node"
                                   : std::to_string(failed_) + " worlds failed")
                  << std::endl;
        return enough && failed_ == 0;
    }

 private:
    static constexpr std::array<const char*, 4> kWordsOfVictims = {"the node", "a line",
                                                                   "a line and the node", "all"};
    static constexpr std::array<const char*, kPointKinds> kWordsOfKinds = {
        "at a write of the store", "at a sync of the store", "at another write",
        "at a byte or a wait"};
    static constexpr std::array<const char*, 2> kWordsOnServer = {"at a question to the server",
                                                                  "at an answer of the server"};
    static constexpr const char* kForgetting =
        "when a page was accepted, and its row not rewritten";

    static const char* WordOfVictims(unsigned victims) {
        constexpr unsigned kNode = 1U << kNodeRole;
        constexpr unsigned kAll = (1U << kRoles) - 1;
        const bool node = (victims & kNode) != 0;
        return kWordsOfVictims[victims == kAll ? 3 : victims == kNode ? 0 : node ? 2 : 1];
    }
    const char* WordOfKind(size_t kind) const {
        return on_server_ && kind < kWordsOnServer.size() ? kWordsOnServer.at(kind)
                                                          : kWordsOfKinds.at(kind);
    }
    std::vector<std::string> Words() const {
        std::vector<std::string> words(kWordsOfVictims.begin(), kWordsOfVictims.end());
        for (size_t kind = 0; kind < kPointKinds; ++kind) {
            words.emplace_back(WordOfKind(kind));
        }
        words.emplace_back(kForgetting);
        return words;
    }

    const int wanted_;
    const fs::path kept_;
    const bool on_server_;
    std::map<std::string, int> by_;
    std::map<std::string, int> doings_;
    int kills_ = 0;
    int pages_ = 0;
    int doubles_ = 0;
    int failed_ = 0;
    int complaints_ = 0;
};

bool RunTest(const Programs& programs, int kills, const std::string& kind, const fs::path& kept) {
    Tally tally(kills, kept, kind == "postgres");
    const std::unique_ptr<SiteDatabases> databases = OpenSiteDatabases(kind);
    RunWorlds(
        programs, *databases, (kills * kPlannedInTen / 10 + kKillsAWorld - 1) / kKillsAWorld,
        [&](int seed) { return CommandFor(programs, seed); },
        [&](int seed, const fs::path& folder, int status) { tally.Count(seed, folder, status); });
    return tally.Report();
}

}  // namespace
}  // namespace proof::kills

int main(int argc, char** argv) {
    if (argc < 4) {
        std::cerr << "kill_test BINARIES LIBRARIES KILLS [DATABASE [FOLDER]]\n";
        return 2;
    }
    try {
        const std::filesystem::path kept = argc > 5 ? std::filesystem::absolute(argv[5]) : "";
        return proof::kills::RunTest(
                   {std::filesystem::absolute(argv[1]), std::filesystem::absolute(argv[2])},
                   std::atoi(argv[3]), argc > 4 ? argv[4] : "sqlite", kept)
                   ? 0
                   : 1;
    } catch (const std::exception& fault) {
        std::cerr << "kill_test: " << fault.what() << "\n";
        return 1;
    }
}
