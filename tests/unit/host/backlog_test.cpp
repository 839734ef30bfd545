// What an engine finds when it starts.
#include "host/pages/backlog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/pages/history.h"
#include "host/store/tables/events.h"
#include "host/store/tables/history.h"
#include "tests/unit/host/another_program.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;

class ABacklog : public ServiceTest {
 protected:
    // An alarm with a page in this state.
    void Add(int32_t alarm, const char* alarm_state, int32_t page_state, time_t raised = kNow) {
        AddAlarm(std::to_string(alarm), alarm_state, "ops", raised);
        WriteEvent(alarm, "duty", page_state);
    }
    std::vector<std::string> PageStates() {
        return Rows("PagerState FROM AlarmFwd_PagerEvents ORDER BY row_id");
    }
};

TEST_F(ABacklog, IsEmptyWhereNothingIsPending) {
    Add(7, "4", 4);
    EXPECT_EQ(0, LookAtBacklog(connection).pages);
    EXPECT_EQ(0, LookAtBacklog(connection).oldest);
}

TEST_F(ABacklog, CountsPagesAndKnowsTheOldestAlarm) {
    Add(7, "2", 2, kNow - 100);
    WriteEvent(7, "night", 2);
    Add(8, "2", 2, kNow - 900);
    Add(9, "1", 2, kNow - 5000);  // acknowledged
    Add(10, "2", 3, kNow - 5000);
    EXPECT_EQ(3, LookAtBacklog(connection).pages);
    EXPECT_EQ(kNow - 900, LookAtBacklog(connection).oldest);
}

TEST_F(ABacklog, IsMendedWhereAnAlarmStillOwesAPage) {
    Add(5, "0", 2);
    Add(6, "1", 2);
    Add(7, "3", 2);
    Add(8, "4", 2);
    Add(9, "4", 4);
    EXPECT_EQ(2, MendAlarmStates(connection));
    EXPECT_THAT(Rows("pagerstate FROM AlarmLog ORDER BY row_id"),
                ElementsAre("0", "1", "2", "2", "4"));
    EXPECT_EQ(0, MendAlarmStates(connection));
}

TEST_F(ABacklog, EndsAlarmsWhosePagesHaveAllEnded) {
    Add(5, "2", 2);
    Add(6, "2", 4);
    Add(7, "2", 4);
    WriteEvent(7, "night", 3);
    Add(8, "2", 4);
    Execute(
        "INSERT INTO Host_Deliveries (alarm, place, alarm_group, pager, since)"
        " VALUES ('8', 0, 'ops', 'night', 0)");
    AddAlarm("9", "2");
    EXPECT_EQ(2, EndFinishedAlarms(connection));
    EXPECT_THAT(Rows("pagerstate FROM AlarmLog ORDER BY row_id"),
                ElementsAre("2", "4", "3", "2", "2"));
    EXPECT_EQ(0, EndFinishedAlarms(connection));
}

// By the last that was heard of each.
TEST_F(ABacklog, EndsAlarmsWhosePagesWereDropped) {
    const auto drop = [this](const char* alarm, const char* pager, const char* state) {
        WriteHistory(connection, {kRemoved, alarm, "ops", pager, state, "1"});
    };
    AddAlarm("6", "2");
    drop("6", "duty", "4");
    AddAlarm("7", "2");
    drop("7", "duty", "4");
    drop("7", "night", "3");
    AddAlarm("8", "2");
    drop("8", "duty", "3");
    drop("8", "duty", "4");
    Add(9, "2", 2);
    drop("9", "night", "4");
    AddAlarm("10", "2");
    drop("10", "duty", "2");
    EXPECT_EQ(3, EndFinishedAlarms(connection));
    EXPECT_THAT(Rows("pagerstate FROM AlarmLog ORDER BY row_id"),
                ElementsAre("4", "3", "4", "2", "2"));
    EXPECT_EQ(0, EndFinishedAlarms(connection));
}

TEST_F(ABacklog, IsNeverMendedAgainstAnAcknowledgement) {
    Add(7, "4", 2);
    Execute(std::string("DROP TRIGGER AlarmLog_StaysAcknowledged") +
            (connection.Can().is_file ? "" : " ON AlarmLog") +
            "; UPDATE AlarmLog SET alarmack = '1'");
    EXPECT_EQ(0, MendAlarmStates(connection));
    EXPECT_EQ("4", StateOf("7"));
}

// --- Giving up.

TEST_F(ABacklog, IsGivenUpWhereItsAlarmIsOld) {
    Add(7, "2", 2, kNow - 61);
    WriteEvent(7, "night", 2);
    WriteEvent(7, "over", 4);
    Add(8, "2", 2, kNow - 60);
    EXPECT_EQ(2, DiscardPages(connection, kNow - 60));
    EXPECT_EQ("3", StateOf("7"));
    EXPECT_EQ("2", StateOf("8"));
    EXPECT_THAT(PageStates(), ElementsAre("3", "3", "4", "2"));
    EXPECT_EQ(PageEnd::kOffLimit, PagesOf(connection, "7").at(0).end);
    EXPECT_EQ(0, DiscardPages(connection, kNow - 60));
}

TEST_F(ABacklog, IsGivenUpWhereItsPagesWereNotYetQueued) {
    AddAlarm("7", "2", "ops", kNow - 61);
    AddAlarm("8", "2", "ops", kNow - 60);
    AddDelivery("7", 0, "duty");
    AddDelivery("7", 1, "night", "1");
    AddDelivery("8", 0, "duty");
    EXPECT_EQ(1, DiscardPages(connection, kNow - 60));
    EXPECT_THAT(
        Rows("coalesce(CAST(answer AS TEXT), '-') FROM Host_Deliveries ORDER BY alarm, place"),
        ElementsAre("4", "1", "-"));
}

TEST_F(ABacklog, IsGivenUpWhereItsAlarmWasNeverTakenUp) {
    AddAlarm("7", "0", "ops", kNow - 61);
    AddAlarm("8", "", "ops", kNow - 61);
    AddAlarm("9", "0", "ops", kNow - 60);
    DiscardPages(connection, kNow - 60);
    EXPECT_THAT(Rows("pagerstate FROM AlarmLog ORDER BY row_id"), ElementsAre("3", "3", "0"));
}

TEST_F(ABacklog, KeepsAcknowledgedAlarmsAcknowledgedWhenItIsGivenUp) {
    Add(7, "2", 2, kNow - 61);
    AcknowledgeAlarm(connection, 7, kNow);
    DiscardPages(connection, kNow - 60);
    EXPECT_EQ("1", StateOf("7"));
}

#ifndef PAGERFWD_TEST_ON_POSTGRES  // a server changes such rows as any other
// The pages of such an alarm are given up like others: only its own row stays as it is.
TEST_F(ABacklog, IsGivenUpBesideRowsThatAreTooLarge) {
    Add(7, "2", 2, kNow - 61);
    Add(8, "2", 2, kNow - 61);
    WriteEvent(8, "night", 2);
    AddDelivery("8", 0, "duty");
    AddDelivery("8", 1, "night");
    for (const char* one : {"AlarmLog SET alarmnote = hex(zeroblob(600000)) WHERE alarmlogID = '7'",
                            "AlarmFwd_PagerEvents SET AlmGroup = hex(zeroblob(600000))"
                            " WHERE PagerDescr = 'night'",
                            "Host_Deliveries SET pager = hex(zeroblob(600000)) WHERE place = 0"}) {
        WriteAsAnother(database, std::string("UPDATE ") + one);
    }
    EXPECT_EQ(3, DiscardPages(connection, kNow - 60));
    EXPECT_EQ("2", StateOf("7"));
    EXPECT_EQ("3", StateOf("8"));
    EXPECT_THAT(PageStates(), ElementsAre("3", "3", "2"));
    EXPECT_THAT(Rows("coalesce(CAST(answer AS TEXT), '-') FROM Host_Deliveries ORDER BY place"),
                ElementsAre("-", "4"));
    EXPECT_EQ(3U, faults.size());
}

TEST_F(ABacklog, MendsStatesBesideOneThatIsTooLarge) {
    Add(7, "4", 2);
    Add(8, "4", 2);
    WriteAsAnother(database,
                   "UPDATE AlarmLog SET alarmnote = hex(zeroblob(600000)) WHERE alarmlogID = '7'");
    EXPECT_EQ(1, MendAlarmStates(connection));
    EXPECT_EQ("2", StateOf("8"));
    EXPECT_EQ(1U, faults.size());
}
#endif

// As another program, or an older make, has written it.
TEST_F(ABacklog, MendsTheTextsByWhichTheLibraryFindsItsRows) {
    AddAlarm("7", "2");
    WriteEvent(7, "du\nty", 2, 0, "o\tps");
    WriteEvent(7, "done\n", 4);
    MendTexts(connection);
    EXPECT_THAT(Rows("AlmGroup || '|' || PagerDescr FROM AlarmFwd_PagerEvents ORDER BY row_id"),
                ElementsAre("o ps|du ty", "ops|done\n"));
    EXPECT_THAT(Rows("alarm_group || '|' || pager FROM Host_History ORDER BY row_id"),
                ElementsAre("o ps|du ty", "ops|done\n"));
}

}  // namespace
}  // namespace host
