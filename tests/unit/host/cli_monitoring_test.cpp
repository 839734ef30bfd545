// The examples for monitoring, each run as its sender runs it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <vector>

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

// --- The commands of the examples' configuration, run as Icinga 2 and Nagios run them.

std::string WithMacros(std::string text, const std::map<std::string, std::string>& macros) {
    for (const auto& [name, value] : macros) {
        for (size_t at = 0; (at = text.find("$" + name + "$", at)) != std::string::npos;) {
            text.replace(at, name.size() + 2, value);
            at += value.size();
        }
    }
    return text;
}

// Nagios gives a line to a shell.
TEST_F(Monitoring, IsCalledByNagios) {
    const std::string config = ReadFile(EXAMPLES "/monitoring/nagios.cfg");
    const std::map<std::string, std::string> macros = {
        {"HOSTNAME", "web1"},         {"SERVICEDESC", "disk"}, {"SERVICEOUTPUT", "95 % full"},
        {"SERVICESTATE", "CRITICAL"}, {"HOSTSTATE", "DOWN"},   {"HOSTOUTPUT", "no answer"}};
    const std::regex line("command_line +/usr/local/bin/(notify .*)");
    std::vector<std::string> commands;
    for (std::sregex_iterator it(config.begin(), config.end(), line); it != std::sregex_iterator();
         ++it) {
        commands.push_back(WithMacros((*it)[1], macros));
    }
    ASSERT_EQ(2U, commands.size());
    for (const std::string& command : commands) {
        RunExample(WithMacros(command, {{"NOTIFICATIONTYPE", "PROBLEM"}}));
    }
    EXPECT_EQ("disk: CRITICAL: 95 % full", Alarms()[0]["details"]);
    EXPECT_EQ("DOWN: no answer", Alarms()[1]["details"]);
    for (const std::string& command : commands) {
        RunExample(WithMacros(command, {{"NOTIFICATIONTYPE", "RECOVERY"}}));
    }
    EXPECT_EQ("resolved", Alarms()[0]["state"]);
    EXPECT_EQ("resolved", Alarms()[1]["state"]);
}

// Icinga 2 hands over a list.
TEST_F(Monitoring, IsCalledByIcinga) {
    const std::string config = ReadFile(EXAMPLES "/monitoring/icinga2.conf");
    const std::map<std::string, std::string> macros = {
        {"notification.type", "PROBLEM"},  {"host.name", "web1"},         {"service.name", "disk"},
        {"service.output", "it's `full`"}, {"service.state", "CRITICAL"}, {"host.state", "DOWN"},
        {"host.output", "no answer"}};
    const std::regex list("command = \\[ \"/usr/local/bin/notify\",([^\\]]*)\\]");
    const std::regex argument("\"([^\"]*)\"");
    int commands = 0;
    for (std::sregex_iterator it(config.begin(), config.end(), list); it != std::sregex_iterator();
         ++it, ++commands) {
        const std::string text = (*it)[1];
        std::string command = "notify";
        for (std::sregex_iterator one(text.begin(), text.end(), argument);
             one != std::sregex_iterator(); ++one) {
            const std::string value = WithMacros((*one)[1], macros);
            command += " '" + std::regex_replace(value, std::regex("'"), "'\\''") + "'";
        }
        RunExample(command);
    }
    ASSERT_EQ(2, commands);
    EXPECT_EQ("disk: CRITICAL: it's `full`", Alarms()[0]["details"]);
    EXPECT_EQ("DOWN: no answer", Alarms()[1]["details"]);
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
