// The keeper of the soak's site.
#include "tests/proof/site_soak_keeper.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <random>

#include "host/store/connection.h"
#include "host/store/tables/alarm_log.h"
#include "host/store/tables/events.h"
#include "host/store/tables/lines.h"
#include "tests/proof/site_databases.h"
#include "tests/proof/site_soak_scenario.h"
#include "tests/proof/soak_memory.h"
#include "tests/proof/world_run.h"

namespace proof::site_soak {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kSeed = 20010108;
constexpr unsigned kAlarmEvery = 2 * kHour;  // seconds, on average
constexpr unsigned kTroubleEvery = 8 * kHour;
constexpr unsigned kLongestTrouble = 2 * kHour;
constexpr unsigned kLinesThatFail = kLines.size() - 1;

void SetDevice(size_t line, Modem modem) {
    const std::string device = DeviceOf(kLines.at(line));
    fs::remove(device);
    fs::create_symlink("/dev/ttyS" + std::to_string(PortOf(line, modem) - 1), device);
}

class Keeper {
 public:
    explicit Keeper(int days) : end_(days * 24 * kHour) {
        for (size_t line = 0; line < kLines.size(); ++line) {
            SetDevice(line, Modem::kGood);
        }
    }

    void Keep(const std::string& program, const std::string& library) {
        node_ = StartBeside({program, "--database", SiteDatabase(), "--library", library, "run"});
        Plan(60, [this] { RaiseAlarms(); });
        Plan(3 * kHour, [this] { MakeTrouble(); });
        Plan(kHour, [this] { Look(); });
        while (!plan_.empty()) {
            const auto next = plan_.begin();
            const auto what = next->second;
            SleepUntil(next->first);
            plan_.erase(next);
            what();
        }
        Drain();
        kill(node_, SIGTERM);
        int status = 0;
        waitpid(node_, &status, 0);
        ledger_ << "node " << status << "\nend" << std::endl;
    }

 private:
    static int Now() { return static_cast<int>(std::time(nullptr) - kStart); }
    static void SleepUntil(int second) {
        if (second > Now()) {
            sleep(static_cast<unsigned>(second - Now()));
        }
    }
    int Roll(unsigned sides) { return static_cast<int>(random_() % sides); }

    // Not behind the end of the month; what was begun is ended all the same.
    void Plan(int second, std::function<void()> what) {
        if (second <= end_) {
            plan_.emplace(second, std::move(what));
        }
    }

    void RaiseAlarms() {
        const std::string group = "G" + std::to_string(Roll(kGroups));
        host::Connection connection(SiteDatabase());
        const int32_t alarm =
            host::RaiseAlarm(connection, {group + "/1", std::to_string(1 + Roll(4)), "SRV", "pump"},
                             std::time(nullptr));
        ledger_ << "raised " << alarm << " " << group << std::endl;
        if (Roll(10) < 3) {
            Plan(Now() + 20 + Roll(kHour), [this, alarm] { Acknowledge(alarm); });
        }
        Plan(Now() + 1 + Roll(2 * kAlarmEvery), [this] { RaiseAlarms(); });
    }

    void Acknowledge(int32_t alarm) {
        host::Connection connection(SiteDatabase());
        host::AcknowledgeAlarm(connection, alarm, std::time(nullptr));
        ledger_ << "acknowledged " << alarm << std::endl;
    }

    void MakeTrouble() {
        const auto line = static_cast<size_t>(Roll(kLinesThatFail));
        ledger_ << "trouble " << kLines.at(line) << std::endl;
        switch (Roll(4)) {
            case 0:
                KillLine(line);
                break;
            case 1:
                fs::remove(DeviceOf(kLines.at(line)));
                break;
            case 2:
                SetDevice(line, Modem::kSilent);
                break;
            default:
                SetDevice(line, Modem::kWithoutTone);
                break;
        }
        const int back = Now() + kHour / 3 + Roll(kLongestTrouble);
        plan_.emplace(back, [line] { SetDevice(line, Modem::kGood); });
        Plan(Now() + 1 + Roll(2 * kTroubleEvery), [this] { MakeTrouble(); });
    }

    void KillLine(size_t line) {
        host::Connection connection(SiteDatabase());
        const auto state = host::FindLine(connection, kLines.at(line));
        if (state && state->process > 0) {
            kill(static_cast<pid_t>(state->process), SIGKILL);
            ledger_ << "killed " << std::time(nullptr) << " " << kLines.at(line) << std::endl;
        }
    }

    // Of a line while it has nothing to do: a page takes descriptors, too.
    void Look() {
        Note("node", node_);
        host::Connection connection(SiteDatabase());
        for (const host::LineState& line : host::ReadLines(connection)) {
            if (line.doing == "idle" && line.process > 0) {
                Note(line.line, static_cast<pid_t>(line.process));
            }
        }
        Plan(Now() + kHour, [this] { Look(); });
    }
    void Note(const std::string& name, pid_t process) {
        const soak::Sample sample = soak::TakeSampleOf(std::to_string(process), Now() / kHour);
        ledger_ << "sample " << name << " " << sample.hour << " " << sample.resident_pages << " "
                << sample.descriptors << std::endl;
    }

    // Until nothing is owed any more; a day at the most.
    void Drain() {
        for (const int last = Now() + 24 * kHour; Now() < last; sleep(5 * 60)) {
            host::Connection connection(SiteDatabase());
            if (!host::HasPagesInHand(connection) && host::CountPendingPages(connection) == 0) {
                return;
            }
        }
    }

    const int end_;
    std::minstd_rand random_{kSeed};
    std::ofstream ledger_{kLedger};
    std::multimap<int, std::function<void()>> plan_;
    pid_t node_ = -1;
};

}  // namespace

void KeepSite(int days, const std::string& program, const std::string& library) {
    Keeper(days).Keep(program, library);
}

}  // namespace proof::site_soak
