// The service's loop. Tested by tests/e2e/run_test.cpp.
#include "host/node/service.h"

#include <utility>

#include "host/alarms/alarms.h"
#include "host/files/whole_file.h"
#include "host/line/send_test_page.h"
#include "host/pages/backlog.h"
#include "host/pages/history.h"
#include "host/pages/test_pages.h"
#include "host/process/systemd.h"
#include "host/store/large_cells.h"
#include "host/store/pending.h"
#include "host/text_helpers.h"

namespace host {
namespace {

constexpr std::chrono::milliseconds kBetweenLooks{1000};
constexpr std::time_t kBetweenMetrics = 15;
constexpr std::time_t kDay = 24 * 60 * 60;

int64_t VersionSeen(Connection& connection) {
    Statement statement(connection, "PRAGMA data_version");
    statement.Step();
    return statement.Number(0);
}

// All that the table of ports holds, as one text.
std::string PortsOf(Connection& connection) {
    std::string ports;
    Statement statement(connection, "SELECT * FROM AlarmFwd_COMProperties ORDER BY row_id");
    while (statement.Step()) {
        for (int column = 1; column < statement.Columns(); ++column) {
            ports.append(statement.Text(column)).push_back('\0');
        }
    }
    return ports;
}

std::string Age(std::time_t seconds) {
    constexpr std::time_t kHour = 60 * 60;
    if (seconds >= 2 * kDay) {
        return std::to_string(seconds / kDay) + " days";
    }
    return seconds >= 2 * kHour ? std::to_string(seconds / kHour) + " hours"
                                : std::to_string(seconds / 60) + " minutes";
}

}  // namespace

Service::Service(ServiceOptions options, const Library& library, OperatorLog& log)
    : options_(std::move(options)),
      library_(library),
      log_(log),
      lease_(options_.database, Refusals::kKept),
      encoding_(EncodingOf(lease_.Database())),
      locks_(options_.database, options_.locks, "run"),
      intake_(
          encoding_,
          [this](const Alarm& alarm, const Delivery& delivery) { return Forward(alarm, delivery); },
          log_),
      trace_(lease_.Database(), encoding_, log_),
      ends_(lease_.Database(), encoding_, log_),
      room_(options_.database, log_) {
    locks_.TakeDevices(lease_.Database());
    UseShiftJis(encoding_ == Encoding::kShiftJis);
}

Service::End Service::Run(StopSignal& stop) {
    room_.Look(std::time(nullptr));
    LookAtPendingPages();
    Start();
    NotifyManager("READY=1");
    do {
        LookAtFile();
        StepOrReport();
        // Also when the disk refused: to be ended would lose what is kept until it takes it again.
        heartbeat_.Beat();
    } while (!done_ && !replaced_ && !stop.WaitFor(kBetweenLooks));
    if (!replaced_) {
        NotifyManager("STOPPING=1");
    }
    log_.Info("ending; a page on the line is finished first");
    Stop();
    TellLastFigures();
    TellWhatIsLost();
    log_.Info("ended");
    return replaced_ ? End::kDatabaseReplaced : End::kAskedFor;
}

// A database that was put in the place of the one served, as from a backup, is served from now on.
// While there is none of this name, the one that is open goes on.
void Service::LookAtFile() {
    const FileNamed named = lease_.Named();
    replaced_ = named == FileNamed::kReplaced;
    if (replaced_) {
        log_.Warning(options_.database + ": replaced by another file, which is served from now on");
    } else if (named == FileNamed::kGone && !gone_) {
        log_.Error(options_.database + ": the file has gone; no page can leave until it is back");
    }
    gone_ = named == FileNamed::kGone;
}

// The library knows the ports as they were when it was started; all else is read at every use.
void Service::ReadAnew() {
    seen_ = -1;
    const bool same = ports_ == PortsOf(lease_.Database());
    log_.Info(std::string("reading anew, as asked: the ports ") +
              (same ? "are the same" : "have changed"));
    if (!same) {
        RenewEngine();
    }
}

void Service::LookAtTrace() {
    ends_.Mark();
    trace_.Look();
    ends_.Look();
}

// What is kept in memory ends with the process.
void Service::TellWhatIsLost() {
    const size_t kept = lease_.CountHeld();
    if (kept > 0) {
        log_.Error(std::to_string(kept) +
                   " change(s) could not be written to the end; pages that were sent meanwhile may "
                   "be sent again");
    }
}

void Service::TellLastFigures() {
    metrics_at_ = 0;
    try {
        WriteMetrics();
    } catch (const StoreError& failure) {
        log_.Error(failure.what());
    }
}

// Nobody else's page waits for such a row.
void Service::EmptyCells() {
    for (const std::string& row : EmptyLargeCells(lease_.Database())) {
        log_.Error(row + " is off limit: it had a text of more than 1 MiB, which was emptied");
    }
}

void Service::LookAtPendingPages() {
    Connection& connection = lease_.Database();
    EmptyCells();
    MendTexts(connection);
    MendAlarmStates(connection);
    if (options_.discard_older) {
        const std::time_t before =
            std::time(nullptr) - static_cast<std::time_t>(options_.discard_older->count());
        log_.Info("pages of older alarms that are given up: " +
                  std::to_string(DiscardPages(connection, before)));
    }
    const Backlog backlog = LookAtBacklog(connection);
    if (backlog.pages > 0) {
        log_.Warning(std::to_string(backlog.pages) +
                     " page(s) are pending from before, the oldest of an alarm " +
                     Age(std::time(nullptr) - backlog.oldest) +
                     " old; all are due now. To give up old ones: run --discard-older-than");
    }
}

void Service::Start() {
    try {
        NoteEngineStart(lease_.Database());
    } catch (const StoreError& failure) {
        log_.Error(std::string(failure.what()) + "; the due times that are shown may be wrong");
    }
    trace_.Begin();
    ports_ = PortsOf(lease_.Database());
    BringUpEngine();
    log_.Info("serving " + options_.database);
}

// Also while it is up: then nothing happens, unless the system had no thread for its worker.
void Service::BringUpEngine() {
    std::string name = options_.database;
    FwdSpecialInfoStr info{name.data(), nullptr, nullptr, nullptr};
    library_.StartAlarmFwdPager(&info);
}

void Service::Stop() {
    library_.StopAlarmFwdPager();
    LookAtTrace();
}

void Service::StepOrReport() {
    try {
        try {
            Step();
        } catch (const RowTooLarge&) {
            EmptyCells();
            Step();
        }
    } catch (const StoreError& failure) {
        seen_ = -1;
        log_.Error(std::string(failure.what()) + "; trying again");
    }
}

void Service::Step() {
    if (StopSignal::TakeHangUp()) {
        ReadAnew();
    }
    if (HasChanged() || intake_.WantsAgain(std::time(nullptr))) {
        intake_.Run(lease_.Database());
        SendTestPages();
    }
    BringUpEngine();
    LookAtTrace();
    if (trace_.Ports().IsDue(std::time(nullptr))) {
        RenewEngine();
    }
    WriteMetrics();
    room_.Look(std::time(nullptr));
    ForgetOldHistory();
    done_ = IsDone();
}

// Somebody else's changes; the library's worker is somebody else.
bool Service::HasChanged() {
    const int64_t version = VersionSeen(lease_.Database());
    return std::exchange(seen_, version) != version;
}

// What is kept, since the disk refuses it, is still to be written.
bool Service::IsDone() {
    if (!options_.until_done) {
        return false;
    }
    Connection& connection = lease_.Database();
    return intake_.IsDone(connection) && !HasPagesInHand(connection) && lease_.CountHeld() == 0;
}

int32_t Service::Forward(const Alarm& alarm, const Delivery& delivery) {
    std::string name = options_.database;
    int32_t number = std::stoi(alarm.number);
    std::string group = delivery.group;
    std::string server = alarm.server;
    std::string pager = delivery.pager;
    std::string unused;
    char* groups[] = {group.data()};
    char* pagers[] = {pager.data()};
    FwdSpecialInfoStr info{name.data(), &number, nullptr, groups};
    return library_.AlarmFwdPager(&info, server.data(), unused.data(), pagers, 1);
}

void Service::SendTestPages() {
    while (const auto asked = NextTestPage(lease_.Database(), lease_.Owners())) {
        const std::vector<PagerRow> pagers = FindPagers(lease_.Database(), asked->pager);
        const int32_t answer = pagers.size() == 1
                                   ? SendTestPage(library_, options_.database, pagers.front())
                                   : kPagerUnknown;
        log_.Info("test page to \"" + Decode(asked->pager, encoding_) + "\": result " +
                  std::to_string(answer));
        AnswerTestPage(lease_.Database(), asked->asked, answer);
        heartbeat_.Beat();  // each may take as long as a page
    }
}

void Service::WriteMetrics() {
    const std::time_t now = std::time(nullptr);
    if ((options_.metrics.empty() && !HasManager()) || now < metrics_at_) {
        return;
    }
    metrics_at_ = now + kBetweenMetrics;
    Metrics metrics = trace_.Figures();
    metrics.ended = ends_.Counts();
    metrics.pending = static_cast<uint64_t>(CountPendingPages(lease_.Database()));
    NotifyManager("STATUS=" + std::to_string(metrics.pending) + " page(s) pending, " +
                  std::to_string(metrics.Total(kResultSent)) + " sent, " +
                  std::to_string(metrics.Total(kResultDialled)) + " dialled, " +
                  std::to_string(metrics.Total(kResultFailed)) + " failed");
    if (options_.metrics.empty()) {
        return;
    }
    try {
        // Anyone may read it: it names no person.
        WriteWhole(options_.metrics, AsText(metrics, encoding_), kForEveryone);
    } catch (const std::runtime_error& failure) {
        log_.Error(failure.what());
    }
}

// Between two pages: the end of the engine waits for one on the line.
void Service::RenewEngine() {
    log_.Info("making the engine anew, to open its ports again; pending pages are due at once");
    Stop();
    trace_.Ports().Renewed(std::time(nullptr));
    TakeDevices();
    Start();
}

// Those of ports that were added since.
void Service::TakeDevices() {
    try {
        MendTexts(lease_.Database());
        MendAlarmStates(lease_.Database());
        locks_.TakeDevices(lease_.Database());
    } catch (const std::runtime_error& failure) {
        log_.Error(failure.what());
    }
}

void Service::ForgetOldHistory() {
    const std::time_t now = std::time(nullptr);
    if (now < forget_at_) {
        return;
    }
    forget_at_ = now + kDay;
    const std::chrono::seconds kept = options_.history;
    ForgetHistory(lease_.Database(), now - static_cast<std::time_t>(kept.count()));
}

}  // namespace host
