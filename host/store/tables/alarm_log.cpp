// The alarm log. Tested by tests/unit/host/alarms_test.cpp.
#include "host/store/tables/alarm_log.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "host/store/tables/events.h"
#include "host/store/tables/states.h"
#include "host/text/controls.h"

namespace host {
namespace {

const std::string kSelectAlarm =
    "SELECT row_id, alarmlogID,"
    " CASE alarm_group WHEN '' THEN alarmName ELSE alarm_group END,"
    " severity, server, details, pagerstate, CAST(timestamp AS INTEGER),"
    " alarmack NOT IN ('', '0'), CAST(acktime AS INTEGER), alarmnote, alarm_source, alarm_key,"
    " times_raised, raised_last, withdrawn FROM AlarmLog ";

// New, or being paged.
const std::string kStillPaged = "pagerstate IN ('', '0', '2') AND alarmack IN ('', '0')";

// How a note begins that names who has acknowledged.
const std::string kBy = "acknowledged by ";

std::string NamedIn(std::string_view note) {
    return note.substr(0, kBy.size()) == kBy ? std::string(note.substr(kBy.size())) : std::string();
}

std::vector<Alarm> ReadAlarms(Statement& statement) {
    std::vector<Alarm> alarms;
    while (statement.Step()) {
        Alarm alarm;
        alarm.row = statement.Number(0);
        alarm.number = statement.Text(1);
        alarm.group = WithoutControls(statement.Text(2));
        alarm.severity = statement.Text(3);
        alarm.server = WithoutControls(statement.Text(4));
        alarm.details = statement.Text(5);
        alarm.state = statement.Text(6);
        alarm.raised = static_cast<std::time_t>(statement.Number(7));
        alarm.acknowledged = statement.Number(8) != 0;
        alarm.acknowledged_at = static_cast<std::time_t>(statement.Number(9));
        alarm.acknowledged_by = NamedIn(statement.Text(10));
        alarm.source = statement.Text(11);
        alarm.key = statement.Text(12);
        alarm.times_raised = statement.Number(13);
        alarm.raised_last = static_cast<std::time_t>(statement.Number(14));
        alarm.withdrawn = static_cast<std::time_t>(statement.Number(15));
        alarms.push_back(std::move(alarm));
    }
    return alarms;
}

std::vector<Alarm> AlarmsAtOnce(Connection& connection, const std::string& condition) {
    Statement statement(connection, kSelectAlarm + condition);
    return ReadAlarms(statement);
}

std::vector<int64_t> AlarmRows(Connection& connection, const std::string& condition) {
    return Statement(connection, "SELECT row_id FROM AlarmLog " + condition).Numbers();
}

// One that can't be read doesn't hide the others.
std::vector<Alarm> AlarmsOneByOne(Connection& connection, const std::string& condition,
                                  std::vector<int64_t>* unreadable) {
    std::vector<Alarm> alarms;
    for (const int64_t row : AlarmRows(connection, condition)) {
        try {
            Statement statement(connection, kSelectAlarm + "WHERE row_id = ?");
            statement.Bind(row);
            for (Alarm& alarm : ReadAlarms(statement)) {
                alarms.push_back(std::move(alarm));
            }
        } catch (const RowTooLarge&) {
            if (unreadable != nullptr) {
                unreadable->push_back(row);
            }
        }
    }
    return alarms;
}

std::vector<Alarm> AlarmsWhere(Connection& connection, const std::string& condition,
                               std::vector<int64_t>* unreadable = nullptr) {
    try {
        return AlarmsAtOnce(connection, condition);
    } catch (const RowTooLarge&) {
        return AlarmsOneByOne(connection, condition, unreadable);
    }
}

std::vector<std::string> AlarmNumbers(Connection& connection, const std::string& condition) {
    return Statement(connection,
                     "SELECT alarmlogID FROM AlarmLog AS alarm"
                     " WHERE alarmack IN ('', '0') AND " +
                         condition + " ORDER BY row_id")
        .Texts();
}

// The states in words: a condition each.
struct WordCondition {
    std::string_view word;
    const char* condition;
};
constexpr WordCondition kStates[] = {
    {"new", "pagerstate IN ('', '0') AND alarmack IN ('', '0') AND withdrawn = 0"},
    {"being paged", "pagerstate = '2' AND alarmack IN ('', '0') AND withdrawn = 0"},
    {"acknowledged", "(pagerstate = '1' OR alarmack NOT IN ('', '0')) AND withdrawn = 0"},
    {"resolved", "withdrawn <> 0"},
    {"off limit", "pagerstate = '3' AND alarmack IN ('', '0') AND withdrawn = 0"},
    {"done", "pagerstate = '4' AND alarmack IN ('', '0') AND withdrawn = 0"},
};

// One that isn't a state fits none.
std::string InState(std::string_view word) {
    for (const WordCondition& state : kStates) {
        if (state.word == word) {
            return std::string(" AND ") + state.condition;
        }
    }
    return word.empty() ? "" : " AND 0 = 1";
}

bool IsUsed(Connection& connection, int64_t number) {
    const std::string text = std::to_string(number);
    Statement statement(connection, "SELECT 1 FROM AlarmLog WHERE alarmlogID = ?");
    return statement.Bind(text).Step();
}

// That of the last alarm; 0: it is no number of ours.
int64_t LastNumber(Connection& connection) {
    Statement statement(connection, "SELECT alarmlogID FROM AlarmLog ORDER BY row_id DESC LIMIT 1");
    const std::string number(statement.Step() ? statement.Text(0) : "");
    return IsLibraryNumber(number) ? std::stoll(number) : 0;
}

// Where to look for a free number. Alarms that come faster than one a second have the numbers
// behind one another: each would be asked for, and more from alarm to alarm.
int64_t BeginOfSearch(Connection& connection, int64_t first) {
    constexpr int64_t kFew = 16;
    constexpr int64_t kLongestBurst = 1000000;
    const int64_t ahead = LastNumber(connection) - first;
    return ahead >= kFew && ahead < kLongestBurst && IsUsed(connection, first) ? first + ahead
                                                                               : first;
}

// The library's numbers have 32 bits.
int32_t FreeNumber(Connection& connection, std::time_t now) {
    constexpr int64_t kLast = std::numeric_limits<int32_t>::max();
    const int64_t first = now > 0 && now <= kLast ? static_cast<int64_t>(now) : 1;
    int64_t number = BeginOfSearch(connection, first);
    while (IsUsed(connection, number)) {
        number = number == kLast ? 1 : number + 1;
        if (number == first) {
            throw StoreError(connection.Name() + ": the alarm log has no number left");
        }
    }
    return static_cast<int32_t>(number);
}

}  // namespace

int32_t AddAlarm(Connection& connection, const NewAlarm& alarm, std::time_t now) {
    const int32_t number = FreeNumber(connection, now);
    const std::string number_text = std::to_string(number);
    const std::string time = std::to_string(now);
    Statement(
        connection,
        "INSERT INTO AlarmLog (alarmlogID, acktime, alarmack, alarmName, broadcaststate,"
        " details, eventlogstate, execstate, mailstate, monitoronly, pagerstate, server,"
        " severity, stationstate, timestamp, alarm_group, alarm_source, alarm_key, raised_last)"
        " VALUES (?, '0', '0', ?, '0', ?, '0', '0', '0', '0', '0', ?, ?, '0', ?, ?, ?, ?, ?)")
        .Bind(number_text)
        .Bind(alarm.group)
        .Bind(alarm.details)
        .Bind(alarm.server)
        .Bind(alarm.severity)
        .Bind(time)
        .Bind(alarm.group)
        .Bind(alarm.source)
        .Bind(alarm.key)
        .Bind(static_cast<int64_t>(now))
        .Run();
    return number;
}

int32_t RaiseAlarm(Connection& connection, const NewAlarm& alarm, std::time_t now) {
    WriteTransaction transaction(connection);
    const int32_t number = AddAlarm(connection, alarm, now);
    transaction.Commit();
    return number;
}

Acknowledged NoteAcknowledged(Connection& connection, int64_t number, std::time_t now,
                              const std::string& by) {
    const std::string number_text = std::to_string(number);
    const std::string time = std::to_string(now);
    // The trigger of the table sets its pagerstate.
    Statement(connection,
              "UPDATE AlarmLog SET alarmack = '1', acktime = ?,"
              " alarmnote = CASE WHEN alarmnote = '' THEN ? ELSE alarmnote END"
              " WHERE alarmlogID = ? AND alarmack IN ('', '0')")
        .Bind(time)
        .Bind(by.empty() ? by : kBy + by)
        .Bind(number_text)
        .Run();
    if (connection.Changes() > 0) {
        return Acknowledged::kNow;
    }
    return IsUsed(connection, number) ? Acknowledged::kBefore : Acknowledged::kUnknown;
}

Acknowledged AcknowledgeAlarm(Connection& connection, int64_t number, std::time_t now,
                              const std::string& by) {
    WriteTransaction transaction(connection);
    const Acknowledged how = NoteAcknowledged(connection, number, now, by);
    transaction.Commit();
    return how;
}

std::vector<Alarm> OpenAlarms(Connection& connection) {
    return AlarmsWhere(connection, "WHERE " + kStillPaged + " ORDER BY row_id");
}

// By the index from its end: of however many, a server reads only these.
std::vector<Alarm> LastAlarms(Connection& connection, int64_t count) {
    std::vector<Alarm> alarms =
        AlarmsWhere(connection, "ORDER BY row_id DESC LIMIT " + std::to_string(count));
    std::reverse(alarms.begin(), alarms.end());
    return alarms;
}

std::vector<Alarm> AlarmsBehind(Connection& connection, int64_t row, int64_t count) {
    return AlarmsWhere(connection, "WHERE row_id > " + std::to_string(row) +
                                       " ORDER BY row_id LIMIT " + std::to_string(count));
}

std::vector<Alarm> FindAlarms(Connection& connection, const AlarmsWanted& wanted) {
    const bool of_pager = !wanted.pager.empty();
    Statement statement(
        connection,
        kSelectAlarm + "WHERE row_id < ? AND CAST(timestamp AS INTEGER) BETWEEN ? AND ?" +
            InState(wanted.state) +
            (of_pager ? " AND (EXISTS (SELECT 1 FROM Host_History WHERE alarm = alarmlogID"
                        "  AND pager = ?) OR EXISTS (SELECT 1 FROM Host_Deliveries"
                        "  WHERE alarm = alarmlogID AND pager = ?))"
                      : "") +
            " ORDER BY row_id DESC LIMIT ?");
    statement.Bind(wanted.before)
        .Bind(static_cast<int64_t>(wanted.since))
        .Bind(wanted.until == 0 ? INT64_MAX : static_cast<int64_t>(wanted.until));
    if (of_pager) {
        statement.Bind(wanted.pager).Bind(wanted.pager);
    }
    statement.Bind(wanted.count);
    return ReadAlarms(statement);
}

std::vector<Alarm> NewAlarms(Connection& connection, std::vector<int64_t>* unreadable) {
    return AlarmsWhere(connection, "WHERE pagerstate IN ('', '0') ORDER BY row_id", unreadable);
}

std::optional<Alarm> FindAlarm(Connection& connection, const std::string& number) {
    Statement statement(connection, kSelectAlarm + "WHERE alarmlogID = ?");
    statement.Bind(number);
    std::vector<Alarm> alarms = ReadAlarms(statement);
    return alarms.size() == 1 ? std::optional<Alarm>(std::move(alarms.front())) : std::nullopt;
}

void SetPagerState(Connection& connection, int64_t row, const char* state) {
    Statement(connection, "UPDATE AlarmLog SET pagerstate = ? WHERE row_id = ?")
        .Bind(state)
        .Bind(row)
        .Run();
}

void RewriteAlarm(Connection& connection, const Alarm& alarm) {
    Statement(connection,
              "UPDATE AlarmLog SET severity = ?, alarm_group = ?, server = ?, details = ?"
              " WHERE row_id = ?")
        .Bind(alarm.severity)
        .Bind(alarm.group)
        .Bind(alarm.server)
        .Bind(alarm.details)
        .Bind(alarm.row)
        .Run();
}

void SetFoldedState(Connection& connection, const std::string& number, const std::string& state) {
    Statement(connection, std::string("UPDATE AlarmLog SET pagerstate = CASE WHEN ") +
                              kIsOwedAPage + " THEN '2' ELSE ? END" +
                              " WHERE alarmlogID = ? AND alarmack IN ('', '0')"
                              " AND pagerstate <> '1'")
        .Bind(state)
        .Bind(number)
        .Run();
}

std::string NumberOf(Connection& connection, int64_t row) {
    Statement statement(connection, "SELECT alarmlogID FROM AlarmLog WHERE row_id = ?");
    statement.Bind(row).Step();
    return std::string(statement.Text(0));
}

std::vector<int64_t> OldAlarms(Connection& connection, std::time_t raised_before, bool off_limit) {
    return Statement(connection,
                     "SELECT row_id FROM AlarmLog"
                     " WHERE CAST(timestamp AS INTEGER) < ? AND (" +
                         std::string(off_limit ? "pagerstate = '3' OR " : "") + kStillPaged + ")")
        .Bind(static_cast<int64_t>(raised_before))
        .Numbers();
}

std::vector<int64_t> AlarmsEndedTooEarly(Connection& connection) {
    return Statement(connection,
                     "SELECT row_id FROM AlarmLog"
                     " WHERE pagerstate IN ('3', '4') AND alarmack IN ('', '0')"
                     " AND alarmlogID IN (SELECT AlmLogID FROM AlarmFwd_PagerEvents"
                     "  WHERE PagerState = '2' UNION"
                     "  SELECT alarm FROM Host_Deliveries WHERE answer IS NULL)")
        .Numbers();
}

// A library drops the ended pages of an alarm that counts as over. Another line, whose changes were
// kept until then, may know of pages of it still, and write that it is being paged.
constexpr const char* kWasDroppedAs =
    "EXISTS (SELECT 1 FROM Host_History AS dropped WHERE dropped.alarm = alarm.alarmlogID"
    "  AND change = 'removed' AND state = ?"
    "  AND NOT EXISTS (SELECT 1 FROM Host_History AS later WHERE later.alarm = dropped.alarm"
    "   AND later.pager = dropped.pager AND later.row_id > dropped.row_id))";

std::vector<int64_t> FinishedAlarms(Connection& connection, const char* state) {
    return Statement(connection,
                     "SELECT row_id FROM AlarmLog AS alarm"
                     " WHERE pagerstate = '2' AND alarmack IN ('', '0')"
                     " AND NOT EXISTS (SELECT 1 FROM Host_Deliveries WHERE alarm = alarm.alarmlogID"
                     "  AND answer IS NULL)"
                     " AND NOT EXISTS (SELECT 1 FROM AlarmFwd_PagerEvents"
                     "  WHERE AlmLogID = alarm.alarmlogID AND PagerState NOT IN ('3', '4'))"
                     " AND (EXISTS (SELECT 1 FROM AlarmFwd_PagerEvents"
                     "  WHERE AlmLogID = alarm.alarmlogID AND PagerState = ?) OR " +
                         std::string(kWasDroppedAs) + ")")
        .Bind(std::string_view(state))
        .Bind(std::string_view(state))
        .Numbers();
}

std::vector<std::string> AlarmsNotTakenUp(Connection& connection) {
    return AlarmNumbers(connection, "pagerstate IN ('', '0')");
}

std::vector<std::string> AlarmsPagedWithoutPages(Connection& connection) {
    return AlarmNumbers(
        connection,
        "pagerstate = '2'"
        " AND NOT EXISTS (SELECT 1 FROM AlarmFwd_PagerEvents WHERE AlmLogID = alarmlogID"
        "  AND PagerState = '2')"
        " AND NOT EXISTS (SELECT 1 FROM Host_Deliveries WHERE alarm.alarmlogID ="
        "  Host_Deliveries.alarm AND answer IS NULL)");
}

// By the pages: there are many alarms that are over.
std::vector<std::string> AlarmsOverWithPages(Connection& connection) {
    return AlarmNumbers(connection,
                        "pagerstate || '' IN ('3', '4') AND alarmlogID IN"
                        " (SELECT AlmLogID FROM AlarmFwd_PagerEvents WHERE PagerState = '2')");
}

bool IsLibraryNumber(const std::string& number) {
    int32_t read = 0;
    const char* const behind = number.data() + number.size();
    const auto [end, error] = std::from_chars(number.data(), behind, read);
    return error == std::errc() && end == behind && std::to_string(read) == number;
}

bool EndedByWithdrawal(const Alarm& alarm) {
    return alarm.withdrawn != 0 && alarm.acknowledged_at == alarm.withdrawn;
}

bool NeedsNoPaging(const Alarm& alarm) {
    return alarm.acknowledged || alarm.state == kStateAcknowledged;
}

}  // namespace host
