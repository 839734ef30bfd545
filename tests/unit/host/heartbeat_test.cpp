// The beat of every minute, and what is told where it stays away.
#include "host/node/heartbeat.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class CountingRunner : public CommandRunner {
 public:
    std::string Start(const std::vector<std::string>& command, const std::string& input,
                      std::time_t) override {
        started.push_back(command.front() + "|" + input);
        return why_not;
    }
    std::optional<std::string> Look(std::time_t) override { return end; }

    std::vector<std::string> started;
    std::optional<std::string> end = "";
    std::string why_not;
};

class ASiteHeartbeat : public ServiceTest {
 protected:
    ASiteHeartbeat() {
        heartbeat.SetCommand({"beat"});
        notices.SetCommand({"tell"});
    }
    void Pass(std::time_t seconds) {
        for (; seconds > 0; --seconds) {
            heartbeat.Look(connection, ++now);
            notices.Look(now);
        }
    }

    std::time_t now = kNow;
    CountingRunner& beats = *new CountingRunner;  // owned by the heartbeat
    CountingRunner& told = *new CountingRunner;   // ... by the notices
    Notices notices{{"alpha", "site.db"}, log, std::unique_ptr<CommandRunner>(&told)};
    SiteHeartbeat heartbeat{Encoding::kLatin1, notices, log,
                            std::unique_ptr<CommandRunner>(&beats)};
};

TEST_F(ASiteHeartbeat, BeatsEveryMinuteWhileAllIsWell) {
    EXPECT_EQ(0, heartbeat.LastBeat());
    Pass(181);
    EXPECT_EQ(std::vector<std::string>(4, "beat|"), beats.started);
    EXPECT_EQ(kNow + 181, heartbeat.LastBeat());
    EXPECT_THAT(said.str(), IsEmpty());
}

TEST_F(ASiteHeartbeat, DoesNotMindWhatIsUnderWay) {
    Pass(1);
    AddAlarm("1", "0");
    Pass(60);
    Execute("UPDATE AlarmLog SET pagerstate = '4'");
    AddAlarm("2", "0");
    Pass(60);
    Execute("UPDATE AlarmLog SET pagerstate = '4'");
    Pass(60);
    EXPECT_EQ(4U, beats.started.size());
    EXPECT_THAT(told.started, IsEmpty());
}

TEST_F(ASiteHeartbeat, StopsAndTellsWhatIsNotAsItShouldBe) {
    Pass(1);
    AddAlarm("978948000", "0");
    Pass(600);
    EXPECT_EQ(2U, beats.started.size());
    EXPECT_EQ(kNow + 61, heartbeat.LastBeat());
    ASSERT_EQ(1U, told.started.size());
    EXPECT_THAT(told.started[0], HasSubstr(R"("kind":"not-as-it-should-be","over":false,)"
                                           R"("text":"alarm 978948000: it hasn't been taken up")"));
    EXPECT_THAT(told.started[0], HasSubstr(R"("alarm":"978948000")"));
    EXPECT_THAT(said.str(), HasSubstr("error: not as it should be: alarm 978948000: it hasn't"));
    Execute("UPDATE AlarmLog SET pagerstate = '4'");
    Pass(60);
    EXPECT_EQ(3U, beats.started.size());
    ASSERT_EQ(2U, told.started.size());
    EXPECT_THAT(told.started[1], HasSubstr(R"("over":true)"));
    EXPECT_THAT(said.str(), HasSubstr("alarm 978948000: as it should be again"));
}

TEST_F(ASiteHeartbeat, NamesAlarmAndPager) {
    AddAlarm("1", "2");
    Execute(
        "INSERT INTO Host_Deliveries (alarm, place, alarm_group, pager, since)"
        " VALUES ('1', 0, 'ops', 'J\xFCrgen', 0)");
    Pass(120);
    ASSERT_EQ(1U, told.started.size());
    EXPECT_THAT(told.started[0], HasSubstr(R"("alarm":"1","pager":"J\u00fcrgen")"));
    EXPECT_THAT(said.str(),
                HasSubstr("page of alarm 1 to \"J\xC3\xBCrgen\": the page is still owed"));
}

TEST_F(ASiteHeartbeat, TellsOnceOfALatePageHoweverLateItGets) {
    Execute("INSERT INTO AlarmFwd_COMProperties (Description, \"Select\") VALUES ('north', '1')");
    Execute(
        "INSERT INTO Host_Lines (line, health, pid, doing) VALUES ('north', 'healthy', 7, 'page')");
    AddPager("duty");
    AddAlarm("1", "2");
    Execute(
        "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState, line)"
        " VALUES ('1', 'ops', 'duty', '2', 'north')");
    Execute(
        "INSERT INTO Host_History (at, change, alarm, alarm_group, pager, state, tries)"
        " SELECT timestamp, 'written', '1', 'ops', 'duty', '2', '0' FROM AlarmLog");
    Pass(3 * 3600);
    ASSERT_EQ(1U, told.started.size());
    EXPECT_THAT(told.started[0], HasSubstr("has sent nothing, though the page has been due"));
    EXPECT_GT(kNow + 20 * 60, heartbeat.LastBeat());
}

TEST_F(ASiteHeartbeat, TellsOfACommandThatCannotBeStarted) {
    beats.why_not = "can't be started: no memory";
    Pass(120);
    EXPECT_EQ(
        "<3>error: the command of [heartbeat]: can't be started: no memory; it is tried every "
        "minute\n",
        said.str());
}

TEST_F(ASiteHeartbeat, TellsOnceOfACommandThatFails) {
    beats.end = "ended with status 1";
    Pass(300);
    const std::string all = said.str();
    EXPECT_THAT(all, HasSubstr("error: the command of [heartbeat]: ended with status 1"));
    EXPECT_EQ(all.find("error"), all.rfind("error"));
    EXPECT_EQ(5U, beats.started.size()) << "it is tried all the same";
    beats.end = "";
    Pass(60);
    EXPECT_THAT(said.str(), HasSubstr("the command of [heartbeat] works again"));
}

TEST_F(ASiteHeartbeat, WaitsForACommandThatTakesLonger) {
    beats.end = std::nullopt;
    Pass(300);
    EXPECT_EQ(1U, beats.started.size());
    EXPECT_EQ(kNow + 241, heartbeat.LastBeat()) << "the figure needs no command";
}

TEST_F(ASiteHeartbeat, GoesOnWhereTheClockIsSetBack) {
    Pass(1);
    now -= 24 * 3600;
    Pass(1);
    EXPECT_EQ(2U, beats.started.size());
}

TEST_F(ASiteHeartbeat, DoesNotBeatWithoutTables) {
    Execute("DROP TABLE Host_Lines");
    EXPECT_THROW(heartbeat.Look(connection, now), StoreError);
    EXPECT_EQ(0, heartbeat.LastBeat());
}

}  // namespace
}  // namespace host
