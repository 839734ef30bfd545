// One life of a run of the crash test: a service with the engine, on the SQLite store and a
// simulated exchange, in virtual time. It takes up where the ledger says that the life before it
// was killed.
//   crash_site make        makes the database
//   crash_site run TARGET   does what is left to do; kills itself at the target, or writes a census
//                           of the points (crash_scenario.h has the words)
// A point is anything that can be told from outside: a call of the table access, before and after;
// a write or sync of the store's files; bytes on the line; ten seconds of virtual time.
#include <fcntl.h>
#include <pagerfwd/pagerfwd.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "engine/pager_hdl.h"
#include "host/site/site_file.h"
#include "host/site/site_tables.h"
#include "host/store/connection.h"
#include "host/store/faults.h"
#include "host/store/pool.h"
#include "host/store/reserve.h"
#include "host/store/schema.h"
#include "host/store/tables/alarm_log.h"
#include "linux/win_system.h"
#include "sim/centres/ntt_exchange.h"
#include "sim/centres/plain_service.h"
#include "sim/centres/signal_service.h"
#include "sim/centres/tap_centre.h"
#include "sim/centres/ucp_centre.h"
#include "sim/phone/modem.h"
#include "sim/testing.h"
#include "tests/proof/crash_scenario.h"
#include "tests/proof/file_calls.h"
#include "tests/proof/ledger.h"
#include "tests/proof/page_watch.h"

namespace proof::crash {
namespace {

using namespace std::chrono_literals;

constexpr std::time_t kStart = pagersim::VirtualClock::kDefaultStart;
constexpr std::time_t kDownTime = 20;       // from a kill to the next life
constexpr unsigned kMostRealSeconds = 120;  // a life takes a moment
constexpr auto kStep = 50ms;                // five times the usual one: fewer looks at a quiet line

// --- The ledger.

class Ledger {
 public:
    Ledger() : file_(open(kLedger, O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0644)) {}

    template <typename... Words>
    void Write(const Words&... words) {
        std::ostringstream line;
        ((line << words << ' '), ...);
        const std::string text = line.str() + "\n";
        if (write(file_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
            std::abort();
        }
    }

    static std::vector<LedgerLine> Read() {
        std::ifstream file(kLedger);
        return ReadLedgerLines(file);
    }

 private:
    const int file_;
};

// --- Points.

class Points {
 public:
    Points(Ledger& ledger, const Target& target) : ledger_(ledger), target_(target) {}

    void Pass(bool by_clock = false) {
        const Flight flight = watch_ != nullptr ? watch_->Flight() : Flight{};
        const Phase phase = PhaseOf(flight, by_clock);
        const std::lock_guard<SpinLock> guard(lock_);
        if (target_.kind == Target::Kind::kCensus) {
            census_ += static_cast<char>('0' + static_cast<int>(phase));
        } else if (target_.kind == Target::Kind::kPoint && phase == target_.phase &&
                   ++passed_ == target_.nth) {
            ledger_.Write("killed", static_cast<int>(phase), flight.page.alarm,
                          flight.page.alarm != 0 ? flight.page.pager : "-",
                          static_cast<int>(flight.stage), time(nullptr), writing_ ? 1 : 0,
                          flight.unfolded);
            kill(getpid(), SIGKILL);
        }
    }

    void Watch(const PageWatch* watch) { watch_ = watch; }
    void SetForwarding(bool forwarding) { forwarding_ = forwarding; }
    void SetWriting(bool writing) { writing_ = writing; }
    const std::string& Census() const { return census_; }

 private:
    Phase PhaseOf(const Flight& flight, bool by_clock) const {
        if (flight.rewriting) {
            return Phase::kRewriting;
        }
        if (forwarding_ && std::this_thread::get_id() == service_) {
            return Phase::kBeforeAnswer;
        }
        switch (flight.stage) {
            case Stage::kDialling:
                return Phase::kDial;
            case Stage::kTransferring:
                return Phase::kTransfer;
            case Stage::kAccepted:
                return Phase::kAccepted;
            case Stage::kSettingUp:
                return Phase::kOther;
            case Stage::kNone:
                break;
        }
        return by_clock && CPagerHdl::checkAlready ? Phase::kAsleep : Phase::kOther;
    }

    Ledger& ledger_;
    const Target target_;
    const std::thread::id service_ = std::this_thread::get_id();
    const PageWatch* watch_ = nullptr;
    std::atomic<bool> forwarding_{false};
    static inline thread_local bool writing_ = false;
    SpinLock lock_;
    long passed_ = 0;  // in the target's phase
    std::string census_;
};

Points* points = nullptr;  // for the hooks of the files

// --- A file system without space, for a while.

class FullDisk {
 public:
    explicit FullDisk(const Target& target) : target_(target) {}

    // One more write or sync. Whether it is refused.
    bool Refuses() {
        const long nth = ++count_;
        if (target_.kind != Target::Kind::kRefusal || nth < target_.nth) {
            return false;
        }
        if (nth == target_.nth) {
            until_ = time(nullptr) + target_.seconds;
            return true;
        }
        return IsFull();
    }
    bool IsFull() const { return time(nullptr) < until_; }
    long Count() const { return count_; }

 private:
    const Target target_;
    std::atomic<long> count_{0};
    std::atomic<std::time_t> until_{0};
};

FullDisk* disk = nullptr;  // for the hooks of the files

// --- The site.

std::string SiteText() {
    std::ostringstream text;
    text << R"(
encoding = "latin1"
[[port]]
name = "COM 1"
baud = 9600
modem = true
[port.pager]
dial = "ATDT"
prompt = ">"
[port.sms1]
protocol = "TAP"
dial = "ATDT5550101"
data = 7
parity = "even"
[port.sms2]
protocol = "UCP"
dial = "ATDT5550102"
[[hours]]
name = "always"
all = true
)";
    for (const PagerPlan& pager : kPagerPlans) {
        text << "[[pager]]\ndescription = \"" << pager.name << "\"\nport = \"COM 1\"\ntype = \""
             << pager.type << "\"\nnumber = \"" << pager.number << "\"\nretries = " << pager.retries
             << "\ndelay = " << pager.delay_minutes << "\nhours = \"always\"\n";
    }
    return text.str();
}

void MakeDatabase() {
    const host::ReadSite read = host::ParseSite(SiteText());
    host::Connection connection(kDatabase, host::Connection::Mode::kCreate);
    host::CreateTables(connection);
    host::StoreSite(connection, read.site);
    for (int alarm = 1; alarm <= kAlarms; ++alarm) {
        host::Statement(connection,
                        "INSERT INTO AlarmLog (alarmlogID, pagerstate, severity, details)"
                        " VALUES (?, '2', '2', ?)")
            .Bind(int64_t{alarm})
            .Bind("pump" + std::to_string(alarm))
            .Run();
    }
}

template <typename MakeCentre>
pagersim::Subscriber Reachable(const char* name, const char* number, MakeCentre make) {
    pagersim::Subscriber subscriber;
    subscriber.name = name;
    subscriber.numbers = {number};
    subscriber.make_centre = make;
    return subscriber;
}

void AddCentres(pagersim::Exchange& exchange, int busy_calls) {
    auto tap = Reachable("tap", "5550101", [] {
        return std::make_unique<pagersim::TapCentre>(pagersim::TapOptions{});
    });
    tap.busy_calls = busy_calls;
    exchange.Add(std::move(tap));
    exchange.Add(Reachable("ucp", "5550102", [] {
        return std::make_unique<pagersim::UcpCentre>(pagersim::UcpOptions{});
    }));
    exchange.Add(Reachable("plain", "5550100", [] {
        return std::make_unique<pagersim::PlainService>(pagersim::PlainOptions{});
    }));
    auto ntt =
        Reachable("ntt", "5550103", [] { return std::make_unique<pagersim::NttExchange>(); });
    ntt.has_modem = false;
    exchange.Add(std::move(ntt));
    auto signal =
        Reachable("signal", "5550104", [] { return std::make_unique<pagersim::SignalService>(); });
    signal.has_modem = false;
    exchange.Add(std::move(signal));
}

// --- What the lives before this one have done.

struct Past {
    std::time_t now = kStart;
    size_t begun = 0;  // of kActions
    int busy_left = kBusyCalls;
};

Past ReadPast() {
    Past past;
    for (const auto& words : Ledger::Read()) {
        if (words[0] == "forward" || words[0] == "acknowledge" || words[0] == "restart") {
            ++past.begun;
        } else if (words[0] == "dial" && words[2] == "tap") {
            past.busy_left = 0;
        } else if (words[0] == "killed") {
            past.now = std::atol(words[5].c_str()) + kDownTime;
        }
    }
    return past;
}

// --- The service.

class Service {
 public:
    Service(Ledger& ledger, Points& passing) : ledger_(ledger), points_(passing) {}

    void Start() {
        int32_t none = 0;
        FwdSpecialInfoStr info{database_, &none, nullptr, nullptr};
        StartAlarmFwdPager(&info);
    }

    // False: not yet done.
    bool Do(const Action& action) {
        switch (action.deed) {
            case Deed::kForward:
                Forward(action.alarm, action.pager);
                return true;
            case Deed::kAcknowledge:
                return Acknowledge(action.alarm);
            case Deed::kRestart:
                ledger_.Write("restart");
                StopAlarmFwdPager();
                Start();
                return true;
        }
        return true;
    }

    // The look that a service takes at its database every now and then.
    void Look() { host::Statement(lease_.Database(), "SELECT 1").Run(); }

 private:
    void Forward(int alarm, const char* pager) {
        std::string server = "SRV1";
        std::string group = "OPS/1";
        std::string name = pager;
        char* names[] = {name.data()};
        char* groups[] = {group.data()};
        int32_t id = alarm;
        FwdSpecialInfoStr info{database_, &id, nullptr, groups};
        ledger_.Write("forward", alarm, pager);
        points_.SetForwarding(true);
        points_.Pass();
        const int32_t result = AlarmFwdPager(&info, server.data(), nullptr, names, 1);
        points_.Pass();
        points_.SetForwarding(false);
        ledger_.Write("answer", alarm, pager, result);
    }

    // By another program, which is told when it can't, and tries again.
    bool Acknowledge(int alarm) {
        ledger_.Write("acknowledge", alarm);
        try {
            host::Connection connection(kDatabase);
            host::AcknowledgeAlarm(connection, alarm, time(nullptr));
        } catch (const host::StoreError&) {
            return false;
        }
        ledger_.Write("acknowledged", alarm, time(nullptr));
        return true;
    }

    Ledger& ledger_;
    Points& points_;
    char database_[8] = "site.db";
    host::Lease lease_{kDatabase, host::Refusals::kKept};
};

void WriteEnd(Ledger& ledger) {
    host::Connection connection(kDatabase);
    host::Statement rows(connection,
                         "SELECT AlmLogID, PagerDescr, PagerRetries, PagerState"
                         " FROM AlarmFwd_PagerEvents");
    while (rows.Step()) {
        ledger.Write("row", rows.Text(0), rows.Text(1), rows.Text(2), rows.Text(3));
    }
    host::Statement alarms(connection, "SELECT alarmlogID, pagerstate FROM AlarmLog");
    while (alarms.Step()) {
        ledger.Write("alarm", alarms.Text(0), alarms.Text(1));
    }
    ledger.Write("end");
}

PageWatch::Hooks HooksFor(Ledger& ledger) {
    PageWatch::Hooks hooks;
    hooks.at_each_step = [] { points->Pass(); };
    hooks.dials = [&ledger](const PageKey& page) {
        ledger.Write("dial", page.alarm, page.pager, time(nullptr));
    };
    hooks.delivers = [&ledger](const PageKey& page, const pagersim::Event& event) {
        ledger.Write("received", page.alarm, page.pager, time(nullptr), event.recipient,
                     event.text.empty() ? "-" : event.text);
    };
    return hooks;
}

void RunLife(const Target& target) {
    Ledger ledger;
    const Past past = ReadPast();
    const pagersim::VirtualClock clock(past.now);
    Points passing(ledger, target);
    points = &passing;
    PageWatch watch(HooksFor(ledger));
    passing.Watch(&watch);
    SetTableWatcher(&watch);
    SetFileHooks(
        [](FileDeed, int) {
            points->SetWriting(true);
            points->Pass();
        },
        [](FileDeed, int) {
            points->Pass();
            points->SetWriting(false);
        });
    FullDisk full(target);
    disk = &full;
    host::SetFaultListener(
        [&ledger](host::FaultNews, std::string_view text) { ledger.Write("told", text); });
    SkipSyncs();
    pagersim::VirtualClock::SetStep(kStep);
    pagersim::Exchange exchange;
    AddCentres(exchange, past.busy_left);
    const pagersim::AttachedLine line(
        1, std::make_unique<pagersim::Modem>("COM 1", pagersim::ModemOptions{}, exchange, watch));

    std::optional<Service> service(std::in_place, ledger, passing);
    if (target.full) {
        host::ReserveRoom(kDatabase);
    }
    SetFileRefusal(target.full ? WouldGrow
                               : [](FileDeed, int, int64_t) { return disk->Refuses(); });
    service->Start();
    for (size_t next = past.begun;
         next < kActions.size() || CPagerHdl::checkAlready || full.IsFull();) {
        while (next < kActions.size() && time(nullptr) - kStart >= kActions[next].at &&
               service->Do(kActions[next])) {
            ++next;
        }
        passing.Pass(true);
        Sleep(10000);
        service->Look();
    }
    StopAlarmFwdPager();
    service.reset();
    SetTableWatcher(nullptr);
    SetFileHooks(nullptr, nullptr);
    SetFileRefusal(nullptr);
    if (target.kind == Target::Kind::kCensus) {
        std::ofstream(kCensus) << passing.Census();
        ledger.Write("writes", full.Count());
    }
    WriteEnd(ledger);
    host::CloseDatabases();
    host::SetFaultListener(nullptr);
}

}  // namespace
}  // namespace proof::crash

int main(int argc, char** argv) {
    const std::string word = argc > 1 ? argv[1] : "";
    if (word == "make" && argc == 2) {
        proof::crash::MakeDatabase();
        return 0;
    }
    if (word == "run" && argc == 3) {
        alarm(proof::crash::kMostRealSeconds);
        proof::crash::RunLife(proof::crash::TargetFor(argv[2]));
        return 0;
    }
    std::cerr << "crash_site make | crash_site run TARGET\n";
    return 2;
}
