// The examples for monitoring, each run as its sender runs it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/unit/host/cli_fixture.h"

namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class Monitoring : public CliFixture {
 protected:
    Monitoring() { EXPECT_EQ(0, Run({"init"}).exit_code); }

    // name: of the example, with its arguments as a shell has them. input: of its standard input.
    static void RunExample(const std::string& name, const std::string& input = "") {
        WriteFile("input", input);
        const std::string programs = std::filesystem::path(PAGERFWD_PROGRAM).parent_path();
        const ProgramRun run = RunProgram(
            {"/bin/sh", "-c",
             "PATH=" + programs + ":$PATH PAGERFWD_DATABASE=site.db exec " EXAMPLES "/monitoring/" +
                 name + " <input"});
        EXPECT_EQ(0, run.exit_code) << run.err;
    }
    // What has been raised by then.
    static nlohmann::json Alarms() {
        Run({"alarm", "withdraw", "--key", "take up what waits"});
        return nlohmann::json::parse(Run({"alarm", "list", "--json"}).out);
    }
};

TEST_F(Monitoring, RaisesAProblemOfAServiceOnceAndEndsItWithTheRecovery) {
    RunExample("notify PROBLEM web1 disk CRITICAL 'Disk 95 % full'");
    RunExample("notify PROBLEM web1 disk CRITICAL 'Disk 97 % full'");
    nlohmann::json alarms = Alarms();
    ASSERT_EQ(1U, alarms.size());
    EXPECT_EQ("disk: CRITICAL: Disk 97 % full", alarms[0]["details"]);
    EXPECT_EQ("critical", alarms[0]["severity"]);
    EXPECT_EQ("web1", alarms[0]["server"]);
    EXPECT_EQ("web1!disk", alarms[0]["key"]);
    EXPECT_EQ("MONITORING/000", alarms[0]["group"]);
    RunExample("notify RECOVERY web1 disk OK 'Disk 50 % full'");
    alarms = Alarms();
    ASSERT_EQ(1U, alarms.size());
    EXPECT_EQ("resolved", alarms[0]["state"]);
}

TEST_F(Monitoring, RaisesAProblemOfAHost) {
    RunExample("notify PROBLEM web1 '' DOWN '-w is no option' NET/1");
    const nlohmann::json alarms = Alarms();
    ASSERT_EQ(1U, alarms.size());
    EXPECT_EQ("DOWN: -w is no option", alarms[0]["details"]);
    EXPECT_EQ("NET/1", alarms[0]["group"]);
}

TEST_F(Monitoring, PagesNobodyForOtherNotifications) {
    for (const char* kind : {"ACKNOWLEDGEMENT", "DOWNTIMESTART", "FLAPPINGSTART", "CUSTOM"}) {
        RunExample(std::string("notify ") + kind + " web1 disk CRITICAL x");
    }
    EXPECT_THAT(Alarms(), IsEmpty());
}

TEST_F(Monitoring, MakesAnAlarmOfAMail) {
    RunExample("mail", "From: ups@example\nSubject: On battery\n\nSubject: not this\n");
    RunExample("mail", "From: ups@example\n\n-x\n");
    const nlohmann::json alarms = Alarms();
    ASSERT_EQ(2U, alarms.size());
    EXPECT_EQ("On battery", alarms[0]["details"]);
    EXPECT_EQ("a mail without a subject", alarms[1]["details"]);
}

TEST_F(Monitoring, MakesAnAlarmOfEachLineOfALog) {
    RunExample("rsyslog", "kernel: out of memory\n\n--severity $(x) `y`\n");
    const nlohmann::json alarms = Alarms();
    ASSERT_EQ(2U, alarms.size());
    EXPECT_EQ("kernel: out of memory", alarms[0]["details"]);
    EXPECT_EQ("--severity $(x) `y`", alarms[1]["details"]);
}

TEST_F(Monitoring, MakesAnAlarmOfATrap) {
    RunExample("snmptrap",
               "ups1\nUDP: [192.0.2.1]:161\nSNMPv2-MIB::snmpTrapOID.0 UPS::onBattery\n");
    const nlohmann::json alarms = Alarms();
    ASSERT_EQ(1U, alarms.size());
    EXPECT_EQ("ups1", alarms[0]["server"]);
    EXPECT_THAT(alarms[0]["details"].get<std::string>(), HasSubstr("UPS::onBattery"));
}

}  // namespace
