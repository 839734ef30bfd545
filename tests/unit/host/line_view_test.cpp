// What two lines see of one database.
#include "host/store/line_view.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/store/tables/events.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* kNotPending = "WHERE AlarmFwd_PagerEvents.PagerState <> 2";
constexpr const char* kAlarmSeven = "WHERE AlarmFwd_PagerEvents.AlmLogID  = 7";

class TwoLines : public ServiceTest {
 protected:
    TwoLines() {
        Execute(
            "INSERT INTO AlarmFwd_COMProperties (Description, Baud)"
            " VALUES ('COM 1', '300'), ('north', '9600'), ('south', '2400');"
            "INSERT INTO AlarmFwd_PagerSetting (description, comport)"
            " VALUES ('any', ''), ('anna', 'north'), ('bert', 'south'), ('carl', 'COM 1')");
    }
    ~TwoLines() override { SetLineView({}); }

    // What follows is done by the library of this line.
    static void As(const char* line) { SetLineView(LineView{line}); }

    OpenTable Events() const { return {database, kEvents}; }
    OpenTable Ports() const { return {database, kPorts}; }
    OpenTable Pagers() const { return {database, kPagers}; }

    std::vector<std::string> Pending() const {
        return Events().Read("PagerDescr", "PagerState", "2");
    }
    std::vector<std::string> OfAlarm(const char* alarm) const {
        return Events().Read("PagerDescr", "AlmLogID", alarm);
    }
    std::vector<std::string> Owners() {
        return Rows("PagerDescr || ' ' || line FROM AlarmFwd_PagerEvents ORDER BY row_id");
    }
    static std::string Key(const char* pager) {
        return std::string("WHERE AlmGroup = \"ops\" AND AlmLogID = 7 AND PagerDescr = \"") +
               pager + "\"";
    }
};

TEST_F(TwoLines, HavePagesWhereTheLibraryStillOwesSome) {
    Execute(
        "INSERT INTO AlarmLog (alarmlogID, pagerstate) VALUES ('7', '2'), ('8', '2');"
        "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, PagerDescr, PagerState, line)"
        " VALUES ('7', 'any', '2', 'north'), ('8', 'anna', '2', 'north'),"
        " ('7', 'bert', '4', 'south')");
    EXPECT_TRUE(HasPagesOf(connection, "north"));
    EXPECT_FALSE(HasPagesOf(connection, "south")) << "it has ended";
    Execute("UPDATE AlarmLog SET pagerstate = '1' WHERE alarmlogID = '7'");
    EXPECT_TRUE(HasPagesOf(connection, "north"));
    Execute("DELETE FROM AlarmFwd_PagerSetting WHERE description = 'anna'");
    EXPECT_FALSE(HasPagesOf(connection, "north"));
}

// --- Ports and pagers.

TEST_F(TwoLines, SeeTheirOwnPortAloneAsTheFirst) {
    As("north");
    EXPECT_THAT(Ports().Read("Baud", "Description", "COM 1"), ElementsAre("9600"));
    EXPECT_THAT(Ports().Read("Description", "Description", "COM 1"), ElementsAre("COM 1"));
    EXPECT_THAT(Ports().Read("Baud", "Description", "COM 2"), IsEmpty());
    EXPECT_THAT(Ports().Read("Baud", "Description", "north"), IsEmpty());
    EXPECT_THAT(Ports().ReadAll("Baud"), ElementsAre("9600"));
    As("south");
    EXPECT_THAT(Ports().Read("Baud", "Description", "COM 1"), ElementsAre("2400"));
    EXPECT_THAT(Ports().Read("Baud", "Baud", "9600"), IsEmpty());
}

TEST_F(TwoLines, SeePagersBoundToTheirPortOrToNone) {
    As("north");
    EXPECT_THAT(Pagers().ReadAll("comport"), ElementsAre("", "COM 1", "", ""));
    EXPECT_THAT(Pagers().Read("comport", "description", "anna"), ElementsAre("COM 1"));
    EXPECT_EQ("COM 1", PortInView("north"));
    EXPECT_EQ("", PortInView("COM 1"));
    As("COM 1");
    EXPECT_THAT(Pagers().ReadAll("comport"), ElementsAre("", "", "", "COM 1"));
}

TEST_F(TwoLines, AreNotThereWithoutAView) {
    EXPECT_THAT(Ports().ReadAll("Description"), ElementsAre("COM 1", "north", "south"));
    EXPECT_THAT(Pagers().ReadAll("comport"), ElementsAre("", "north", "south", "COM 1"));
    EXPECT_EQ("south", PortInView("south"));
}

// --- Pages.

TEST_F(TwoLines, OwnThePagesThatTheyMake) {
    As("north");
    WriteEvent(7, "anna", 2);
    As("south");
    WriteEvent(7, "bert", 2);
    EXPECT_THAT(Owners(), ElementsAre("anna north", "bert south"));
    EXPECT_THAT(Rows("pager || ' ' || line FROM Host_History ORDER BY row_id"),
                ElementsAre("anna north", "bert south"));
}

TEST_F(TwoLines, SeePendingPagesOfTheirOwn) {
    As("north");
    WriteEvent(7, "anna", 2);
    As("south");
    EXPECT_THAT(Pending(), IsEmpty());
    WriteEvent(7, "bert", 2);
    EXPECT_THAT(Pending(), ElementsAre("bert"));
    SetLineView({});
    EXPECT_THAT(Pending(), ElementsAre("anna", "bert"));
}

TEST_F(TwoLines, SeeAllPagesOfAnAlarm) {
    As("north");
    WriteEvent(7, "anna", 2);
    As("south");
    EXPECT_THAT(OfAlarm("7"), ElementsAre("anna"));
}

TEST_F(TwoLines, ChangeAndDeleteOnlyTheirOwn) {
    As("north");
    WriteEvent(7, "anna", 2);
    WriteEvent(7, "over", 4);
    As("south");
    EXPECT_EQ(0, Events().Set(Key("anna"), {{"PagerState", 3}}));
    EXPECT_EQ(0, Events().Delete(Key("anna")));
    EXPECT_EQ(0, Events().Delete(kNotPending));
    As("north");
    EXPECT_EQ(1, Events().Delete(kNotPending));
    EXPECT_EQ(1, Events().Set(Key("anna"), {{"PagerState", 3}}));
    EXPECT_EQ(1, Events().Delete(Key("anna")));
    EXPECT_THAT(Owners(), IsEmpty());
}

TEST_F(TwoLines, DropAllPagesOfAnAcknowledgedAlarm) {
    As("north");
    WriteEvent(7, "anna", 2);
    WriteEvent(8, "anna", 2);
    As("south");
    WriteEvent(7, "bert", 2);
    EXPECT_EQ(2, Events().Delete(kAlarmSeven));
    EXPECT_THAT(Owners(), ElementsAre("anna north"));
}

TEST_F(TwoLines, RewriteTheirOwn) {
    As("north");
    WriteEvent(7, "anna", 2);
    RewriteEvent(7, "anna", 2, 1);
    RewriteEvent(7, "anna", 4, 1);
    EXPECT_THAT(Owners(), ElementsAre("anna north"));
    EXPECT_THAT(Rows("DISTINCT line FROM Host_History"), ElementsAre("north"));
}

// A page that has gone to another line meanwhile stays there.
TEST_F(TwoLines, TakeOverNoPageThatAnotherIsOwed) {
    As("north");
    WriteEvent(7, "any", 2);
    As("south");
    EXPECT_NE(0, Events().Insert({{"AlmLogID", 7},
                                  {"AlmGroup", "ops"},
                                  {"PagerDescr", "any"},
                                  {"PagerState", 2},
                                  {"PagerRetries", 1}}));
    EXPECT_THAT(faults, ElementsAre(HasSubstr("belongs to another line by now")));
    EXPECT_THAT(Owners(), ElementsAre("any north"));
    faults.clear();
    As("north");
    RewriteEvent(7, "any", 3, 6);  // ended: the alarm may be raised anew under its number
    As("south");
    WriteEvent(7, "any", 2);
    EXPECT_THAT(faults, IsEmpty());
}

TEST_F(TwoLines, GetTheirOwnHiddenPageBack) {
    As("north");
    WriteEvent(7, "duty", 2);
    Execute("UPDATE AlarmFwd_PagerEvents SET hidden_by = 1");  // no process has this number
    As("south");
    EXPECT_THAT(Pending(), IsEmpty());
    As("north");
    EXPECT_THAT(Pending(), ElementsAre("duty"));
    EXPECT_THAT(Rows("change || ' ' || line FROM Host_History ORDER BY row_id"),
                ElementsAre("written north", "brought back north"));
}

TEST_F(TwoLines, CanBeShownNoPages) {
    As("north");
    WriteEvent(7, "anna", 2);
    WriteEvent(7, "over", 4);
    SetLineView(LineView{"north", false});
    EXPECT_THAT(Pending(), IsEmpty());
    EXPECT_EQ(0, Events().Delete(kNotPending));
    EXPECT_EQ(0, Events().Delete(Key("anna")));
    EXPECT_THAT(Ports().ReadAll("Baud"), ElementsAre("9600"));
}

// --- The alarm of several pages.

TEST_F(TwoLines, LeaveAnAlarmBeingPagedWhileAnotherRewritesItsPage) {
    AddAlarm("7", "2");
    As("north");
    WriteEvent(7, "anna", 2);
    ASSERT_EQ(1, DeleteEvent(7, "anna"));  // hidden, until it is written again
    As("south");
    WriteEvent(7, "bert", 4);
    EXPECT_EQ(1, Fold(7, 4));
    EXPECT_EQ("2", StateOf("7"));
    As("north");
    WriteEvent(7, "anna", 3);
    EXPECT_EQ(1, Fold(7, 3));
    EXPECT_EQ("3", StateOf("7"));
}

TEST_F(TwoLines, LeaveAnAlarmBeingPagedWhileAPageIsOnItsWay) {
    AddAlarm("7", "2");
    AddDelivery("7", 0, "anna");
    AddDelivery("7", 1, "bert", "1");
    As("south");
    WriteEvent(7, "bert", 4);
    Fold(7, 4);
    EXPECT_EQ("2", StateOf("7"));
    Execute("UPDATE Host_Deliveries SET answer = 1");
    Fold(7, 4);
    EXPECT_EQ("4", StateOf("7"));
}

TEST_F(TwoLines, LeaveAnAcknowledgedAlarmAcknowledged) {
    AddAlarm("7", "2");
    As("north");
    WriteEvent(7, "anna", 2);
    AcknowledgeAlarm(connection, 7, kNow);
    Fold(7, 4);
    EXPECT_EQ("1", StateOf("7"));
}

}  // namespace
}  // namespace host
