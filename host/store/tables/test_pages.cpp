// Test pages asked for. Tested by tests/unit/host/test_pages_test.cpp.
#include "host/store/tables/test_pages.h"

#include <limits.h>
#include <unistd.h>

#include <array>
#include <vector>

namespace host {
namespace {

struct TestPageRow {
    int64_t asked;
    int32_t asked_by;
    std::string pager;
    std::string line;
    std::string number;
};

// Numbers of processes are those of one host.
std::string HostOf(const Connection& connection) {
    std::array<char, HOST_NAME_MAX + 1> name{};
    if (connection.Can().spans_hosts) {
        gethostname(name.data(), name.size() - 1);
    }
    return name.data();
}

// Of this host.
std::vector<TestPageRow> ReadTestPages(Connection& connection, const std::string& condition) {
    std::vector<TestPageRow> rows;
    const std::string host = HostOf(connection);
    Statement statement(
        connection,
        "SELECT row_id, asked_by, pager, line, number, asked_on FROM Host_TestPages " + condition);
    while (statement.Step()) {
        if (!statement.Text(5).empty() && statement.Text(5) != host) {
            continue;
        }
        rows.push_back({statement.Number(0), static_cast<int32_t>(statement.Number(1)),
                        std::string(statement.Text(2)), std::string(statement.Text(3)),
                        std::string(statement.Text(4))});
    }
    return rows;
}

// Whoever asked for a pager of such a name gets the answer that there is none.
void ShortenNames(Connection& connection) {
    for (const int64_t row :
         Statement(connection, "SELECT row_id FROM Host_TestPages WHERE answer IS NULL")
             .Numbers()) {
        try {
            ReadTestPages(connection, "WHERE row_id = " + std::to_string(row));
        } catch (const RowTooLarge&) {
            WriteTransaction transaction(connection);
            Statement(connection,
                      "UPDATE Host_TestPages SET pager = '', number = '' WHERE row_id = ?")
                .Bind(row)
                .Run();
            transaction.Commit();
        }
    }
}

std::vector<TestPageRow> OpenTestPages(Connection& connection) {
    const char* const open = "WHERE answer IS NULL ORDER BY row_id";
    try {
        return ReadTestPages(connection, open);
    } catch (const RowTooLarge&) {
        ShortenNames(connection);
        return ReadTestPages(connection, open);
    }
}

int64_t Ask(Connection& connection, OwnerLock& owners, const std::array<std::string, 3>& cells) {
    const int64_t me = owners.Mine();
    WriteTransaction transaction(connection);
    Statement insert(connection,
                     "INSERT INTO Host_TestPages (asked_by, asked_on, pager, line, number)"
                     " VALUES (?, ?, ?, ?, ?) RETURNING row_id");
    const std::string host = HostOf(connection);
    insert.Bind(me).Bind(host);
    for (const std::string& cell : cells) {
        insert.Bind(cell);
    }
    const int64_t asked = insert.FirstNumber();
    insert.Run();
    transaction.Commit();
    return asked;
}

}  // namespace

int64_t AskForTestPage(Connection& connection, OwnerLock& owners, const std::string& pager,
                       const std::string& line) {
    return Ask(connection, owners, {pager, line, ""});
}

int64_t AskForTestCall(Connection& connection, OwnerLock& owners, const std::string& line,
                       const std::string& number) {
    return Ask(connection, owners, {"", line, number});
}

bool IsTestAskedFor(Connection& connection, int64_t asked) {
    return Statement(connection, "SELECT 1 FROM Host_TestPages WHERE row_id = ?")
        .Bind(asked)
        .Step();
}

std::optional<TestPageResult> TestPageAnswer(Connection& connection, int64_t asked) {
    Statement statement(connection,
                        "SELECT answer, said FROM Host_TestPages"
                        " WHERE row_id = ? AND answer IS NOT NULL");
    if (!statement.Bind(asked).Step()) {
        return std::nullopt;
    }
    return TestPageResult{static_cast<int32_t>(statement.Number(0)),
                          std::string(statement.Text(1))};
}

void ForgetTestPage(Connection& connection, int64_t asked) {
    WriteTransaction transaction(connection);
    Statement(connection, "DELETE FROM Host_TestPages WHERE row_id = ?").Bind(asked).Run();
    transaction.Commit();
}

std::vector<AskedTestPage> AskedTestPages(Connection& connection, OwnerLock& owners) {
    std::vector<AskedTestPage> asked;
    for (const TestPageRow& row : OpenTestPages(connection)) {
        if (owners.Lives(row.asked_by)) {
            asked.push_back({row.asked, row.pager, row.line, row.number});
        } else {
            ForgetTestPage(connection, row.asked);
        }
    }
    return asked;
}

void GiveTestPage(Connection& connection, int64_t asked, const std::string& line) {
    WriteTransaction transaction(connection);
    Statement(connection, "UPDATE Host_TestPages SET line = ? WHERE row_id = ?")
        .Bind(line)
        .Bind(asked)
        .Run();
    transaction.Commit();
}

void AnswerTestPage(Connection& connection, int64_t asked, const TestPageResult& result) {
    WriteTransaction transaction(connection);
    Statement(connection, "UPDATE Host_TestPages SET answer = ?, said = ? WHERE row_id = ?")
        .Bind(int64_t{result.answer})
        .Bind(result.said)
        .Bind(asked)
        .Run();
    transaction.Commit();
}

}  // namespace host
