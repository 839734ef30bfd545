// A line's loop. Tested by tests/e2e/run_lines_test.cpp.
#include "host/line/line.h"
#include "host/store/tables/history.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <utility>

#include "host/pages/history.h"
#include "host/platform/bell.h"
#include "host/process/last_writes.h"
#include "host/process/signals_held.h"
#include "host/site/site_tables.h"
#include "host/store/database_name.h"
#include "host/store/faults.h"
#include "host/store/hidden_rows.h"
#include "host/store/patience.h"
#include "host/store/tables/events.h"
#include "host/store/tables/lines.h"
#include "host/text_helpers.h"

namespace host {
namespace {

constexpr std::chrono::seconds kWhileAtWork{1};
constexpr std::chrono::seconds kWhileIdle{60};

// Of a database that can't be used, where there is no node any more.
constexpr std::time_t kLongestWait = 10 * 60;

constexpr const char* kIdle = "idle";

// Whether the disk takes more.
bool CanWriteHere() {
    std::array<char, 32> name{"room-XXXXXX"};
    const Descriptor file(mkostemp(name.data(), O_CLOEXEC));
    if (!file.IsOpen()) {
        return false;
    }
    unlink(name.data());
    constexpr std::array<char, 4096> kBytes{};
    return write(file.Number(), kBytes.data(), kBytes.size()) ==
           static_cast<ssize_t>(kBytes.size());
}

// False: the end is asked for, or nobody asks for anything any more.
bool WaitForWork(StopSignal& stop, const BellSocket& node, std::chrono::milliseconds longest) {
    std::array<pollfd, 2> awaited{
        {{StopSignal::Descriptor(), POLLIN, 0}, {node.Number(), POLLIN, 0}}};
    poll(awaited.data(), awaited.size(), static_cast<int>(longest.count()));
    return !stop.IsAskedFor() && node.Listen() != BellSocket::Heard::kEnd;
}

}  // namespace

Line::Line(const std::string& database, const SiteLine& line, const Library& library,
           OperatorLog& log, PageOnLineNotes* notes)
    : database_(database),
      line_(line),
      library_(library),
      log_(log),
      notes_(notes),
      lease_(database, Refusals::kKept),
      encoding_(EncodingOf(lease_.Database())),
      hand_over_(
          line.name, encoding_,
          [this](const Alarm& alarm, const Delivery& delivery) { return Forward(alarm, delivery); },
          log),
      trace_(lease_.Database(), line, encoding_, log,
             [this](const TracedPage& page) { hand_over_.Saw(page); }),
      trouble_(log, ShownName(database) + ": works again", Trouble::kToldByAnother) {
    UseShiftJis(encoding_ == Encoding::kShiftJis);
}

LineExit Line::Run(StopSignal& stop, const BellSocket& node) {
    WaitForTablesWith(node);
    Start();
    do {
        StepOrReport();
        if (!CanGoOn()) {
            log_.Error("no file can be opened, nor the device; the line is started anew");
            return LineExit::kCannot;
        }
        if (IsStuck()) {
            log_.Error("the library doesn't go on; the line is started anew");
            return LineExit::kStuck;
        }
        node.Ring();
    } while (WaitForWork(stop, node, wait_));
    End();
    return AnyWaits() ? LineExit::kStuck : LineExit::kDone;
}

// Meanwhile the node hears that the line lives. Where there is no node any more, the pages are left
// in the tables, for the lines of the next.
void Line::WaitForTablesWith(const BellSocket& node) {
    WaitForTables([this, &node, parent = getppid()](int seconds) {
        waited_ = true;
        node.Ring();
        sleep(1);
        if (seconds > kLongestWait && getppid() != parent) {
            _exit(static_cast<int>(LineExit::kStuck));
        }
    });
}

void Line::Start() {
    if (notes_ != nullptr) {
        BringBackOf(lease_.Database(), line_.name);
    }
    try {
        trace_.RecordLeft();
    } catch (const StoreError& failure) {
        log_.Error(std::string(failure.what()) +
                   "; what the process before has sent last may lack its record");
    }
    try {
        NoteEngineStart(lease_.Database(), line_.name);
    } catch (const StoreError& failure) {
        log_.Error(std::string(failure.what()) + "; the due times that are shown may be wrong");
    }
    trace_.Begin();
    BringUpEngine();
}

// Also while it is up: then nothing happens, unless the system had no thread for its worker.
void Line::BringUpEngine() {
    const SignalsHeld held;
    std::string name = database_;
    FwdSpecialInfoStr info{name.data(), nullptr, nullptr, nullptr};
    library_.StartAlarmFwdPager(&info);
}

void Line::End() {
    library_.StopAlarmFwdPager();
    try {
        trace_.Look();
        NoteDoing("");
    } catch (const StoreError& failure) {
        log_.Error(failure.what());
    }
    WriteLast(lease_, database_, log_);
}

void Line::StepOrReport() {
    try {
        Step();
        trouble_.Is("", std::time(nullptr));
    } catch (const NotOurs& end) {
        ReportEnd(end.what());
    } catch (const StoreAway& away) {
        trouble_.IsAway(away, std::time(nullptr));
        trace_.Excuse();
    } catch (const StoreError& failure) {
        trouble_.Is(failure.what(), std::time(nullptr));
        trace_.Excuse();
    }
}

void Line::Step() {
    wait_ = kWhileAtWork;
    const std::optional<int> pause_left = PauseLeft();  // before the look, which sees all before it
    trace_.Look();
    BringUpEngine();
    const bool has_tested = AnswerTests();
    const bool hands_over = hand_over_.Run(lease_.Database());
    NoteDoing(Doing());
    if (!has_tested && !hands_over && trace_.UnderWay() == nullptr) {
        wait_ = Quiet(pause_left);
    }
}

// How long nothing will come but by the bell. pause_left: of the library's worker.
std::chrono::seconds Line::Quiet(std::optional<int> pause_left) {
    if (pause_left) {
        return std::chrono::seconds(*pause_left) + kWhileAtWork;
    }
    return HasPagesOf(lease_.Database(), line_.name) ? kWhileAtWork : kWhileIdle;
}

// A trace that nobody can write says nothing of the library.
bool Line::IsStuck() {
    if (waited_.exchange(false)) {
        trace_.Excuse();
    }
    if (!trace_.IsStuck() && !IsSilent()) {
        return false;
    }
    if (CanWriteHere()) {
        return true;
    }
    trace_.Excuse();
    return false;
}

bool Line::IsSilent() {
    try {
        if (!HasPagesOf(lease_.Database(), line_.name)) {
            trace_.HasNoPages();
        }
    } catch (const StoreError&) {
        return false;
    }
    return trace_.IsSilent();
}

// Without descriptors the library can't open its device, nor say so in its trace: its pages would
// use up their tries.
bool Line::CanGoOn() {
    return !files_.AreRefused() || trace_.UnderWay() != nullptr;
}

int32_t Line::Forward(const Alarm& alarm, const Delivery& delivery) {
    const SignalsHeld held;
    std::string name = database_;
    int32_t number = std::stoi(alarm.number);
    std::string group = delivery.group;
    std::string server = alarm.server;
    std::string pager = delivery.pager;
    std::string unused;
    char* groups[] = {group.data()};
    char* pagers[] = {pager.data()};
    FwdSpecialInfoStr info{name.data(), &number, nullptr, groups};
    const int32_t answer = library_.AlarmFwdPager(&info, server.data(), unused.data(), pagers, 1);
    RingBell();
    return answer;
}

std::string Line::Doing() const {
    const TracedPage* const page = trace_.UnderWay();
    if (page == nullptr || page->pager.empty()) {
        return kIdle;
    }
    return (page->test ? "test page to " : "page to ") + page->pager + ": " +
           std::string(NameOf(page->phase));
}

void Line::NoteDoing(const std::string& doing) {
    if (doing != doing_) {
        SetDoing(lease_.Database(), line_.name, doing, std::time(nullptr));
        doing_ = doing;
    }
    if (notes_ != nullptr && doing == kIdle) {
        notes_->Settle();
    }
}

}  // namespace host
