// `pagerfwd run` through the real library, on simulated lines: a site whose rules are over soon,
// and what others do meanwhile.
//
// The clock stands at 2001-01-08 10:00:00 at first, and goes on from one run to the next. An alarm
// is taken up at once, and its first page is on the line for more than 20 s from then on: dialled
// after 9 s, answered after 18. Which of several pages that is, and how many the first pass of the
// worker has, is not determined: the worker starts with the first that is queued.
#ifndef PAGERFWD_TESTS_E2E_RUN_FIXTURE_H
#define PAGERFWD_TESTS_E2E_RUN_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/store/connection.h"
#include "host/store/database_name.h"
#include "host/store/tables/alarm_log.h"
#include "tests/support/temp_dir.h"
#include "tests/support/zone.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/files.h"

// A program of tests is compiled for either kind of database.
#ifdef PAGERFWD_TEST_ON_POSTGRES
#include "tests/support/own_postgres.h"
#endif

class RunTest : public ::testing::Test {
 protected:
    static constexpr time_t kNow = 978948000;

    // "duty" is paged once, "osaka" once, "tech" twice.
    static constexpr const char* kSite = R"([[port]]
name = "COM 1"
[port.pager]
dial = "ATDT0,"
[port.sms1]
dial = "ATDT0,5550101"
[[pager]]
description = "duty"
type = "sms1"
number = "5550111"
retries = 2
delay = 1
[[pager]]
description = "tech"
type = "numeric"
number = "5550100@2002"
retries = 1
delay = 1
[[pager]]
description = "osaka"
type = "ntt"
number = "5550103"
retries = 0
delay = 1
[[route]]
groups = "ALL/*"
pagers = ["duty", "tech", "osaka"]
[[route]]
groups = "DUTY/*"
pagers = ["duty"]
[[route]]
groups = "TECH/*"
pagers = ["tech"]
)";

    RunTest() {
        test_support::UseTestZone();
        database = NewDatabase();
        MakeSite(database, kSite);
    }

    // Which the programs take without being told.
#ifdef PAGERFWD_TEST_ON_POSTGRES
    static std::string NewDatabase() {
        const std::string name = test_support::TheServer().MakeDatabase();
        setenv("PAGERFWD_DATABASE", name.c_str(), 1);
        setenv("PAGERFWD_STATE", std::filesystem::current_path().c_str(), 1);
        return name;
    }
#else
    static std::string NewDatabase() {
        return "pagerfwd.db";
    }
#endif
    // Where the folders of lines are.
    static std::string Lines() {
        return host::BesideName(database) + "-lines";
    }

    static void MakeSite(const std::string& in, const std::string& site) {
        WriteFile("site.toml", site);
        RunProgram({PAGERFWD_PROGRAM, "--database", in, "init"});
        const ProgramRun run =
            RunProgram({PAGERFWD_PROGRAM, "--database", in, "import", "site.toml"});
        EXPECT_EQ(0, run.exit_code) << run.err;
    }

    // Adds an alarm, and returns its number.
    static int32_t Raise(const std::string& group, time_t raised = kNow) {
        host::Connection connection(database);
        return RaiseAlarm(connection, {group, "1", "pumps", "x"}, raised);
    }
    static void Execute(const std::string& sql) {
        host::Connection(database).Execute(sql);
    }
    static std::vector<std::string> Rows(const std::string& sql) {
        std::vector<std::string> rows;
        host::Connection connection(database);
        host::Statement statement(connection, "SELECT " + sql);
        while (statement.Step()) {
            rows.emplace_back(statement.Text(0));
        }
        return rows;
    }
    static std::string StateOf(int32_t alarm) {
        return Rows("pagerstate FROM AlarmLog WHERE alarmlogID = '" + std::to_string(alarm) + "'")
            .at(0);
    }

    // A command at a second of the first day after 10:00:00. Others are added to `exchange`.
    void At(int second, const std::string& command) {
        char time[32];
        const time_t instant = kNow + second;
        tm parts{};
        std::strftime(time, sizeof time, "%Y-%m-%d %H:%M:%S", gmtime_r(&instant, &parts));
        exchange += "[[at]]\ntime = \"" + std::string(time) + "\"\nrun = '''" + command + "'''\n";
    }
    // Ends the node and its lines, as a power cut would.
    // By the shell alone: programs that it starts would be in the world, too.
    static std::string KillAll() {
        return "read lines </proc/$PPID/task/$PPID/children; kill -KILL $PPID $lines";
    }
    static std::string Pagerfwd(const std::string& arguments) {
        return std::string(PAGERFWD_PROGRAM) + " " + arguments;
    }

    std::vector<std::string> CommandOf(const std::vector<std::string>& arguments) const {
        WriteFile("exchange.toml", exchange);
        std::vector<std::string> command = {
            PAGERSIM_PROGRAM, "--quiet",     "--clock", "clock",
            "--report",       "report.json", "--",      PAGERFWD_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return command;
    }

    // Runs pagerfwd on the lines, and keeps count of the pages that the centres understand.
    ProgramRun Simulated(const std::vector<std::string>& arguments) {
        const ProgramRun run = RunProgram(CommandOf(arguments));
        CountPages();
        return run;
    }
    void CountPages() {
        std::ifstream file("report.json");
        const nlohmann::json report = nlohmann::json::parse(file);
        for (const nlohmann::json& page : report["pages"]) {
            ++pages[page["centre"].get<std::string>()];
        }
    }
    int PageCount() const {
        int count = 0;
        for (const auto& [centre, received] : pages) {
            count += received;
        }
        return count;
    }
    ProgramRun RunUntilDone() {
        return Simulated({"run", "--until-done"});
    }

    // "duty done 1", one for each page, by pager.
    static std::vector<std::string> Stories() {
        std::vector<std::string> stories;
        const nlohmann::json status =
            nlohmann::json::parse(RunProgram({PAGERFWD_PROGRAM, "status", "--json"}).out);
        for (const char* part : {"pending", "ended"}) {
            for (const nlohmann::json& page : status[part]) {
                stories.push_back(page["pager"].get<std::string>() + " " +
                                  page["state"].get<std::string>() + " " +
                                  std::to_string(page["tries"].get<int>()));
            }
        }
        std::sort(stories.begin(), stories.end());
        return stories;
    }

    // The trace of the line; with ".1", what was moved aside.
    static std::string Trace(const std::string& aside = "") {
        return ReadFile("pagerfwd.db-lines/COM%201/pageprot.txt" + aside);
    }
    const test_support::TempDir folder;
    static inline std::string database;
    std::string exchange =
        "[[line]]\nport = \"COM 1\"\n"
        "[[centre]]\nname = \"tap\"\nprotocol = \"tap\"\nnumbers = [\"5550101\"]\n"
        "[[centre]]\nname = \"ntt\"\nprotocol = \"ntt\"\nnumbers = [\"5550103\"]\n"
        "[[centre]]\nname = \"plain\"\nprotocol = \"plain\"\nnumbers = [\"5550100\"]\n";
    std::map<std::string, int> pages;  // by centre
};

#endif
