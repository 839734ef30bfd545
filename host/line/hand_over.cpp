// Handing over. Tested by tests/unit/host/hand_over_test.cpp.
#include "host/line/hand_over.h"
#include "host/store/tables/pagers.h"

#include "host/pages/backlog.h"
#include "host/pages/delivery_words.h"
#include "host/process/clock_jumps.h"
#include "host/store/tables/events.h"
#include "host/store/tables/states.h"

namespace host {
namespace {

// The library couldn't read a table that is there. It may be able to soon.
constexpr std::time_t kSecondsBeforeAgain = 10;

// After this the page before has been on the line, or never will be.
constexpr std::time_t kLongestWait = 10 * 60;

void SetState(Connection& connection, const Alarm& alarm, const char* state) {
    WriteTransaction transaction(connection);
    SetPagerState(connection, alarm.row, state);
    transaction.Commit();
}

// The library says no, and the tables say that it could say yes.
bool IsPassing(Connection& connection, const Delivery& delivery, int32_t answer) {
    return answer == kAlarmUnknown ||
           (answer == kPagerUnknown && FindPagers(connection, delivery.pager).size() == 1);
}

}  // namespace

bool HandOver::Run(Connection& connection) {
    if (Waits(connection)) {
        return true;
    }
    handed_.reset();
    const std::vector<Delivery> open = OpenDeliveriesOf(connection, line_);
    for (const Delivery& delivery : open) {
        const auto again = again_.find(Name(delivery));
        if (again == again_.end() ||
            HasCome(again->second, std::time(nullptr), kSecondsBeforeAgain)) {
            HandOneOrSay(connection, delivery);
        }
        if (handed_) {
            break;
        }
    }
    return !open.empty();
}

bool HandOver::Waits(Connection& connection) const {
    return handed_ && std::time(nullptr) < handed_at_ + kLongestWait &&
           FindEvent(connection, {handed_->alarm, handed_->group, handed_->pager}).has_value();
}

void HandOver::Saw(const TracedPage& page) {
    const auto traced = [](const std::string& text) { return text.substr(0, kTracedTextKept); };
    if (handed_ && !page.test && page.pager == traced(handed_->pager) &&
        page.alarm == traced(handed_->group)) {
        handed_.reset();
    }
}

// A row that can't be read is left as it is, until it can.
void HandOver::HandOneOrSay(Connection& connection, const Delivery& delivery) {
    try {
        HandOne(connection, delivery);
    } catch (const RowTooLarge& error) {
        const std::string name = Name(delivery);
        if (unreadable_.insert(name).second) {
            log_.Error(name + " can't be handed over: " + error.what());
        }
        again_[name] = std::time(nullptr) + kSecondsBeforeAgain;
    }
}

// Where the answer may change, the delivery stays open.
void HandOver::HandOne(Connection& connection, const Delivery& delivery) {
    const std::optional<Alarm> alarm = FindAlarm(connection, delivery.alarm);
    const std::optional<int32_t> answer =
        alarm ? AnswerFor(connection, delivery, *alarm) : std::optional<int32_t>(kAlarmUnknown);
    const std::string name = Name(delivery);
    if (!answer) {
        if (again_.count(name) == 0) {
            log_.Warning(name + ": the library can't read the tables now; trying again soon");
        }
        again_[name] = std::time(nullptr) + kSecondsBeforeAgain;
        return;
    }
    again_.erase(name);
    NoteAnswer(connection, delivery, *answer);
    TellAnswer(log_, name, *answer);
    if (alarm && !NeedsNoPaging(*alarm)) {
        CloseAlarm(connection, *alarm);
    }
    if (*answer == kQueued) {
        handed_ = delivery;
        handed_at_ = std::time(nullptr);
    }
}

std::optional<int32_t> HandOver::AnswerFor(Connection& connection, const Delivery& delivery,
                                           const Alarm& alarm) {
    if (!IsLibraryNumber(alarm.number)) {
        return kAlarmUnknown;
    }
    if (WasEverQueued(connection, delivery)) {
        return kWasQueued;
    }
    if (NeedsNoPaging(alarm)) {
        return kWasAcknowledged;
    }
    const int32_t answer = Call(connection, alarm, delivery);
    if (IsPassing(connection, delivery, answer)) {
        return std::nullopt;
    }
    return answer;
}

// While the alarm's state says that it is being paged: it may say something else, where its other
// pages have ended already, or do so at this moment.
int32_t HandOver::Call(Connection& connection, const Alarm& alarm, const Delivery& delivery) {
    const bool all_ended = alarm.state != kStateBeingPaged;
    if (all_ended) {
        SetState(connection, alarm, kStateBeingPaged);
    }
    const int32_t answer = forward_(alarm, delivery);
    if (answer == kQueued) {
        MendAlarmStates(connection);
    } else if (all_ended) {
        SetState(connection, alarm, alarm.state.c_str());
    }
    return answer;
}

std::string HandOver::Name(const Delivery& delivery) const {
    return NameOf(delivery, encoding_);
}

}  // namespace host
