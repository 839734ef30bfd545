// Keeps a site of several lines that is killed again and again, inside a simulated world: raises
// and acknowledges alarms, starts the node anew when it has died, as a service manager does, and
// arms the points at which it, a line, both or all are killed.
//   kill_site make SITE_FILE             writes the site as a file
//   kill_site keep SEED KILLS PROGRAM LIBRARY POINTS_MODULE
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host/store/connection.h"
#include "host/store/tables/alarm_log.h"
#include "tests/proof/kept_site.h"
#include "tests/proof/kill_points.h"
#include "tests/proof/kill_scenario.h"
#include "tests/proof/shared_plan.h"
#include "tests/proof/site_databases.h"

namespace proof::kills {
namespace {

constexpr int kAlarmEvery = 36;      // seconds
constexpr int kLongestAwaited = 35;  // seconds from the arming of a point to its passing
constexpr int kDownTime = 3;         // from a node's end to the next
constexpr int kLastAlarms = 120;     // seconds: until the lines have taken the last of them

// --- Points.

class Armoury {
 public:
    explicit Armoury(unsigned seed)
        : random_(seed),
          points_(
              MakePlan<KillPoints>(std::filesystem::absolute(kPoints).c_str(), kPointsVariable)) {
        if (points_ == nullptr) {
            throw std::runtime_error("no file for the points");
        }
    }

    // In turn: a line, the node, a line and the node, all. By a point of theirs, of any kind.
    void Arm(int number) {
        const uint32_t line = 1 + Roll(kLines);
        const int whom = number % 4;
        const bool at_node = whom == 1 || (whom > 1 && Roll(3) == 0);
        constexpr uint32_t kNode = 1U << kNodeRole;
        constexpr uint32_t kAll = (1U << kRoles) - 1;
        const std::array<uint32_t, 4> victims = {1U << line, kNode, kNode | (1U << line), kAll};
        // What there is of each kind in the seconds of a page; a store's files are seldom synced.
        constexpr std::array<unsigned, kPointKinds> kMost = {8, 2, 6, 90};
        const unsigned kind =
            Roll(2) == 0 ? static_cast<unsigned>(PointKind::kWorld) : Roll(kPointKinds);
        points_->role = at_node ? static_cast<uint32_t>(kNodeRole) : line;
        points_->kind = kind;
        points_->victims = victims.at(static_cast<size_t>(whom));
        points_->left = static_cast<int32_t>(1 + Roll(kMost.at(kind)));
    }
    void Disarm() { points_->left = 0; }
    bool HasBeenFenced(size_t line) {
        return std::exchange(fenced_.at(line), points_->fenced.at(line)) !=
               points_->fenced.at(line);
    }
    bool HasKilled() { return std::exchange(seen_, points_->kills) != points_->kills; }
    const KillPoints& Points() const { return *points_; }

 private:
    unsigned Roll(unsigned sides) { return static_cast<unsigned>(random_() % sides); }

    std::minstd_rand random_;
    KillPoints* const points_;
    int seen_ = 0;
    std::array<int, kRoles> fenced_{};
};

// --- The one who keeps it.

class Keeper {
 public:
    Keeper(unsigned seed, int kills, Node& node)
        : random_(seed), kills_(kills), node_(node), armoury_(seed) {}

    void Keep() {
        const int end_of_kills = kBetweenKills * (kills_ + 1);
        node_.Start(false);
        while (Now() < end_of_kills) {
            Second(false);
            RaiseAlarms();
            Kill();
        }
        armoury_.Disarm();
        Wait(kLastAlarms);
        node_.AskToEnd();
        Finish();
        WriteEnd(ledger_);
    }

 private:
    unsigned Roll(unsigned sides) { return static_cast<unsigned>(random_() % sides); }

    void Second(bool until_done) {
        sleep(1);
        NoteKills();
        LookAtLines();
        int status = 0;
        if (node_.HasEnded(status)) {
            ledger_ << "node " << std::time(nullptr) << " " << status << std::endl;
            down_until_ = Now() + kDownTime;
        }
        if (!node_.IsUp() && Now() >= down_until_) {
            node_.Start(until_done);
        }
    }

    void Wait(int seconds) {
        for (const int end = Now() + seconds; Now() < end;) {
            Second(false);
            Acknowledge();
        }
    }

    // The last life, which ends by itself.
    void Finish() {
        int status = 0;
        while (!node_.HasEnded(status)) {
            sleep(1);
        }
        node_.Start(true);
        node_.WaitForEnd(ledger_);
    }

    void Kill() {
        const bool is_due = Now() >= kBetweenKills * (armed_ + 1) + static_cast<int>(delay_);
        if (armed_ < kills_ && is_due) {
            armoury_.Arm(armed_++);
            delay_ = Roll(25);
            armed_at_ = Now();
            waiting_ = true;
        } else if (waiting_ && Now() > armed_at_ + kLongestAwaited) {
            armoury_.Disarm();
            ledger_ << "missed" << std::endl;
            waiting_ = false;
        }
    }

    void NoteKills() {
        for (size_t line = 1; line < kRoles; ++line) {
            if (armoury_.HasBeenFenced(line)) {
                ledger_ << "fenced " << std::time(nullptr) << " " << line << std::endl;
            }
        }
        if (armoury_.HasKilled()) {
            const KillPoints& points = armoury_.Points();
            waiting_ = false;
            uint32_t line = 1;
            while (line < kRoles - 1 && (points.victims & (1U << line)) == 0) {
                ++line;
            }
            ledger_ << "killed " << std::time(nullptr) << " " << points.role << " " << points.kind
                    << " " << points.victims << " "
                    << (points.victims == 1U << kNodeRole ? "-" : doing_.at(line)) << std::endl;
        }
    }

    // What each says that it does, in a word: what it did when it was killed within a second.
    void LookAtLines() {
        host::Connection connection(SiteDatabase());
        host::Statement lines(connection, "SELECT line, doing FROM Host_Lines");
        while (lines.Step()) {
            std::string doing(lines.Text(1));
            doing = doing.substr(doing.find(": ") == std::string::npos ? 0 : doing.find(": ") + 2);
            std::replace(doing.begin(), doing.end(), ' ', '-');
            doing_.at(static_cast<size_t>(lines.Text(0).back() - '0')) =
                doing.empty() ? "-" : doing;
        }
    }

    void RaiseAlarms() {
        if (Now() < next_alarm_) {
            Acknowledge();
            return;
        }
        next_alarm_ += kAlarmEvery / 2 + static_cast<int>(Roll(kAlarmEvery));
        const std::string group = Routes()[Roll(static_cast<unsigned>(Routes().size()))].group;
        const int32_t alarm = RaiseNext(ledger_, ++alarms_, group);
        if (Roll(8) == 0) {
            acknowledgements_.emplace_back(Now() + 5 + static_cast<int>(Roll(90)), alarm);
        }
    }

    void Acknowledge() {
        const auto due = std::find_if(acknowledgements_.begin(), acknowledgements_.end(),
                                      [](const auto& each) { return each.first <= Now(); });
        if (due == acknowledgements_.end()) {
            return;
        }
        host::Connection connection(SiteDatabase());
        host::AcknowledgeAlarm(connection, due->second, std::time(nullptr));
        ledger_ << "acknowledged " << due->second << " " << std::time(nullptr) << std::endl;
        acknowledgements_.erase(due);
    }

    std::minstd_rand random_;
    const int kills_;
    Node& node_;
    Armoury armoury_;
    std::ofstream ledger_{kLedger};
    std::array<std::string, kRoles> doing_{{"-", "-", "-", "-"}};
    std::vector<std::pair<int, int32_t>> acknowledgements_;  // when, of which alarm
    int next_alarm_ = 5;
    int alarms_ = 0;
    int armed_ = 0;
    int armed_at_ = 0;
    unsigned delay_ = 0;
    bool waiting_ = false;
    int down_until_ = 0;
};

}  // namespace
}  // namespace proof::kills

int main(int argc, char** argv) {
    using namespace proof::kills;
    const std::string word = argc > 1 ? argv[1] : "";
    if (word == "make" && argc == 3) {
        WriteSite(argv[2]);
        return 0;
    }
    if (word == "keep" && argc == 7) {
        Node node(argv[4], argv[5], argv[6], Node::Place::kBehind);
        Keeper(static_cast<unsigned>(std::atoi(argv[2])), std::atoi(argv[3]), node).Keep();
        return 0;
    }
    std::cerr << "kill_site make SITE_FILE | kill_site keep SEED KILLS PROGRAM LIBRARY MODULE\n";
    return 2;
}
