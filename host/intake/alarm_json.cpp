// Alarms in JSON. Tested by tests/unit/host/alarm_json_test.cpp, tests/fuzz/alarm_json.cpp.
#include "host/intake/alarm_json.h"

#include <cstdint>
#include <limits>

#include "host/intake/json_input.h"

namespace host {
namespace {

struct Field {
    const char* name;
    std::string IncomingAlarm::*text;
};
constexpr Field kFields[] = {
    {"text", &IncomingAlarm::text},         {"group", &IncomingAlarm::group},
    {"severity", &IncomingAlarm::severity}, {"server", &IncomingAlarm::server},
    {"source", &IncomingAlarm::source},     {"key", &IncomingAlarm::key},
};

IncomingAlarm AlarmFrom(const Json& object, const std::string& server) {
    RefuseOthers(object, {"text", "group", "severity", "server", "source", "key"});
    IncomingAlarm alarm;
    alarm.server = server;
    for (const Field& field : kFields) {
        ReadText(object, field.name, alarm.*field.text);
    }
    return alarm;
}

std::string NumberFrom(const Json& value) {
    if (!value.is_number_integer() || value < 1 || value > std::numeric_limits<int32_t>::max()) {
        throw BadField("alarm", "the number of an alarm is expected here");
    }
    return std::to_string(value.get<int64_t>());
}

ToWithdraw WithdrawalFrom(const Json& object) {
    RefuseOthers(object, {"alarm", "source", "key"});
    const auto number = object.find("alarm");
    std::string source;
    std::string key;
    ReadText(object, "source", source);
    ReadText(object, "key", key);
    if (number == object.end()) {
        return {"", CheckedKey(source, key)};
    }
    if (!source.empty() || !key.empty()) {
        throw BadField("alarm", "either this or a key tells which one");
    }
    return {NumberFrom(*number), {}};
}

}  // namespace

std::vector<IncomingAlarm> AlarmsFromJson(std::string_view text, const std::string& server) {
    const std::vector<Json> objects = ObjectsIn(ParseJson(text));
    std::vector<IncomingAlarm> alarms;
    ForEachOf(objects.size(), [&](size_t i) { alarms.push_back(AlarmFrom(objects[i], server)); });
    return alarms;
}

Json ToJson(const IncomingAlarm& alarm) {
    Json object = Json::object();
    for (const Field& field : kFields) {
        object[field.name] = alarm.*field.text;
    }
    return object;
}

std::vector<NewAlarm> CheckedAlarms(const std::vector<IncomingAlarm>& alarms, Encoding encoding) {
    std::vector<NewAlarm> checked;
    ForEachOf(alarms.size(), [&](size_t i) { checked.push_back(Checked(alarms[i], encoding)); });
    return checked;
}

std::vector<ToWithdraw> WithdrawalsFromJson(std::string_view text) {
    const std::vector<Json> objects = ObjectsIn(ParseJson(text));
    std::vector<ToWithdraw> withdrawals;
    ForEachOf(objects.size(), [&](size_t i) { withdrawals.push_back(WithdrawalFrom(objects[i])); });
    return withdrawals;
}

Json ToJson(const Raised& raised) {
    return {{"alarm", NumberOrText(raised.number)}, {"new", raised.is_new}};
}

Json NumberOrText(const std::string& number) {
    return IsLibraryNumber(number) ? Json(std::stoll(number)) : Json(number);
}

}  // namespace host
