// Host_Lines. Tested by tests/unit/host/lines_test.cpp.
#include "host/store/tables/lines.h"

#include <set>
#include <utility>

namespace host {
namespace {

constexpr Health kHealths[] = {Health::kWell, Health::kSick};

Health HealthFor(std::string_view word) {
    for (const Health health : kHealths) {
        if (word == WordOf(health)) {
            return health;
        }
    }
    return Health::kUnknown;
}

// A port may have two rows of one name; the first counts.
std::vector<LineState> ReadWhere(Connection& connection, const std::string& condition,
                                 const std::string* name) {
    std::vector<LineState> lines;
    std::set<std::string> known;
    Statement statement(connection,
                        "SELECT port.Description, port.device, line.health, line.since,"
                        " line.reason, line.paused, line.doing, line.doing_since, line.pid,"
                        " line.node, port.node"
                        " FROM AlarmFwd_COMProperties AS port LEFT JOIN Host_Lines AS line"
                        " ON line.line = port.Description" +
                            condition + " ORDER BY port.row_id");
    if (name != nullptr) {
        statement.Bind(*name);
    }
    while (statement.Step()) {
        LineState line;
        line.line = statement.Text(0);
        line.device = statement.Text(1);
        line.health = HealthFor(statement.Text(2));
        line.since = static_cast<std::time_t>(statement.Number(3));
        line.reason = statement.Text(4);
        line.paused = statement.Number(5) != 0;
        line.doing = statement.Text(6);
        line.doing_since = static_cast<std::time_t>(statement.Number(7));
        line.process = statement.Number(8);
        line.node = statement.Text(9);
        line.node_of_site = statement.Text(10);
        if (known.insert(line.line).second) {
            lines.push_back(std::move(line));
        }
    }
    return lines;
}

void AddRow(Connection& connection, const std::string& line) {
    Statement(connection, "INSERT INTO Host_Lines (line) VALUES (?) ON CONFLICT DO NOTHING")
        .Bind(line)
        .Run();
}

// Sets columns of a line's row, "health = ?2, since = ?3"; the line is ?1.
class LineChange {
 public:
    LineChange(Connection& connection, const std::string& line, const std::string& columns)
        : transaction_(connection) {
        AddRow(connection, line);
        statement_.emplace(connection, "UPDATE Host_Lines SET " + columns + " WHERE line = ?1");
        statement_->Bind(line);
    }

    template <typename Value>
    LineChange& With(const Value& value) {
        statement_->Bind(value);
        return *this;
    }

    void Commit() {
        statement_->Run();
        statement_.reset();
        transaction_.Commit();
    }

 private:
    WriteTransaction transaction_;
    std::optional<Statement> statement_;
};

}  // namespace

const char* WordOf(Health health) {
    switch (health) {
        case Health::kWell:
            return "well";
        case Health::kSick:
            return "sick";
        case Health::kUnknown:
            break;
    }
    return "unknown";
}

std::vector<LineState> ReadLines(Connection& connection) {
    return ReadWhere(connection, "", nullptr);
}

std::vector<std::string> LineNames(Connection& connection) {
    std::vector<std::string> names;
    for (LineState& line : ReadLines(connection)) {
        names.push_back(std::move(line.line));
    }
    return names;
}

std::optional<LineState> FindLine(Connection& connection, const std::string& line) {
    std::vector<LineState> lines = ReadWhere(connection, " WHERE port.Description = ?", &line);
    return lines.empty() ? std::nullopt : std::optional<LineState>(std::move(lines.front()));
}

void SetHealth(Connection& connection, const std::string& line, Health health,
               const std::string& reason, std::time_t now) {
    LineChange(connection, line, "health = ?2, reason = ?3, since = ?4")
        .With(std::string_view(WordOf(health)))
        .With(reason)
        .With(static_cast<int64_t>(now))
        .Commit();
}

void SetPaused(Connection& connection, const std::string& line, bool paused) {
    AddRow(connection, line);
    Statement(connection, "UPDATE Host_Lines SET paused = ?2 WHERE line = ?1")
        .Bind(line)
        .Bind(int64_t{paused})
        .Run();
}

void ForgetPausesOfFormerLines(Connection& connection) {
    Statement(connection,
              "UPDATE Host_Lines SET paused = 0 WHERE paused <> 0"
              " AND line NOT IN (SELECT Description FROM AlarmFwd_COMProperties)")
        .Run();
}

void SetDoing(Connection& connection, const std::string& line, const std::string& doing,
              std::time_t now) {
    LineChange(connection, line, "doing = ?2, doing_since = ?3")
        .With(doing)
        .With(static_cast<int64_t>(now))
        .Commit();
}

void SetProcess(Connection& connection, const std::string& line, int64_t process) {
    LineChange(connection, line, process == 0 ? "pid = ?2, doing = ''" : "pid = ?2")
        .With(process)
        .Commit();
}

bool ClaimLine(Connection& connection, const std::string& line, const std::string& node) {
    WriteTransaction transaction(connection);
    AddRow(connection, line);
    Statement(connection, "UPDATE Host_Lines SET node = ?2 WHERE line = ?1 AND node IN ('', ?2)")
        .Bind(line)
        .Bind(node)
        .Run();
    const bool claimed = connection.Changes() > 0;
    transaction.Commit();
    return claimed;
}

std::string NodeOfLine(Connection& connection, const std::string& line) {
    Statement statement(connection, "SELECT node FROM Host_Lines WHERE line = ?");
    return statement.Bind(line).Step() ? std::string(statement.Text(0)) : std::string();
}

void LetGoOfLine(Connection& connection, const std::string& line, const std::string& node) {
    WriteTransaction transaction(connection);
    Statement(connection, "UPDATE Host_Lines SET node = '' WHERE line = ? AND node = ?")
        .Bind(line)
        .Bind(node)
        .Run();
    transaction.Commit();
}

std::vector<std::string> ClaimedLines(Connection& connection, const std::string& node) {
    return Statement(connection, "SELECT line FROM Host_Lines WHERE node = ? ORDER BY line")
        .Bind(node)
        .Texts();
}

void FreeLinesOf(Connection& connection, const std::string& node) {
    Statement(connection,
              "UPDATE Host_Lines SET node = '', pid = 0, doing = '', page_alarm = '',"
              " page_group = '', page_pager = '' WHERE node = ?")
        .Bind(node)
        .Run();
}

void SetPageOnLine(Connection& connection, const std::string& line, const PageOnLine& page) {
    LineChange(connection, line, "page_alarm = ?2, page_group = ?3, page_pager = ?4")
        .With(page.alarm)
        .With(page.group)
        .With(page.pager)
        .Commit();
}

PageOnLine FindPageOnLine(Connection& connection, const std::string& line) {
    Statement statement(connection,
                        "SELECT page_alarm, page_group, page_pager FROM Host_Lines WHERE line = ?");
    if (!statement.Bind(line).Step()) {
        return {};
    }
    return {std::string(statement.Text(0)), std::string(statement.Text(1)),
            std::string(statement.Text(2))};
}

}  // namespace host
