// What the command of [notify] is told, and how often.
#include "host/node/notices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "sim/testing.h"
#include "tests/support/temp_dir.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// A command of which the test says how long it runs and how it ends.
class ScriptedRunner : public CommandRunner {
 public:
    std::string Start(const std::vector<std::string>& command, const std::string& input,
                      std::time_t now) override {
        commands.push_back(command);
        inputs.push_back(nlohmann::json::parse(input));
        started.push_back(now);
        running = why_not_started.empty();
        return why_not_started;
    }
    std::optional<std::string> Look(std::time_t) override {
        if (hangs) {
            return std::nullopt;
        }
        running = false;
        return end;
    }

    std::vector<std::vector<std::string>> commands;
    std::vector<nlohmann::json> inputs;
    std::vector<std::time_t> started;
    std::string why_not_started;
    std::string end;  // how it fails
    bool hangs = false;
    bool running = false;
};

class SomeNotices : public ::testing::Test {
 protected:
    static constexpr std::time_t kNow = pagersim::VirtualClock::kDefaultStart;

    SomeNotices() { notices.SetCommand({"tell", "operator"}); }

    static Notice Sick(const std::string& line) {
        Notice notice;
        notice.kind = NoticeKind::kLineSick;
        notice.text = "line " + line + " is sick";
        notice.line = line;
        return notice;
    }
    static Notice Back(const std::string& line) {
        Notice notice = Sick(line);
        notice.over = true;
        notice.text = "line " + line + " is back";
        return notice;
    }

    // A look a second.
    void Pass(std::time_t seconds) {
        for (; seconds > 0; --seconds) {
            notices.Look(++now);
        }
    }

    // "line north is sick", "line north is back +2": with what each stands for besides.
    std::vector<std::string> Told() const {
        std::vector<std::string> told;
        for (const nlohmann::json& event : runner.inputs) {
            const uint64_t held = event["held_back"];
            told.push_back(event["text"].get<std::string>() +
                           (held > 0 ? " +" + std::to_string(held) : ""));
        }
        return told;
    }

    std::time_t now = kNow;
    std::ostringstream said;
    OperatorLog log{said, true};
    ScriptedRunner& runner = *new ScriptedRunner;  // owned by the notices
    Notices notices{{"alpha", "/srv/site.db"}, log, std::unique_ptr<CommandRunner>(&runner)};
};

TEST_F(SomeNotices, AreTheCommandsInput) {
    notices.Say(Sick("north"), now);
    Pass(1);
    EXPECT_THAT(runner.commands, ElementsAre(ElementsAre("tell", "operator")));
    EXPECT_EQ(nlohmann::json({{"kind", "line-sick"},
                              {"over", false},
                              {"text", "line north is sick"},
                              {"at", "2001-01-08T10:00:00Z"},
                              {"line", "north"},
                              {"host", "alpha"},
                              {"database", "/srv/site.db"},
                              {"held_back", 0}}),
              runner.inputs.at(0));
}

TEST_F(SomeNotices, NameAlarmAndPager) {
    Notice notice;
    notice.kind = NoticeKind::kPageGivenUp;
    notice.text = "J\xC3\xBCrgen\n";
    notice.alarm = "978948000";
    notice.pager = "J\xC3\xBCrgen";
    const std::string json = AsJson(notice, {"alpha", "site.db"}, kNow, 3);
    EXPECT_THAT(json, HasSubstr(R"("alarm":"978948000","pager":"J\u00fcrgen")"));
    EXPECT_EQ(std::string::npos, json.find('\n')) << "one line";
    EXPECT_THAT(json, HasSubstr(R"("held_back":3)"));
}

TEST_F(SomeNotices, AreToldOneASecondInTheirOrder) {
    for (const char* line : {"c", "a", "b"}) {
        notices.Say(Sick(line), now);
    }
    notices.Look(now);
    notices.Look(now);
    EXPECT_EQ(1U, runner.started.size());
    Pass(3);
    EXPECT_THAT(Told(), ElementsAre("line c is sick", "line a is sick", "line b is sick"));
    EXPECT_THAT(runner.started, ElementsAre(kNow, kNow + 1, kNow + 2));
}

TEST_F(SomeNotices, AreToldOnceAnHourOfOneObject) {
    notices.Say(Sick("north"), now);
    Pass(1);
    for (int minute = 0; minute < 50; ++minute) {
        Pass(60);
        notices.Say(Sick("north"), now);
    }
    notices.Say(Sick("south"), now);
    Pass(2);
    EXPECT_THAT(Told(), ElementsAre("line north is sick", "line south is sick"));
    Pass(600);
    EXPECT_THAT(Told(),
                ElementsAre("line north is sick", "line south is sick", "line north is sick +49"));
    EXPECT_EQ(runner.started[0] + 3600, runner.started[2]);
}

TEST_F(SomeNotices, TellTheAllClearAtOnceAndTheLatestInTheEnd) {
    notices.Say(Sick("north"), now);
    Pass(300);
    notices.Say(Back("north"), now);
    Pass(300);
    EXPECT_THAT(Told(), ElementsAre("line north is sick", "line north is back"));
    notices.Say(Sick("north"), now);
    Pass(300);
    notices.Say(Back("north"), now);
    Pass(3600);
    EXPECT_THAT(Told(),
                ElementsAre("line north is sick", "line north is back", "line north is back +1"));
    Pass(7200);
    EXPECT_EQ(3U, runner.inputs.size());
}

TEST_F(SomeNotices, WaitForACommandThatTakesItsTime) {
    runner.hangs = true;
    notices.Say(Sick("north"), now);
    notices.Say(Sick("south"), now);
    Pass(20);
    EXPECT_EQ(1U, runner.inputs.size());
    EXPECT_TRUE(notices.IsBusy(now));
    runner.hangs = false;
    Pass(2);
    EXPECT_EQ(2U, runner.inputs.size());
    EXPECT_FALSE(notices.IsBusy(now));
}

TEST_F(SomeNotices, AreTriedAgainWhereTheCommandFails) {
    runner.end = "ended with status 1";
    notices.Say(Sick("north"), now);
    notices.Say(Sick("south"), now);
    Pass(59);
    EXPECT_THAT(Told(), ElementsAre("line north is sick"));
    Pass(10 * 60);
    EXPECT_EQ("line south is sick", Told().at(1)) << "the one that failed goes behind the others";
    EXPECT_THAT(said.str(),
                HasSubstr("<3>error: the command of [notify], tell: ended with status 1; what it "
                          "was to tell waits until it works: line north is sick\n"));
    runner.end.clear();
    runner.inputs.clear();
    Pass(70);
    EXPECT_EQ(2U, runner.inputs.size()) << "both";
    const std::string all = said.str();
    EXPECT_EQ(all.find("error"), all.rfind("error")) << "told once";
    const auto again = all.find("the command of [notify] works again");
    EXPECT_NE(std::string::npos, again);
    EXPECT_EQ(again, all.rfind("the command of [notify] works again")) << "told once";
}

TEST_F(SomeNotices, AreToldAtOnceByTheCommandThatFollowsOneThatFailed) {
    runner.end = "ended with status 1";
    notices.Say(Sick("north"), now);
    Pass(2);
    runner.end.clear();
    notices.SetCommand({"other"});
    Pass(1);
    EXPECT_THAT(runner.started, ElementsAre(kNow + 1, kNow + 3));
}

TEST_F(SomeNotices, GiveWayToNewsWhileTheCommandFails) {
    runner.why_not_started = "can't be started: No such file or directory";
    notices.Say(Sick("north"), now);
    Pass(1);
    notices.Say(Back("north"), now);
    runner.why_not_started.clear();
    runner.inputs.clear();
    Pass(120);
    EXPECT_THAT(Told(), ElementsAre("line north is back +1"));
}

TEST_F(SomeNotices, AreNotForNobody) {
    notices.SetCommand({});
    notices.Say(Sick("north"), now);
    Pass(10);
    EXPECT_THAT(runner.inputs, IsEmpty());
    EXPECT_FALSE(notices.IsBusy(now));
}

TEST_F(SomeNotices, AreForgottenWithTheCommandThatRuns) {
    runner.hangs = true;
    notices.Say(Sick("north"), now);
    notices.Say(Sick("south"), now);
    Pass(1);
    notices.SetCommand({});
    runner.hangs = false;
    Pass(5);
    EXPECT_THAT(Told(), ElementsAre("line north is sick"));
    notices.SetCommand({"other"});
    notices.Say(Sick("north"), now);
    Pass(5);
    EXPECT_THAT(Told(), ElementsAre("line north is sick", "line north is sick"));
    EXPECT_THAT(runner.commands.back(), ElementsAre("other"));
}

TEST_F(SomeNotices, TakeNoMoreRoomThanSoManyObjectsNeed) {
    for (size_t i = 0; i < Notices::kMostWaiting + 5; ++i) {
        notices.Say(Sick(std::to_string(i)), now);
    }
    notices.Say(Sick("0"), now);
    Pass(1);
    EXPECT_THAT(Told(), ElementsAre("line 0 is sick +6"));
    Pass(static_cast<std::time_t>(2 * Notices::kMostWaiting));
    EXPECT_EQ(Notices::kMostWaiting, runner.inputs.size());
}

TEST_F(SomeNotices, LeaveTheirRoomToOthersWhenTheyAreTold) {
    for (size_t i = 0; i < Notices::kMostWaiting; ++i) {
        notices.Say(Sick(std::to_string(i)), now);
        Pass(1);
    }
    notices.Say(Sick("south"), now);
    Pass(1);
    EXPECT_EQ("line south is sick", Told().back());
}

TEST_F(SomeNotices, LeaveTheirRoomToOthersWhenTheCommandGoes) {
    const auto fill = [this] {
        for (size_t i = 0; i < Notices::kMostWaiting; ++i) {
            notices.Say(Sick(std::to_string(i)), now);
        }
    };
    fill();
    notices.SetCommand({});
    notices.SetCommand({"tell", "operator"});
    fill();
    Pass(static_cast<std::time_t>(Notices::kMostWaiting));
    EXPECT_EQ(Notices::kMostWaiting, runner.inputs.size());
    EXPECT_EQ("line 0 is sick", Told().front()) << "none was refused";
}

TEST_F(SomeNotices, AreNotHeldBackByAClockThatIsSetBack) {
    notices.Say(Sick("north"), now);
    Pass(1);
    now -= 24 * 3600;
    notices.Say(Sick("north"), now);
    Pass(2);
    EXPECT_EQ(2U, runner.inputs.size());
}

TEST_F(SomeNotices, AreToldBeforeTheEnd) {
    const pagersim::VirtualClock clock(kNow);
    notices.Say(Sick("north"), kNow);
    notices.Say(Sick("south"), kNow);
    notices.Finish();
    EXPECT_EQ(2U, runner.inputs.size());
    runner.hangs = true;
    notices.Say(Sick("west"), std::time(nullptr));
    const std::time_t before = std::time(nullptr);
    notices.Finish();
    EXPECT_EQ(before + BackgroundCommand::kLimit, std::time(nullptr)) << "and no longer";
}

TEST_F(SomeNotices, ReachARealCommand) {
    const test_support::TempDir folder;
    BackgroundCommand& command = *new BackgroundCommand;  // owned by the notices
    Notices real({"alpha", "site.db"}, log, std::unique_ptr<CommandRunner>(&command));
    real.SetCommand({"/bin/sh", "-c", "cat >>told"});
    real.Say(Sick("north"), now);
    real.Say(Sick("south"), now);
    for (int i = 0; i < 3; ++i) {
        real.Look(now + i);
        siginfo_t info{};
        waitid(P_PID, static_cast<id_t>(command.Process()), &info, WEXITED | WNOWAIT);
    }
    EXPECT_FALSE(real.IsBusy(now));
    std::ifstream told("told");
    std::string first;
    std::string second;
    EXPECT_TRUE(std::getline(told, first) && std::getline(told, second));
    EXPECT_THAT(first, HasSubstr("north"));
    EXPECT_THAT(second, HasSubstr("south"));
}

}  // namespace
}  // namespace host
