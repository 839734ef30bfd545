// Alarms by key. Tested by tests/unit/host/raising_test.cpp.
#include "host/store/tables/alarm_keys.h"

namespace host {
namespace {

std::optional<std::string> NumberBy(Connection& connection, const AlarmKey& key,
                                    const char* which) {
    if (key.key.empty()) {
        return std::nullopt;
    }
    Statement statement(connection,
                        std::string("SELECT alarmlogID FROM AlarmLog WHERE alarm_source = ?"
                                    " AND alarm_key = ? AND alarm_key <> ''") +
                            which);
    statement.Bind(key.source).Bind(key.key);
    return statement.Step() ? std::optional<std::string>(statement.Text(0)) : std::nullopt;
}

}  // namespace

std::optional<std::string> OpenAlarmOf(Connection& connection, const AlarmKey& key) {
    return NumberBy(connection, key, " AND withdrawn = 0");
}

std::optional<std::string> LastAlarmOf(Connection& connection, const AlarmKey& key) {
    return NumberBy(connection, key, " ORDER BY row_id DESC LIMIT 1");
}

std::vector<KeyedAlarm> AlarmsOfKeys(Connection& connection, const AlarmKey& begin) {
    Statement statement(connection,
                        "SELECT alarmlogID, alarm_key, withdrawn FROM AlarmLog"
                        " WHERE alarm_source = ? AND alarm_key <> ''"
                        " AND substr(alarm_key, 1, length(?)) = ? ORDER BY row_id");
    statement.Bind(begin.source).Bind(begin.key).Bind(begin.key);
    std::vector<KeyedAlarm> alarms;
    while (statement.Step()) {
        alarms.push_back({std::string(statement.Text(0)), std::string(statement.Text(1)),
                          statement.Number(2) == 0});
    }
    return alarms;
}

void RaiseAgain(Connection& connection, const std::string& number, const std::string& details,
                std::time_t now) {
    Statement(connection,
              "UPDATE AlarmLog SET times_raised = times_raised + 1, raised_last = ?,"
              " details = CASE WHEN withdrawn = 0 THEN ? ELSE details END WHERE alarmlogID = ?")
        .Bind(static_cast<int64_t>(now))
        .Bind(details)
        .Bind(number)
        .Run();
}

// What the library goes by is the acknowledgement: it drops the pages of such an alarm, and the
// database keeps its state. One that somebody has acknowledged before stays his.
bool Withdraw(Connection& connection, const std::string& number, std::time_t now) {
    const std::string time = std::to_string(now);
    Statement(connection,
              "UPDATE AlarmLog SET withdrawn = ?,"
              " acktime = CASE WHEN alarmack IN ('', '0') THEN ? ELSE acktime END,"
              " alarmack = CASE WHEN alarmack IN ('', '0') THEN '1' ELSE alarmack END"
              " WHERE alarmlogID = ? AND withdrawn = 0")
        .Bind(static_cast<int64_t>(now))
        .Bind(time)
        .Bind(number)
        .Run();
    return connection.Changes() > 0;
}

void MakeLastWord(Connection& connection, const std::string& number, const std::string& of) {
    Statement(connection, "UPDATE AlarmLog SET last_word_of = ? WHERE alarmlogID = ?")
        .Bind(of)
        .Bind(number)
        .Run();
}

std::vector<std::string> LastWordsSent(Connection& connection) {
    return Statement(connection,
                     "SELECT alarmlogID FROM AlarmLog WHERE last_word_of <> ''"
                     " AND alarmack IN ('', '0') AND EXISTS (SELECT 1 FROM Host_Sends"
                     "  WHERE alarm = AlarmLog.alarmlogID AND outcome IN ('sent', 'dialled'))"
                     " ORDER BY row_id")
        .Texts();
}

}  // namespace host
