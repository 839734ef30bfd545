// Every change of an event is noted, whoever makes it.
#include "host/store/tables/events.h"
#include "host/store/tables/history.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/host/child_process.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class AHistory : public ServiceTest {
 protected:
    // "written 2/0", one for each change.
    std::vector<std::string> Changes(const std::string& pager = "duty") {
        return Rows(
            "change || ' ' || state || '/' || tries FROM Host_History WHERE alarm = '7'"
            " AND alarm_group = 'ops' AND pager = '" +
            pager + "' ORDER BY row_id");
    }
};

TEST_F(AHistory, HasEveryStepOfAPage) {
    WriteEvent(7, "duty", 2);
    RewriteEvent(7, "duty", 2, 0);
    RewriteEvent(7, "duty", 2, 1);
    RewriteEvent(7, "duty", 3, 2);
    EXPECT_THAT(Changes(),
                ElementsAre("written 2/0", "taken out 2/0", "written 2/0", "taken out 2/0",
                            "written 2/1", "taken out 2/1", "written 3/2"));
    // As every start of the engine does.
    EXPECT_EQ(1, OpenTable(database, "AlarmFwd_PagerEvents")
                     .Delete("WHERE AlarmFwd_PagerEvents.PagerState <> 2"));
    EXPECT_EQ("removed 3/2", Changes().back());
}

TEST_F(AHistory, HasTheRemovalOfAnAlarmsEvents) {
    WriteEvent(7, "duty", 2);
    WriteEvent(7, "night", 2, 3);
    EXPECT_EQ(2, OpenTable(database, "AlarmFwd_PagerEvents")
                     .Delete("WHERE AlarmFwd_PagerEvents.AlmLogID  = 7"));
    EXPECT_THAT(Changes(), ElementsAre("written 2/0", "removed 2/0"));
    EXPECT_THAT(Changes("night"), ElementsAre("written 2/3", "removed 2/3"));
}

TEST_F(AHistory, HasChangesInPlace) {
    WriteEvent(7, "duty", 2);
    OpenTable(database, "AlarmFwd_PagerEvents")
        .Set("WHERE AlmGroup = \"ops\" AND AlmLogID = 7 AND PagerDescr = \"duty\"",
             {{"Pagerstate", 3}, {"PagerRetries", 4}});
    EXPECT_THAT(Changes(), ElementsAre("written 2/0", "changed 3/4"));
}

TEST_F(AHistory, HasChangesOfTheStateOrTheTriesAlone) {
    WriteEvent(7, "duty", 2);
    OpenTable events(database, "AlarmFwd_PagerEvents");
    for (const Values& change :
         {Values{{"PagerState", 3}}, Values{{"PagerRetries", 4}}, Values{{"Severity", 5}}}) {
        events.Set("WHERE AlmGroup = \"ops\" AND AlmLogID = 7 AND PagerDescr = \"duty\"", change);
    }
    EXPECT_THAT(Changes(), ElementsAre("written 2/0", "changed 3/0", "changed 3/4"));
}

// By the host itself: the state before, and why.
TEST_F(AHistory, HasWhatTheHostChanges) {
    WriteEvent(7, "duty", 2, 3);
    SetEventState(connection, 1, "3", kCancelled, "the pump is off (anna)");
    EXPECT_THAT(Changes(), ElementsAre("written 2/3", "cancelled 3/3"));
    EXPECT_THAT(Rows("note FROM Host_History ORDER BY row_id"),
                ElementsAre("", "the pump is off (anna)"));
    EXPECT_THAT(Rows("PagerState FROM AlarmFwd_PagerEvents"), ElementsAre("3"));
}

TEST_F(AHistory, HasNothingOfWhatWasUndone) {
    {
        WriteTransaction transaction(connection);
        WriteHistory(connection, {kWritten, "7", "ops", "duty", "2", "0"});
    }
    EXPECT_THAT(Changes(), IsEmpty());
}

TEST_F(AHistory, HasTheDeathOfAProcessBetweenDeleteAndInsert) {
    WriteEvent(7, "duty", 2);
    ChildProcess another({STORE_PROCESS, database, "delete-event"});
    EXPECT_EQ("deleted", another.ReadLine());
    another.Kill();
    OpenTable(database, "AlarmFwd_PagerEvents").ReadAll("PagerDescr");
    EXPECT_THAT(Changes(), ElementsAre("written 2/0", "taken out 2/0", "brought back 2/0"));
}

TEST_F(AHistory, HasTheTimeOfEachChange) {
    WriteEvent(7, "duty", 2);
    pagersim::VirtualClock::Set(kNow + 90);
    RewriteEvent(7, "duty", 4, 0);
    EXPECT_THAT(Rows("at - 978948000 FROM Host_History ORDER BY row_id"),
                ElementsAre("0", "90", "90"));
}

TEST_F(AHistory, HasTextsAsTheyAre) {
    const std::string text = "a\"b'c%s\x93\xFA;--" + std::string(65536, 'x');
    WriteEvent(7, text.c_str(), 2);
    EXPECT_THAT(Rows("pager FROM Host_History"), ElementsAre(text));
    EXPECT_THAT(faults, IsEmpty());
}

}  // namespace
}  // namespace host
