// Sends in the database. Tested by tests/unit/host/sends_test.cpp.
#include "host/pages/sends.h"

#include <algorithm>

#include "host/store/schema.h"

namespace host {
namespace {

using Outcome = TracedPage::Outcome;

constexpr Outcome kOutcomes[] = {Outcome::kSent, Outcome::kDialled, Outcome::kNotSent,
                                 Outcome::kOutsideHours, Outcome::kCutOff};

Outcome OutcomeFor(std::string_view word) {
    for (const Outcome outcome : kOutcomes) {
        if (word == WordOf(outcome)) {
            return outcome;
        }
    }
    return Outcome::kCutOff;
}

// A column as the trace has it.
std::string Traced(const std::string& column) {
    return "substr(CAST(" + column + " AS BLOB), 1, " + std::to_string(kTracedTextKept) + ")";
}

constexpr const char* kSelect =
    "SELECT at, seconds, alarm, pager, port, outcome, result, reason FROM Host_Sends ";

std::vector<Send> ReadAll(Statement& statement) {
    std::vector<Send> sends;
    while (statement.Step()) {
        sends.push_back({static_cast<std::time_t>(statement.Number(0)), statement.Number(1),
                         std::string(statement.Text(2)), std::string(statement.Text(3)),
                         std::string(statement.Text(4)), OutcomeFor(statement.Text(5)),
                         statement.Number(6), std::string(statement.Text(7))});
    }
    return sends;
}

bool Owes(Connection& connection, const std::string& alarm, const TracedPage& page) {
    Statement statement(connection, "SELECT 1 FROM Host_History WHERE alarm = ? AND " +
                                        Traced("pager") + " = CAST(? AS BLOB) AND " +
                                        Traced("alarm_group") + " = CAST(? AS BLOB) LIMIT 1");
    return statement.Bind(alarm).Bind(page.pager).Bind(page.alarm).Step();
}

// The library writes the number as a local time. In the hour that occurs twice in autumn two
// numbers have the same; elsewhere only one of the two is that time.
std::string AlarmOf(Connection& connection, const TracedPage& page) {
    for (const int summer : {0, 1}) {
        std::tm parts{};
        if (strptime(page.raised.c_str(), "%m/%d/%y / %H:%M:%S", &parts) == nullptr) {
            break;
        }
        parts.tm_isdst = summer;
        std::string alarm = std::to_string(std::mktime(&parts));
        if (parts.tm_isdst == summer && Owes(connection, alarm, page)) {
            return alarm;
        }
    }
    return {};
}

// The trace is read a little later than it was written.
std::time_t EndOf(const TracedPage& page, std::time_t now) {
    if (!page.day) {
        return now;
    }
    constexpr int kMinute = 60;
    constexpr int kHour = 60 * kMinute;
    constexpr int kDay = 24 * kHour;
    const std::time_t midday = static_cast<std::time_t>(*page.day) * kDay + kDay / 2;
    std::tm parts{};
    gmtime_r(&midday, &parts);  // only for the date
    // Not as seconds since midnight: on two days of the year, these aren't the clock's.
    const int end = page.second + page.seconds;
    parts.tm_mday += end / kDay;
    parts.tm_hour = end % kDay / kHour;
    parts.tm_min = end % kHour / kMinute;
    parts.tm_sec = end % kMinute;
    parts.tm_isdst = -1;
    return std::min(now, std::mktime(&parts));
}

}  // namespace

const char* WordOf(Outcome outcome) {
    switch (outcome) {
        case Outcome::kSent:
            return "sent";
        case Outcome::kDialled:
            return "dialled";
        case Outcome::kNotSent:
            return "not sent";
        case Outcome::kOutsideHours:
            return "outside hours";
        case Outcome::kCutOff:
            break;
    }
    return "cut off";
}

Send SendOf(Connection& connection, const TracedPage& page, std::time_t now) {
    Send send;
    send.at = EndOf(page, now);
    send.seconds = page.seconds;
    send.alarm = page.test ? std::string() : AlarmOf(connection, page);
    send.pager = page.pager;
    send.port = page.Port();
    send.outcome = page.outcome;
    send.result = page.result;
    send.reason = page.reason;
    return send;
}

void RecordSend(Connection& connection, const Send& send) {
    WriteTransaction transaction(connection);
    Statement(connection,
              "INSERT INTO Host_Sends (at, seconds, alarm, pager, port, outcome, result, reason)"
              " VALUES (?, ?, ?, ?, ?, ?, ?, ?)")
        .Bind(static_cast<int64_t>(send.at))
        .Bind(send.seconds)
        .Bind(send.alarm)
        .Bind(send.pager)
        .Bind(send.port)
        .Bind(WordOf(send.outcome))
        .Bind(send.result)
        .Bind(send.reason)
        .Run();
    transaction.Commit();
}

std::optional<std::time_t> RecordedUntil(Connection& connection, const std::string& line) {
    Statement statement(connection,
                        "SELECT max(at, (SELECT coalesce(max(at), 0) FROM Host_Sends"
                        "  WHERE port = ?1))"
                        " FROM Host_History WHERE alarm = '' AND change = ?2 AND line = ?1"
                        " ORDER BY row_id DESC LIMIT 1");
    statement.Bind(line).Bind(kEngineStarts);
    return statement.Step() ? std::optional(static_cast<std::time_t>(statement.Number(0)))
                            : std::nullopt;
}

std::vector<Send> SendsOf(Connection& connection, const std::string& alarm) {
    Statement statement(connection, std::string(kSelect) + "WHERE alarm = ? ORDER BY row_id");
    statement.Bind(alarm);
    return ReadAll(statement);
}

int64_t LastSend(Connection& connection) {
    Statement statement(connection, "SELECT coalesce(max(row_id), 0) FROM Host_Sends");
    statement.Step();
    return statement.Number(0);
}

std::vector<Send> SendsBetween(Connection& connection, int64_t first, int64_t last) {
    Statement statement(connection,
                        std::string(kSelect) + "WHERE row_id > ? AND row_id <= ? ORDER BY row_id");
    statement.Bind(first).Bind(last);
    return ReadAll(statement);
}

std::map<std::string, std::time_t> LastSuccesses(Connection& connection) {
    std::map<std::string, std::time_t> successes;
    Statement statement(connection,
                        "SELECT port, max(at) FROM Host_Sends"
                        " WHERE outcome IN ('sent', 'dialled')"
                        " GROUP BY port");
    while (statement.Step()) {
        successes.emplace(statement.Text(0), static_cast<std::time_t>(statement.Number(1)));
    }
    return successes;
}

}  // namespace host
