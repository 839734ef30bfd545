// The keeper of the site of many nodes.
#include "tests/proof/site_scale_keeper.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <stdexcept>
#include <utility>

#include "host/store/connection.h"
#include "host/store/tables/alarm_log.h"
#include "host/store/tables/events.h"
#include "host/store/tables/lines.h"
#include "tests/proof/site_databases.h"
#include "tests/proof/site_scale_scenario.h"
#include "tests/proof/soak_memory.h"
#include "tests/proof/world_run.h"

namespace proof::site_scale {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kSeed = 20010108;
constexpr int kLongestStart = 120;   // seconds
constexpr int kLongestDrain = 3600;  // seconds

class Keeper {
 public:
    Keeper(int alarms, std::string program, std::string library)
        : alarms_(alarms), program_(std::move(program)), library_(std::move(library)) {}

    void Keep() {
        for (int node = 1; node <= kNodes; ++node) {
            Start(node);
        }
        UntilAllServe();
        Look("beginning");
        for (const std::time_t begin = std::time(nullptr); raised_ < alarms_; sleep(1)) {
            const int second = static_cast<int>(std::time(nullptr) - begin);
            RaiseAlarms(second);
            KillAndStart(second);
        }
        Drain();
        Look("end");
        EndAll();
        ledger_ << "end" << std::endl;
    }

 private:
    int Roll(unsigned sides) { return static_cast<int>(random_() % sides); }

    // A host of its own, as far as files go.
    void Start(int node) {
        const std::string name = NodeName(node);
        const std::string folder = fs::absolute(name).string();
        fs::create_directories(folder);
        nodes_[node] =
            StartBeside({program_, "--database", SiteDatabase(), "--state", folder, "--locks",
                         folder, "--library", library_, "run", "--node", name});
    }

    int LinesServed() {
        int served = 0;
        for (const host::LineState& line : host::ReadLines(database_)) {
            served += line.process > 0 ? 1 : 0;
        }
        return served;
    }
    void UntilAllServe() {
        for (int second = 0; LinesServed() < kLines; ++second) {
            if (second == kLongestStart) {
                throw std::runtime_error("not all lines are served");
            }
            sleep(1);
        }
    }

    void RaiseAlarms(int second) {
        int count = Roll(1000) < kOthersOfAThousand ? 1 : 0;
        if (second % kBurstEvery == kFirstBurst) {
            count += kBurst;
            PlanKill(second);
        }
        for (; count > 0 && raised_ < alarms_; --count) {
            const int group = Roll(kGroups);
            const std::time_t now = std::time(nullptr);
            const int32_t alarm = host::RaiseAlarm(
                database_,
                {GroupName(group) + "/1", std::to_string(1 + Roll(4)), "SRV", TextOf(++raised_)},
                now);
            ledger_ << "raised " << alarm << " " << raised_ << " " << group << " " << now
                    << std::endl;
        }
    }

    // The pages of a burst are on their lines for half a minute.
    void PlanKill(int second) {
        if (second / kBurstEvery % kBurstsBetweenKills == 0) {
            kill_at_ = second + 5 + Roll(25);
        }
    }
    void KillAndStart(int second) {
        if (second == kill_at_) {
            victim_ = 1 + kills_ % kNodes;
            Kill(victim_, kills_ % 2 == 0);
            ++kills_;
        }
        if (victim_ != 0 && second == kill_at_ + kDownFor) {
            Start(std::exchange(victim_, 0));
        }
    }
    void Kill(int node, bool with_lines) {
        for (const host::LineState& line : host::ReadLines(database_)) {
            if (with_lines && line.node == NodeName(node) && line.process > 0) {
                kill(static_cast<pid_t>(line.process), SIGKILL);
            }
        }
        kill(nodes_.at(node), SIGKILL);
        waitpid(nodes_.at(node), nullptr, 0);
        ledger_ << "killed " << NodeName(node) << " " << std::time(nullptr) << std::endl;
    }

    void Look(const char* when) {
        for (const auto& [node, process] : nodes_) {
            Note(when, NodeName(node), process);
        }
        for (const host::LineState& line : host::ReadLines(database_)) {
            Note(when, line.line.substr(0, line.line.find(' ')) + "-line",
                 static_cast<pid_t>(line.process));
        }
    }
    void Note(const char* when, const std::string& name, pid_t process) {
        const soak::Sample sample = soak::TakeSampleOf(std::to_string(process), 0);
        ledger_ << "sample " << when << " " << name << " " << sample.resident_pages << " "
                << sample.descriptors << std::endl;
    }

    void Drain() {
        const std::time_t last = std::time(nullptr) + kLongestDrain;
        while (std::time(nullptr) < last && (victim_ != 0 || host::HasPagesInHand(database_) ||
                                             host::CountPendingPages(database_) > 0)) {
            sleep(kDownFor);
            if (victim_ != 0) {
                Start(std::exchange(victim_, 0));
            }
        }
        UntilAllServe();
    }

    void EndAll() {
        for (const auto& [node, process] : nodes_) {
            kill(process, SIGTERM);
        }
        for (const auto& [node, process] : nodes_) {
            int status = 0;
            waitpid(process, &status, 0);
            ledger_ << "node " << NodeName(node) << " " << status << std::endl;
        }
    }

    const int alarms_;
    const std::string program_, library_;
    host::Connection database_{SiteDatabase()};
    std::minstd_rand random_{kSeed};
    std::ofstream ledger_{kLedger};
    std::map<int, pid_t> nodes_;
    int raised_ = 0;
    int kills_ = 0;
    int kill_at_ = -1;  // second
    int victim_ = 0;    // a node that is to come back; 0: none
};

}  // namespace

void KeepSite(int alarms, const std::string& program, const std::string& library) {
    Keeper(alarms, program, library).Keep();
}

}  // namespace proof::site_scale
