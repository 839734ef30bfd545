// The soak: a month of a busy site in virtual time, with an account of every page, and a look at
// memory and descriptors each hour.
//   soak DAYS [LEAK]   LEAK: so many bytes are lost with each page, to show that it would be seen
// Runs in a folder of its own in memory.
#include <malloc.h>
#include <pagerfwd/pagerfwd.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <queue>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "engine/pager_hdl.h"
#include "host/store/pool.h"
#include "host/store/tables/alarm_log.h"
#include "linux/win_system.h"
#include "sim/phone/modem.h"
#include "sim/testing.h"
#include "tests/proof/page_watch.h"
#include "tests/proof/soak_account.h"
#include "tests/proof/soak_memory.h"
#include "tests/proof/soak_site.h"
#include "tests/support/temp_dir.h"

namespace proof::soak {
namespace {

using namespace std::chrono_literals;

constexpr unsigned kSeed = 20010108;
constexpr const char* kDatabase = "site.db";
constexpr int kHour = 3600;
constexpr int kAlarmEverySeconds = 470;  // on average
constexpr auto kStep = 100ms;            // ten times the usual one: fewer looks at a quiet line
constexpr long kHandleRecord = 2 * sizeof(void*);  // kept for each opening of a port, by rule

class Soak {
 public:
    Soak(int days, size_t leak) : days_(days), leak_(leak) {
        MakeDatabase(kDatabase);
        weather_.AddCentres(exchange_);
        line_ = std::make_unique<pagersim::AttachedLine>(
            1, std::make_unique<pagersim::Modem>("COM 1", pagersim::ModemOptions{}, exchange_,
                                                 watch_));
        SetTableWatcher(&watch_);
        pagersim::VirtualClock::SetStep(kStep);
        samples_.reserve(static_cast<size_t>(days + 2) * 26);
    }
    ~Soak() { SetTableWatcher(nullptr); }
    Soak(const Soak&) = delete;
    Soak& operator=(const Soak&) = delete;

    void Run() {
        Start();
        int next_alarm = 0;
        for (int hour = 1; hour <= days_ * 24; ++hour) {
            while (next_alarm < hour * kHour) {
                WaitUntil(next_alarm);
                RaiseAlarm();
                next_alarm += 1 + static_cast<int>(Roll(2 * kAlarmEverySeconds));
            }
            WaitUntil(hour * kHour);
            Look(hour, true);
            if (hour == 1 || hour % 24 == 3) {
                Restart(hour);
            }
        }
        Drain();
        Stop();
        Look(days_ * 24 + 24, false);
    }

    bool Report(std::chrono::milliseconds took) const {
        const Account::Totals totals = account_.Judge(kDatabase);
        std::cout << days_ << " days in " << took.count() << " ms: " << totals.alarms << " alarms, "
                  << totals.pages << " pages, " << totals.sends << " sends, " << totals.received
                  << " received\n  " << totals.done << " pages done, " << totals.given_up
                  << " repeated or tried to the end, " << totals.acknowledged << " acknowledged\n";
        const Sample& first = samples_.front();
        const Sample& last = samples_.back();
        for (const Sample* sample : {&first, &last}) {
            std::cout << "  hour " << sample->hour << ": " << sample->bytes_in_use
                      << " bytes in use, " << sample->resident_pages << " pages resident, "
                      << sample->descriptors << " descriptors\n";
        }
        std::vector<std::string> complaints = totals.complaints;
        for (const std::string& grown : Growth(samples_)) {
            complaints.push_back("grown: " + grown);
        }
        constexpr int kMonth = 30;
        if (days_ >= kMonth && (totals.alarms < 5000 || totals.sends < 20000)) {
            complaints.emplace_back("the site was not busy enough");
        }
        for (size_t i = 0; i < std::min<size_t>(complaints.size(), 20); ++i) {
            std::cout << "  " << complaints[i] << "\n";
        }
        std::cout << (complaints.empty() ? "every page is accounted for, and nothing grows"
                                         : std::to_string(complaints.size()) + " complaints")
                  << std::endl;
        return complaints.empty();
    }

 private:
    // --- The engine.

    void Start() {
        int32_t none = 0;
        FwdSpecialInfoStr info{database_, &none, nullptr, nullptr};
        StartAlarmFwdPager(&info);
    }

    static void Stop() {
        StopAlarmFwdPager();
        host::CloseDatabases();
    }

    void Restart(int hour) {
        Stop();
        account_.NoteRestart(Now());
        Look(hour, false);
        Start();
    }

    // --- What happens at the site.

    void RaiseAlarm() {
        const auto now = static_cast<std::time_t>(time(nullptr));
        int32_t alarm = 0;
        {
            host::Connection connection(kDatabase);
            alarm = host::RaiseAlarm(connection, {"PLANT/1", "2", "srv", "pump"}, now);
            host::Statement(connection, "UPDATE AlarmLog SET pagerstate = '2' WHERE alarmlogID = ?")
                .Bind(std::to_string(alarm))
                .Run();
        }
        const size_t count = 1 + Roll(3);
        for (size_t first = Roll(20), i = 0; i < count; ++i) {
            Forward(alarm, Pagers()[(first + 3 * i) % Pagers().size()].name);
        }
        if (Roll(10) < 3) {
            acknowledgements_.push({Now() + 60 + static_cast<int>(Roll(kHour)), alarm});
        }
    }

    void Forward(int32_t alarm, std::string pager) {
        std::string server = "srv";
        std::string group = "PLANT/1";
        char* groups[] = {group.data()};
        char* pagers[] = {pager.data()};
        FwdSpecialInfoStr info{database_, &alarm, nullptr, groups};
        account_.NoteForward({alarm, pager},
                             AlarmFwdPager(&info, server.data(), nullptr, pagers, 1));
    }

    void Acknowledge(int32_t alarm) {
        host::Connection connection(kDatabase);
        host::AcknowledgeAlarm(connection, alarm, time(nullptr));
        account_.NoteAcknowledgement(alarm, Now());
    }

    PageWatch::Hooks Hooks() {
        PageWatch::Hooks hooks;
        hooks.dials = [this](const PageKey& page) {
            ++sends_;
            account_.NoteDial(page, Now());
            if (leak_ > 0) {
                lost_ = std::malloc(leak_);
            }
        };
        hooks.delivers = [this](const PageKey& page, const pagersim::Event&) {
            account_.NoteReceived(page, weather_.LatestIsFaulty());
        };
        hooks.opens = [this] { ++openings_; };
        return hooks;
    }

    // --- Time.

    static int Now() { return static_cast<int>(pagersim::VirtualClock::Now() / 1s); }

    void WaitUntil(int second) {
        while (!acknowledgements_.empty() && acknowledgements_.top().first <= second) {
            const auto [when, alarm] = acknowledgements_.top();
            acknowledgements_.pop();
            SleepUntil(when);
            Acknowledge(alarm);
        }
        SleepUntil(second);
    }

    static void SleepUntil(int second) {
        if (second > Now()) {
            Sleep(static_cast<uint32_t>(second - Now()) * 1000);
        }
    }

    // Until nothing is owed any more.
    void Drain() {
        for (int second = Now(); CPagerHdl::checkAlready; second += 60) {
            WaitUntil(second);
        }
    }

    void Look(int hour, bool engine_up) {
        const long kept = openings_ * kHandleRecord + static_cast<long>(sqlite3_memory_used());
        samples_.push_back(TakeSample(hour, engine_up, sends_, kept));
    }

    unsigned Roll(unsigned sides) { return static_cast<unsigned>(random_() % sides); }

    const int days_;
    const size_t leak_;
    char database_[8] = "site.db";
    std::minstd_rand random_{kSeed};
    Weather weather_{kSeed + 1};
    Account account_;
    long sends_ = 0;
    std::atomic<long> openings_{0};
    void* lost_ = nullptr;
    using Acknowledgement = std::pair<int, int32_t>;  // when, of which alarm
    std::priority_queue<Acknowledgement, std::vector<Acknowledgement>, std::greater<>>
        acknowledgements_;
    std::vector<Sample> samples_;
    PageWatch watch_{Hooks()};
    pagersim::Exchange exchange_;
    std::unique_ptr<pagersim::AttachedLine> line_;
};

bool RunSoak(int days, size_t leak) {
    setenv("TMPDIR", "/dev/shm", 1);
    const test_support::TempDir folder;
    const auto begun = std::chrono::steady_clock::now();
    const pagersim::VirtualClock clock;
    Soak soak(days, leak);
    soak.Run();
    return soak.Report(std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - begun));
}

}  // namespace
}  // namespace proof::soak

int main(int argc, char** argv) {
    if (argc != 2 && argc != 3) {
        std::cerr << "soak DAYS [LEAK]\n";
        return 2;
    }
    // One for all threads: how many the C library takes, as one worker ends and the next begins,
    // and what each keeps, would hide what really grows.
    mallopt(M_ARENA_MAX, 1);
    try {
        const size_t leak = argc == 3 ? std::stoul(argv[2]) : 0;
        return proof::soak::RunSoak(std::stoi(argv[1]), leak) ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << "soak: " << error.what() << "\n";
        return 2;
    }
}
