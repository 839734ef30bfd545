// Alerts. Tested by tests/unit/host/web_alertmanager_test.cpp.
#include "host/alarms/alerts.h"

namespace host {
namespace {

std::vector<KeyedAlarm> AlarmsLike(Connection& connection, const Alert& alert) {
    return AlarmsOfKeys(connection, {alert.alarm.source, KeysOfAlert(alert.fingerprint)});
}

// One of the same fingerprint that began later: its number. None: there is none.
std::optional<std::string> LaterThan(Connection& connection, const Alert& alert) {
    for (const KeyedAlarm& known : AlarmsLike(connection, alert)) {
        const std::optional<AlertInstant> began = BeganByKey(known.key);
        if (alert.began && began && *alert.began < *began) {
            return known.number;
        }
    }
    return std::nullopt;
}

void Fires(Connection& connection, const Alert& alert, const NewAlarm& alarm, const Doer& doer,
           AlertCounts& counts) {
    if (!LastAlarmOf(connection, {alarm.source, alarm.key})) {
        if (const std::optional<std::string> later = LaterThan(connection, alert)) {
            RaiseAgain(connection, *later, alarm.details, doer.now);
            ++counts.known;
            return;
        }
    }
    const bool is_new = Raise(connection, alarm, doer.now, KeyUse::kOnce).is_new;
    ++(is_new ? counts.raised : counts.known);
}

bool IsEndedBy(const KeyedAlarm& known, const Alert& end) {
    const std::optional<AlertInstant> began = BeganByKey(known.key);
    return known.open &&
           (known.key == end.alarm.key || (end.ended && began && *began < *end.ended));
}

void IsResolved(Connection& connection, const Alert& alert, const NewAlarm& alarm, const Doer& doer,
                AlertCounts& counts) {
    bool is_known = false;
    for (const KeyedAlarm& known : AlarmsLike(connection, alert)) {
        is_known = is_known || known.key == alarm.key || IsEndedBy(known, alert);
        if (IsEndedBy(known, alert)) {
            WithdrawBy(connection, known.number, doer);
            ++counts.resolved;
        }
    }
    if (!is_known && !LaterThan(connection, alert)) {
        WithdrawBy(connection, Raise(connection, alarm, doer.now).number, doer);
    }
}

}  // namespace

void TakeAlert(Connection& connection, const Alert& alert, Encoding encoding, const Doer& doer,
               AlertCounts& counts) {
    const NewAlarm alarm = Checked(alert.alarm, encoding);
    alert.resolved ? IsResolved(connection, alert, alarm, doer, counts)
                   : Fires(connection, alert, alarm, doer, counts);
}

}  // namespace host
