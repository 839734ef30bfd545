// pagerfwd alarm: raised by a key and withdrawn, acknowledged in somebody's name, many at once.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/unit/host/cli_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class CliAlarmKey : public CliFixture {
 protected:
    CliAlarmKey() { EXPECT_EQ(0, Run({"init"}).exit_code); }

    static std::string Raise(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"alarm", "raise"});
        const ProgramRun run = Run(arguments);
        EXPECT_EQ(0, run.exit_code) << run.err;
        return run.out.substr(0, run.out.find('\n'));
    }
    static nlohmann::json List() {
        return nlohmann::json::parse(Run({"alarm", "list", "--json"}).out);
    }
    static ProgramRun RunWithInput(const std::string& command, const std::string& input) {
        WriteFile("input", input);
        return RunProgram(
            {"/bin/sh", "-c",
             std::string(PAGERFWD_PROGRAM) + " --database site.db " + command + " < input"});
    }
};

TEST_F(CliAlarmKey, CountsWhatIsRaisedAgain) {
    const std::string number = Raise({"--source", "icinga", "--key", "web1!disk", "90 % full"});
    const ProgramRun again =
        Run({"alarm", "raise", "--source", "icinga", "--key", "web1!disk", "95 % full"});
    EXPECT_EQ(number + "\n", again.out);
    EXPECT_EQ("", again.err) << "nothing is new, so there is nothing to warn of";
    const nlohmann::json list = List();
    ASSERT_EQ(1U, list.size());
    EXPECT_EQ("95 % full", list[0]["details"]);
    EXPECT_EQ("icinga", list[0]["source"]);
    EXPECT_EQ("web1!disk", list[0]["key"]);
    EXPECT_EQ(2, list[0]["times"]);
    EXPECT_THAT(Run({"log", number}).out, HasSubstr("raised again"));
}

TEST_F(CliAlarmKey, WithdrawsByTheKey) {
    const std::string number = Raise({"--key", "disk", "x"});
    ProgramRun run = Run({"alarm", "withdraw", "--key", "disk"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_EQ("alarm " + number + ": resolved; no further page leaves\n", run.out);
    run = Run({"alarm", "withdraw", "--key", "disk"});
    EXPECT_EQ(0, run.exit_code) << "monitoring may say it twice";
    EXPECT_EQ("no alarm of this key is open\n", run.out);
    EXPECT_EQ("resolved", List()[0]["state"]);
    EXPECT_NE(number, Raise({"--key", "disk", "x"}));
}

TEST_F(CliAlarmKey, WithdrawsByNumbers) {
    const std::string number = Raise({"x"});
    ProgramRun run = Run({"alarm", "withdraw", number, "7"});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_EQ("alarm " + number + ": resolved; no further page leaves\n", run.out);
    EXPECT_EQ("pagerfwd: there is no alarm 7\n", run.err);
    run = Run({"alarm", "withdraw", number});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_EQ("alarm " + number + ": was resolved before\n", run.out);
}

TEST_F(CliAlarmKey, AcknowledgesInSomebodysName) {
    const std::string number = Raise({"x"});
    EXPECT_EQ(
        0,
        Run({"alarm", "ack", number, "--by", "J\u00fcrgen", "--comment", "on my way"}).exit_code);
    EXPECT_THAT(Run({"log", number}).out, HasSubstr("by J\u00fcrgen: on my way"));
}

TEST_F(CliAlarmKey, AcknowledgesWithACommentOfItsLengthAtMost) {
    const ProgramRun run = Run({"alarm", "ack", Raise({"x"}), "--comment", std::string(1001, 'x')});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_EQ("pagerfwd: comment: it is longer than 1000 bytes\n", run.err);
}

TEST_F(CliAlarmKey, AcknowledgesAllOfAGroup) {
    const std::string first = Raise({"--group", "plant/1", "x"});
    const std::string other = Raise({"--group", "quay/1", "x"});
    const std::string second = Raise({"--group", "plant/2", "x"});
    ProgramRun run = Run({"alarm", "ack", "--group", "plant/*"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_EQ("alarm " + first + ": acknowledged; no further page leaves\nalarm " + second +
                  ": acknowledged; no further page leaves\n",
              run.out);
    EXPECT_EQ("alarm " + other + ": acknowledged; no further page leaves\n",
              Run({"alarm", "ack", "--all"}).out);
    run = Run({"alarm", "ack", "--all"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_EQ("no such alarm is being paged\n", run.out);
}

TEST_F(CliAlarmKey, RaisesManyAtOnce) {
    const ProgramRun run =
        RunWithInput("alarm raise --json", R"([{"text": "a", "key": "1"}, {"text": "b"},
                                               {"text": "c", "key": "1"}])");
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ("", run.err);
    const nlohmann::json answer = nlohmann::json::parse(run.out);
    ASSERT_EQ(3U, answer.size());
    EXPECT_EQ(true, answer[0]["new"]);
    EXPECT_EQ(true, answer[1]["new"]);
    EXPECT_EQ(false, answer[2]["new"]);
    EXPECT_EQ(answer[0]["alarm"], answer[2]["alarm"]);
    EXPECT_EQ("c", List()[0]["details"]);
    EXPECT_EQ(2U, List().size());
}

TEST_F(CliAlarmKey, RaisesAllOrNone) {
    const ProgramRun run =
        RunWithInput("alarm raise --json", R"([{"text": "a"}, {"text": "b", "severity": "bad"}])");
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, AllOf(StartsWith("pagerfwd: [1].severity: there is no severity \"bad\""),
                               HasSubstr("\"critical\", ")));
    EXPECT_THAT(List(), IsEmpty());
    EXPECT_EQ(2, RunWithInput("alarm raise --json", "{").exit_code);
}

TEST_F(CliAlarmKey, WithdrawsManyAtOnce) {
    Raise({"--key", "1", "x"});
    const std::string second = Raise({"y"});
    const ProgramRun run =
        RunWithInput("alarm withdraw --json", R"([{"key": "1"}, {"alarm": )" + second + "}]");
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ("resolved", List()[0]["state"]);
    EXPECT_EQ("resolved", List()[1]["state"]);
}

TEST_F(CliAlarmKey, RefusesWhatNamesNoAlarm) {
    const std::vector<std::vector<std::string>> wrong = {
        {"raise", "--json", "x"},
        {"raise", "--source", "icinga", "x"},
        {"raise", "--key", "a\x1b", "x"},
        {"withdraw"},
        {"withdraw", "--source", "x"},
        {"withdraw", "7", "--key", "x"},
        {"withdraw", "--json", "7"},
        {"ack", "7", "--all"},
        {"ack", "--all", "--group", "x"},
        {"ack"},
        {"raise", "--key", std::string(600, 'k'), "x"},
    };
    for (std::vector<std::string> arguments : wrong) {
        arguments.insert(arguments.begin(), "alarm");
        const ProgramRun run = Run(arguments);
        EXPECT_EQ(2, run.exit_code) << ::testing::PrintToString(arguments);
        EXPECT_THAT(run.err, StartsWith("pagerfwd: "));
    }
    EXPECT_THAT(List(), IsEmpty());
}

}  // namespace
