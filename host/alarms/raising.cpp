// Raising and withdrawing. Tested by tests/unit/host/raising_test.cpp.
#include "host/alarms/raising.h"

#include <set>

#include "host/site/site_tables.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/sends.h"
#include "host/store/tables/trail.h"
#include "host/text/nearest.h"

namespace host {
namespace {

constexpr const char* kInformational = "4";

std::set<std::string> PagersThatHadAPage(Connection& connection, const Alarm& alarm) {
    std::set<std::string> pagers;
    for (const Send& send : SendsOf(connection, alarm.number)) {
        if (send.outcome == TracedPage::Outcome::kSent ||
            send.outcome == TracedPage::Outcome::kDialled) {
            pagers.insert(send.pager);
        }
    }
    return pagers;
}

// An alarm for each pager, so that each ends when its own page has been sent.
void SayLastWord(Connection& connection, const Alarm& alarm, const std::string& pager,
                 std::time_t now) {
    const NewAlarm word{alarm.group, kInformational, alarm.server, "resolved: " + alarm.details};
    MakeLastWord(connection, RaiseTo(connection, word, {pager}, now), alarm.number);
}

void SayLastWords(Connection& connection, const std::string& number, std::time_t now) {
    const std::optional<Alarm> alarm = FindAlarm(connection, number);
    if (!alarm || !PagesResolved(connection)) {
        return;
    }
    for (const std::string& pager : PagersThatHadAPage(connection, *alarm)) {
        SayLastWord(connection, *alarm, pager, now);
    }
}

// As the alarm's note has it: in one line, in the encoding of the tables.
std::string NameFor(Connection& connection, const Doer& doer) {
    const std::string text = doer.comment.empty() ? doer.name : doer.name + ": " + doer.comment;
    return EncodeNearest(text, EncodingOf(connection));
}

}  // namespace

Raised Raise(Connection& connection, const NewAlarm& alarm, std::time_t now, KeyUse use) {
    const AlarmKey key{alarm.source, alarm.key};
    const std::optional<std::string> before =
        use == KeyUse::kOnce ? LastAlarmOf(connection, key) : OpenAlarmOf(connection, key);
    if (!before) {
        return {std::to_string(AddAlarm(connection, alarm, now)), true};
    }
    RaiseAgain(connection, *before, alarm.details, now);
    return {*before, false};
}

std::string RaiseTo(Connection& connection, const NewAlarm& alarm,
                    const std::vector<std::string>& pagers, std::time_t now) {
    std::string number = std::to_string(AddAlarm(connection, alarm, now));
    WriteDeliveries(connection, FindAlarm(connection, number).value(), pagers);
    return number;
}

Acknowledged AcknowledgeBy(Connection& connection, int64_t number, const Doer& doer) {
    const Acknowledged how =
        NoteAcknowledged(connection, number, doer.now, NameFor(connection, doer));
    if (how == Acknowledged::kNow) {
        NoteInTrail(connection, {0, doer.now, doer.name, kTrailAcknowledged, std::to_string(number),
                                 doer.comment});
    }
    return how;
}

Withdrawn WithdrawBy(Connection& connection, const std::string& number, const Doer& doer) {
    if (!Withdraw(connection, number, doer.now)) {
        return FindAlarm(connection, number) ? Withdrawn::kBefore : Withdrawn::kUnknown;
    }
    NoteInTrail(connection, {0, doer.now, doer.name, kTrailWithdrawn, number, doer.comment});
    SayLastWords(connection, number, doer.now);
    return Withdrawn::kNow;
}

std::optional<std::string> WithdrawBy(Connection& connection, const AlarmKey& key,
                                      const Doer& doer) {
    std::optional<std::string> number = OpenAlarmOf(connection, key);
    if (number) {
        WithdrawBy(connection, *number, doer);
    }
    return number;
}

void EndLastWords(Connection& connection, std::time_t now) {
    const std::vector<std::string> sent = LastWordsSent(connection);
    if (sent.empty()) {
        return;
    }
    WriteTransaction transaction(connection);
    for (const std::string& number : sent) {
        Withdraw(connection, number, now);
    }
    transaction.Commit();
}

}  // namespace host
