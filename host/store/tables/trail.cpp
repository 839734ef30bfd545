// The trail. Tested by tests/unit/host/raising_test.cpp.
#include "host/store/tables/trail.h"

namespace host {
namespace {

constexpr const char* kSelectTrail = "SELECT row_id, at, who, what, alarm, note FROM Host_Trail ";

std::vector<TrailEntry> ReadTrail(Statement& statement) {
    std::vector<TrailEntry> trail;
    while (statement.Step()) {
        trail.push_back({statement.Number(0), static_cast<std::time_t>(statement.Number(1)),
                         std::string(statement.Text(2)), std::string(statement.Text(3)),
                         std::string(statement.Text(4)), std::string(statement.Text(5))});
    }
    return trail;
}

}  // namespace

void NoteInTrail(Connection& connection, const TrailEntry& entry) {
    Statement(connection,
              "INSERT INTO Host_Trail (at, who, what, alarm, note) VALUES (?, ?, ?, ?, ?)")
        .Bind(static_cast<int64_t>(entry.at))
        .Bind(entry.who)
        .Bind(entry.what)
        .Bind(entry.alarm)
        .Bind(entry.note)
        .Run();
}

std::vector<TrailEntry> TrailOf(Connection& connection, const std::string& alarm) {
    Statement statement(connection, std::string(kSelectTrail) + "WHERE alarm = ? ORDER BY row_id");
    return ReadTrail(statement.Bind(alarm));
}

std::vector<TrailEntry> TrailBefore(Connection& connection, int64_t row, int64_t count) {
    Statement statement(
        connection, std::string(kSelectTrail) + "WHERE row_id < ? ORDER BY row_id DESC LIMIT ?");
    return ReadTrail(statement.Bind(row).Bind(count));
}

void ForgetTrail(Connection& connection, std::time_t before) {
    Statement(connection, "DELETE FROM Host_Trail WHERE at < ?")
        .Bind(static_cast<int64_t>(before))
        .Run();
}

}  // namespace host
