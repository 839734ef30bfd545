// The page in flight.
#include "tests/proof/page_watch.h"

#include <cstdlib>
#include <mutex>
#include <utility>

namespace proof {
namespace {

using pagersim::Event;
using pagersim::EventKind;

constexpr std::string_view kAlarmLog = "AlarmLog";
constexpr std::string_view kPagers = "AlarmFwd_PagerSetting";
constexpr std::string_view kEvents = "AlarmFwd_PagerEvents";

bool BeginsWith(std::string_view text, std::string_view begin) {
    return text.substr(0, begin.size()) == begin;
}

bool Contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

// A row is taken out by its whole key, to be put back changed.
bool TakesOneRow(const TableCall& call) {
    return call.deed == TableDeed::kDelete && BeginsWith(call.condition, "WHERE AlmGroup");
}

}  // namespace

PageWatch::PageWatch(Hooks hooks) : hooks_(std::move(hooks)) {}

Flight PageWatch::Flight() const {
    const std::lock_guard<SpinLock> guard(lock_);
    return flight_;
}

void PageWatch::Before(const TableCall& call) {
    hooks_.at_each_step();
    NoteLookUp(call);
    if (call.deed == TableDeed::kInsert && call.table == kEvents && InWorker()) {
        const std::lock_guard<SpinLock> guard(lock_);
        flight_.unfolded = looked_up_.alarm;
    }
}

void PageWatch::After(const TableCall& call, int32_t result) {
    {
        const std::lock_guard<SpinLock> guard(lock_);
        if (TakesOneRow(call) && result > 0) {
            flight_.rewriting = true;
        }
        if (call.deed == TableDeed::kInsert && call.table == kEvents) {
            if (flight_.rewriting && InWorker()) {
                flight_.page = {};
                flight_.stage = Stage::kNone;
            }
            flight_.rewriting = false;
        }
        if (call.deed == TableDeed::kWrite && call.table == kAlarmLog && InWorker()) {
            flight_.unfolded = 0;
        }
    }
    hooks_.at_each_step();
}

// The worker looks an entry's alarm up, which ends what was before, then its pager; then it opens
// the port.
void PageWatch::NoteLookUp(const TableCall& call) {
    if (call.deed != TableDeed::kRead || !InWorker()) {
        return;
    }
    const std::lock_guard<SpinLock> guard(lock_);
    if (call.table == kAlarmLog) {
        looked_up_ = {std::atoi(std::string(call.condition).c_str()), ""};
        flight_ = {};
    } else if (call.table == kPagers) {
        looked_up_.pager = call.condition;
    }
}

void PageWatch::Record(const Event& event) {
    hooks_.at_each_step();
    NoteLine(event);
    hooks_.at_each_step();
}

void PageWatch::NoteLine(const Event& event) {
    switch (event.kind) {
        case EventKind::kOpens: {
            hooks_.opens();
            const std::lock_guard<SpinLock> guard(lock_);
            if (InWorker()) {  // else the ports are explored
                flight_.page = looked_up_;
                flight_.stage = Stage::kSettingUp;
            }
            return;
        }
        case EventKind::kSends:
            return NoteModem(event);
        case EventKind::kDelivers: {
            PageKey page;
            {
                const std::lock_guard<SpinLock> guard(lock_);
                flight_.stage = Stage::kAccepted;
                page = flight_.page;
            }
            return hooks_.delivers(page, event);
        }
        default:
            return;
    }
}

void PageWatch::NoteModem(const Event& event) {
    PageKey dialled;
    {
        const std::lock_guard<SpinLock> guard(lock_);
        const bool dials = flight_.stage == Stage::kSettingUp && event.who == pagersim::kProgram &&
                           BeginsWith(event.text, "ATD");
        const bool answers = flight_.stage == Stage::kDialling && event.who == pagersim::kModem &&
                             (Contains(event.text, "CONNECT") || Contains(event.text, "OK"));
        if (dials) {
            flight_.stage = Stage::kDialling;
            dialled = flight_.page;
        } else if (answers) {
            flight_.stage = Stage::kTransferring;
        }
    }
    if (dialled.alarm != 0) {
        hooks_.dials(dialled);
    }
}

}  // namespace proof
