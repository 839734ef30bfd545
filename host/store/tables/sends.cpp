// Sends in the database. Tested by tests/unit/host/sends_test.cpp.
#include "host/store/tables/sends.h"

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

constexpr const char* kSelectSend =
    "SELECT at, seconds, alarm, pager, port, outcome, result, reason, row_id FROM Host_Sends ";

Send SendIn(const Statement& row) {
    return {static_cast<std::time_t>(row.Number(0)),
            row.Number(1),
            std::string(row.Text(2)),
            std::string(row.Text(3)),
            std::string(row.Text(4)),
            OutcomeFor(row.Text(5)),
            row.Number(6),
            std::string(row.Text(7))};
}

std::vector<Send> ReadSends(Statement& statement) {
    std::vector<Send> sends;
    while (statement.Step()) {
        sends.push_back(SendIn(statement));
    }
    return sends;
}

std::vector<RecordedSend> ReadRecorded(Statement& statement) {
    std::vector<RecordedSend> sends;
    while (statement.Step()) {
        sends.push_back({statement.Number(8), SendIn(statement)});
    }
    return sends;
}

std::map<std::string, std::time_t> LastTimes(Connection& connection, const std::string& condition) {
    std::map<std::string, std::time_t> times;
    Statement statement(
        connection, "SELECT port, max(at) FROM Host_Sends WHERE " + condition + " GROUP BY port");
    while (statement.Step()) {
        times.emplace(statement.Text(0), static_cast<std::time_t>(statement.Number(1)));
    }
    return times;
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
                        "SELECT at, (SELECT coalesce(max(at), 0) FROM Host_Sends WHERE port = ?1)"
                        " FROM Host_History WHERE alarm = '' AND change = ?2 AND line = ?1"
                        " ORDER BY row_id DESC LIMIT 1");
    statement.Bind(line).Bind(kEngineStarts);
    if (!statement.Step()) {
        return std::nullopt;
    }
    return static_cast<std::time_t>(std::max(statement.Number(0), statement.Number(1)));
}

std::vector<Send> SendsOf(Connection& connection, const std::string& alarm) {
    Statement statement(connection, std::string(kSelectSend) + "WHERE alarm = ? ORDER BY row_id");
    statement.Bind(alarm);
    return ReadSends(statement);
}

std::optional<RecordedSend> FindSend(Connection& connection, int64_t row) {
    Statement statement(connection, std::string(kSelectSend) + "WHERE row_id = ?");
    statement.Bind(row);
    const std::vector<RecordedSend> found = ReadRecorded(statement);
    return found.empty() ? std::nullopt : std::optional<RecordedSend>(found.front());
}

std::vector<RecordedSend> RecordedSendsOf(Connection& connection, const std::string& alarm) {
    Statement statement(connection, std::string(kSelectSend) + "WHERE alarm = ? ORDER BY row_id");
    return ReadRecorded(statement.Bind(alarm));
}

std::vector<RecordedSend> FailedSends(Connection& connection, const FailedWanted& wanted) {
    const bool of_pager = !wanted.pager.empty();
    Statement statement(connection, std::string(kSelectSend) +
                                        "WHERE row_id < ? AND at BETWEEN ? AND ?"
                                        " AND outcome IN ('not sent', 'cut off')" +
                                        (of_pager ? " AND pager = ?" : "") +
                                        " ORDER BY row_id DESC LIMIT ?");
    statement.Bind(wanted.before)
        .Bind(static_cast<int64_t>(wanted.since))
        .Bind(wanted.until == 0 ? INT64_MAX : static_cast<int64_t>(wanted.until));
    if (of_pager) {
        statement.Bind(wanted.pager);
    }
    return ReadRecorded(statement.Bind(wanted.count));
}

int64_t LastSend(Connection& connection) {
    return Statement(connection, "SELECT coalesce(max(row_id), 0) FROM Host_Sends").FirstNumber();
}

std::vector<Send> SendsBetween(Connection& connection, int64_t first, int64_t last) {
    Statement statement(
        connection, std::string(kSelectSend) + "WHERE row_id > ? AND row_id <= ? ORDER BY row_id");
    statement.Bind(first).Bind(last);
    return ReadSends(statement);
}

std::map<std::string, std::time_t> LastSuccesses(Connection& connection) {
    return LastTimes(connection, "outcome IN ('sent', 'dialled')");
}

std::map<std::string, std::time_t> LastSendings(Connection& connection) {
    return LastTimes(connection, "row_id > (SELECT max(row_id) FROM Host_Sends) - 5000");
}

}  // namespace host
