// New alarms. Tested by tests/unit/host/intake_test.cpp.
#include "host/node/intake.h"

#include <algorithm>
#include <charconv>

#include "host/alarms/mending.h"
#include "host/alarms/states.h"
#include "host/pages/backlog.h"
#include "host/pages/routes.h"
#include "host/site/site_tables.h"

namespace host {
namespace {

// The library couldn't read a table that is there. It may be able to soon.
constexpr std::time_t kSecondsBeforeAgain = 10;

bool IsLibraryNumber(const std::string& text) {
    int32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() &&
           std::to_string(number) == text;
}

bool NeedsNoPaging(const Alarm& alarm) {
    return alarm.acknowledged || alarm.state == kStateAcknowledged;
}

std::string RowOf(int64_t row) {
    return "row " + std::to_string(row) + " of the alarm log";
}

constexpr const char* kTooLarge = "it has a text of more than 1 MiB";

void SetState(Connection& connection, const Alarm& alarm, const char* state) {
    WriteTransaction transaction(connection);
    SetPagerState(connection, alarm.row, state);
    transaction.Commit();
}

}  // namespace

void Intake::Run(Connection& connection) {
    TakeUp(connection);
    if (std::time(nullptr) < not_before_) {
        return;
    }
    not_before_ = 0;
    size_t unreadable = 0;
    const std::vector<Delivery> deliveries = OpenDeliveries(connection, &unreadable);
    for (size_t number = 1; number <= unreadable; ++number) {
        SetAside("open delivery " + std::to_string(number) + " that can't be read", kTooLarge);
    }
    for (const Delivery& delivery : deliveries) {
        try {
            if (!HandOver(connection, delivery)) {
                not_before_ = std::time(nullptr) + kSecondsBeforeAgain;
            }
        } catch (const RowTooLarge& error) {
            SetAside(Name(delivery), error.what());
        }
    }
}

bool Intake::IsDone(Connection& connection) const {
    const auto is_aside = [this](const std::string& what) { return aside_.count(what) != 0; };
    const std::vector<Alarm> alarms = NewAlarms(connection);
    const std::vector<Delivery> deliveries = OpenDeliveries(connection);
    return std::all_of(alarms.begin(), alarms.end(),
                       [&](const Alarm& alarm) { return is_aside(RowOf(alarm.row)); }) &&
           std::all_of(deliveries.begin(), deliveries.end(),
                       [&](const Delivery& delivery) { return is_aside(Name(delivery)); });
}

void Intake::SetAside(const std::string& what, const std::string& why) {
    if (aside_.insert(what).second) {
        log_.Error(what + " is set aside: " + why);
    }
}

void Intake::TakeUp(Connection& connection) {
    std::vector<int64_t> unreadable;
    const std::vector<Alarm> alarms = NewAlarms(connection, &unreadable);
    for (const int64_t row : unreadable) {
        SetAside(RowOf(row), kTooLarge);
    }
    if (alarms.empty()) {
        return;
    }
    const std::vector<StoredRoute> routes = ReadRoutes(connection, encoding_);
    for (const Alarm& found : alarms) {
        try {
            const Alarm alarm = MendAlarm(connection, found, encoding_);
            TakeUp(connection, alarm,
                   PagersFor(routes, Decode(alarm.group, encoding_), alarm.severity));
        } catch (const RowTooLarge& error) {
            SetAside("row " + std::to_string(found.row) + " of the alarm log", error.what());
        }
    }
}

void Intake::TakeUp(Connection& connection, const Alarm& alarm,
                    const std::vector<std::string>& pagers) {
    const std::string name = "alarm " + alarm.number + " (" + Decode(alarm.group, encoding_) + ")";
    if (alarm.acknowledged) {
        PlanDeliveries(connection, alarm, {});
    } else if (!IsLibraryNumber(alarm.number) || !FindAlarm(connection, alarm.number)) {
        log_.Error(name +
                   ": its number can't be used: it isn't one, or another alarm has it; "
                   "nobody is paged");
        SetState(connection, alarm, kStateOffLimit);
    } else {
        PlanDeliveries(connection, alarm, pagers);
        if (pagers.empty()) {
            log_.Warning(name + ": no route leads to a pager; nobody is paged");
        }
    }
}

// False: the answer may change; the delivery stays open.
bool Intake::HandOver(Connection& connection, const Delivery& delivery) {
    const std::optional<Alarm> alarm = FindAlarm(connection, delivery.alarm);
    const std::optional<int32_t> answer = AnswerFor(connection, delivery, alarm);
    if (!answer) {
        if (told_.insert(Name(delivery)).second) {
            log_.Warning(Name(delivery) +
                         ": the library can't read the tables now; trying again soon");
        }
        return false;
    }
    NoteAnswer(connection, delivery, *answer);
    Report(delivery, *answer);
    if (alarm && !NeedsNoPaging(*alarm)) {
        CloseAlarm(connection, *alarm);
    }
    return true;
}

std::optional<int32_t> Intake::AnswerFor(Connection& connection, const Delivery& delivery,
                                         const std::optional<Alarm>& alarm) {
    if (!alarm || !IsLibraryNumber(alarm->number)) {
        return kAlarmUnknown;
    }
    if (WasEverQueued(connection, delivery)) {
        return kWasQueued;
    }
    if (NeedsNoPaging(*alarm)) {
        return kWasAcknowledged;
    }
    const int32_t answer = Call(connection, *alarm, delivery);
    if (IsPassing(connection, delivery, answer)) {
        return std::nullopt;
    }
    return answer;
}

// While the alarm's state says that it is being paged: it may say something else, where its other
// pages have ended already, or do so at this moment.
int32_t Intake::Call(Connection& connection, const Alarm& alarm, const Delivery& delivery) {
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

// The library says no, and the tables say that it could say yes.
bool Intake::IsPassing(Connection& connection, const Delivery& delivery, int32_t answer) {
    switch (answer) {
        case kAlarmUnknown:
            return IsLibraryNumber(delivery.alarm) &&
                   FindAlarm(connection, delivery.alarm).has_value();
        case kPagerUnknown:
            return FindPagers(connection, delivery.pager).size() == 1;
        default:
            return false;
    }
}

void Intake::Report(const Delivery& delivery, int32_t answer) {
    switch (answer) {
        case kQueued:
            return log_.Info(Name(delivery) + ": queued");
        case kWasQueued:
            return log_.Info(Name(delivery) + ": queued before the restart");
        case kWasAcknowledged:
            return log_.Info(Name(delivery) + ": acknowledged before it was queued");
        case kPagerUnknown:
            return log_.Error(Name(delivery) +
                              ": there is no such pager, or more than one; it is not paged. Mend "
                              "the site file, and import it");
        default:
            return log_.Error(Name(delivery) + ": the alarm has gone from the alarm log");
    }
}

std::string Intake::Name(const Delivery& delivery) const {
    return "alarm " + delivery.alarm + " (" + Decode(delivery.group, encoding_) + ") to \"" +
           Decode(delivery.pager, encoding_) + "\"";
}

}  // namespace host
