// Calls that change alarms. Tested by tests/unit/host/web_api_test.cpp.
#include <limits>
#include <optional>

#include "host/alarms/alerts.h"
#include "host/alarms/raising.h"
#include "host/intake/alarm_json.h"
#include "host/intake/json_input.h"
#include "host/site/site_tables.h"
#include "host/site/stored_alerts.h"
#include "host/web/api_calls.h"

namespace host {
namespace {

// A key is that of the token's owner where it doesn't say whose.
void NameSource(IncomingAlarm& alarm, const Token& token) {
    if (!alarm.key.empty() && alarm.source.empty()) {
        alarm.source = token.name;
    }
}

Json WithdrawOne(const ApiCall& call, ToWithdraw withdrawal) {
    const Doer doer{call.token.name, call.now};
    if (!withdrawal.number.empty()) {
        const Withdrawn how = WithdrawBy(call.connection, withdrawal.number, doer);
        if (how == Withdrawn::kUnknown) {
            throw BadField("alarm", "there is no alarm " + withdrawal.number);
        }
        return {{"alarm", NumberOrText(withdrawal.number)}, {"resolved", how == Withdrawn::kNow}};
    }
    if (withdrawal.key.source.empty()) {
        withdrawal.key.source = call.token.name;
    }
    const std::optional<std::string> number = WithdrawBy(call.connection, withdrawal.key, doer);
    return {{"alarm", number ? NumberOrText(*number) : Json()}, {"resolved", number.has_value()}};
}

// In whose name: a program may say for whom it asks.
Doer DoerOf(const ApiCall& call, const Json& object) {
    Doer doer{"", call.now};
    ReadText(object, "by", doer.name);
    ReadText(object, "comment", doer.comment);
    CheckComment(doer.name, doer.comment);
    doer.name = doer.name.empty() ? call.token.name : doer.name + " (" + call.token.name + ")";
    return doer;
}

Json AcknowledgeOne(const ApiCall& call, const Json& object) {
    RefuseOthers(object, {"alarm", "by", "comment"});
    const auto number = object.find("alarm");
    if (number == object.end() || !number->is_number_integer() || *number < 1 ||
        *number > std::numeric_limits<int32_t>::max()) {
        throw BadField("alarm", "the number of an alarm is expected here");
    }
    const auto alarm = number->get<int64_t>();
    const Acknowledged how = AcknowledgeBy(call.connection, alarm, DoerOf(call, object));
    if (how == Acknowledged::kUnknown) {
        throw BadField("alarm", "there is no alarm " + std::to_string(alarm));
    }
    return {{"alarm", alarm}, {"acknowledged", how == Acknowledged::kNow}};
}

}  // namespace

Json RaiseAlarms(const ApiCall& call) {
    std::vector<IncomingAlarm> came = AlarmsFromJson(call.body, call.token.name);
    for (IncomingAlarm& alarm : came) {
        NameSource(alarm, call.token);
    }
    const std::vector<NewAlarm> alarms = CheckedAlarms(came, EncodingOf(call.connection));
    Json answer = Json::array();
    WriteTransaction transaction(call.connection);
    for (const NewAlarm& alarm : alarms) {
        answer.push_back(ToJson(Raise(call.connection, alarm, call.now)));
    }
    transaction.Commit();
    return answer;
}

Json WithdrawAlarms(const ApiCall& call) {
    const std::vector<ToWithdraw> withdrawals = WithdrawalsFromJson(call.body);
    Json answer = Json::array();
    WriteTransaction transaction(call.connection);
    ForEachOf(withdrawals.size(),
              [&](size_t i) { answer.push_back(WithdrawOne(call, withdrawals[i])); });
    transaction.Commit();
    return answer;
}

Json AcknowledgeAlarms(const ApiCall& call) {
    const std::vector<Json> objects = ObjectsIn(ParseJson(call.body));
    Json answer = Json::array();
    WriteTransaction transaction(call.connection);
    ForEachOf(objects.size(),
              [&](size_t i) { answer.push_back(AcknowledgeOne(call, objects[i])); });
    transaction.Commit();
    return answer;
}

Json TakeAlerts(const ApiCall& call) {
    const std::vector<Alert> alerts =
        AlertsFromJson(call.body, ReadAlertTemplates(call.connection));
    const Encoding encoding = EncodingOf(call.connection);
    const Doer doer{call.token.name, call.now};
    AlertCounts counts;
    WriteTransaction transaction(call.connection);
    ForEachOf(alerts.size(),
              [&](size_t i) { TakeAlert(call.connection, alerts[i], encoding, doer, counts); });
    transaction.Commit();
    return {{"raised", counts.raised}, {"known", counts.known}, {"resolved", counts.resolved}};
}

}  // namespace host
