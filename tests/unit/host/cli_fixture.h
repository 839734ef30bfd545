// The fixture of tests on the built program, with a library that only shows how it is called.
#ifndef PAGERFWD_TESTS_UNIT_HOST_CLI_FIXTURE_H
#define PAGERFWD_TESTS_UNIT_HOST_CLI_FIXTURE_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "host/store/connection.h"
#include "host/store/pool.h"
#include "tests/support/temp_dir.h"
#include "tests/support/zone.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/files.h"

// A pager's number is the result that the library in these tests gives for it.
inline constexpr const char* kCliSite = R"(
[[port]]
name = "COM 1"
[port.sms1]
dial = "ATDT1"

[[pager]]
description = "duty"
type = "sms1"
number = "0"
port = "COM 1"

[[route]]
pagers = ["duty"]

[[hours]]
name = "open"
all = true

[[hours]]
name = "shut"
mon = "8-9"
)";

class CliFixture : public ::testing::Test {
 protected:
    CliFixture() {
        unsetenv("PAGERFWD_DATABASE");
        test_support::UseTestZone();
    }
    ~CliFixture() override { host::CloseDatabases(); }

    static ProgramRun Run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(),
                         {PAGERFWD_PROGRAM, "--database", "site.db", "--library", FAKE_LIBRARY});
        return RunProgram(arguments);
    }

    // A database of what this site file says.
    static void MakeSite(const std::string& text = kCliSite) {
        WriteFile("site.toml", text);
        ASSERT_EQ(0, Run({"init"}).exit_code);
        const ProgramRun run = Run({"import", "site.toml"});
        ASSERT_EQ(0, run.exit_code) << run.err;
    }

    static void Execute(const std::string& sql) { host::Connection("site.db").Execute(sql); }

    // Every row of every table, but what SQLite keeps for itself.
    static std::vector<std::string> Dump() {
        host::Connection connection("site.db");
        std::vector<std::string> dump;
        for (const std::string& table :
             Texts(connection, "SELECT name FROM sqlite_schema WHERE type = 'table' ORDER BY 1")) {
            const std::vector<std::string> columns =
                Texts(connection, "SELECT 'quote(\"' || name || '\")' FROM pragma_table_info('" +
                                      table + "') ORDER BY cid");
            std::string row;
            for (const std::string& column : columns) {
                row += (row.empty() ? "" : " || ',' || ") + column;
            }
            for (const std::string& text :
                 Texts(connection, "SELECT " + row + " FROM \"" + table + "\"")) {
                dump.push_back(table + ": " + text);
            }
        }
        return dump;
    }

    const test_support::TempDir folder;

 private:
    static std::vector<std::string> Texts(host::Connection& connection, const std::string& sql) {
        std::vector<std::string> texts;
        host::Statement statement(connection, sql);
        while (statement.Step()) {
            texts.emplace_back(statement.Text(0));
        }
        return texts;
    }
};

#endif
