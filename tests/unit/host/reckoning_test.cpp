// What isn't as it should be in the tables: one planted fault each, in a site that has none.
#include "host/node/reckoning.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/node/reckoned_site.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Reckoning : public ServiceTest {
 protected:
    Reckoning() {
        for (const char* line : {"north", "south"}) {
            Execute(std::string("INSERT INTO AlarmFwd_COMProperties (Description, \"Select\","
                                " SMS1Dial) VALUES ('") +
                    line + "', '1', 'ATDT1')");
            Execute(std::string("INSERT INTO Host_Lines (line, health, pid, doing) VALUES ('") +
                    line + "', 'healthy', 7, 'page')");
        }
        Execute(
            "INSERT INTO AlarmFwd_PagerSetting (description, comport, pgtype, retrydelay)"
            " VALUES ('duty', '', '4', '45'), ('bound', 'north', '4', '45')");
    }

    // "alarm|pager|what" of each.
    std::vector<std::string> Amisses(std::time_t later = 0) {
        std::vector<std::string> found;
        for (const Amiss& amiss : Reckon(connection, Encoding::kLatin1, kNow + later)) {
            found.push_back(amiss.alarm + "|" + amiss.pager + "|" + amiss.what);
        }
        return found;
    }

    // A page that is owed; given to no line yet, if the line is empty.
    void Owe(const std::string& pager, const std::string& line = "") {
        Execute(
            "INSERT INTO Host_Deliveries (alarm, place, alarm_group, pager, since, line)"
            " VALUES ('1', (SELECT count(*) FROM Host_Deliveries), 'ops', '" +
            pager + "', 0, '" + line + "')");
    }
    // A page that a line has; queued now.
    void Give(const std::string& pager, const std::string& line, const std::string& alarm = "1") {
        Execute(
            "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState,"
            " PagerRetries, line) VALUES ('" +
            alarm + "', 'ops', '" + pager + "', '2', '0', '" + line + "')");
        NoteChange(pager, 0, alarm);
    }
    void NoteChange(const std::string& pager, int later, const std::string& alarm = "1") {
        Execute(
            "INSERT INTO Host_History (at, change, alarm, alarm_group, pager, state, tries)"
            " VALUES (" +
            std::to_string(kNow + later) + ", 'changed', '" + alarm + "', 'ops', '" + pager +
            "', '2', '0')");
    }
    void NoteSending(const std::string& line, int later, const std::string& pager = "other") {
        Execute(
            "INSERT INTO Host_Sends (at, seconds, alarm, pager, port, outcome, result, reason)"
            " VALUES (" +
            std::to_string(kNow + later) + ", 30, '1', '" + pager + "', '" + line +
            "', 'failed', 6, '')");
    }
    void Set(const std::string& line, const std::string& what) {
        Execute("UPDATE Host_Lines SET " + what + " WHERE line = '" + line + "'");
    }
};

TEST_F(Reckoning, KnowsTheLinesThatCanDialForEachTypeOfPager) {
    Execute("UPDATE AlarmFwd_COMProperties SET PagerDial = 'ATDT' WHERE Description = 'south'");
    const std::pair<const char*, size_t> types[] = {{"0", 1}, {"1", 1}, {"2", 1},
                                                    {"3", 1}, {"4", 2}, {"5", 0}};
    for (const auto& [type, lines] : types) {
        Execute(std::string("UPDATE AlarmFwd_PagerSetting SET pgtype = '") + type + "'");
        EXPECT_EQ(lines, ReadReckonedSite(connection).LinesFor("duty").size()) << type;
    }
}

TEST_F(Reckoning, FindsNothingWhereNothingIsPending) {
    EXPECT_THAT(Amisses(), IsEmpty());
    AddAlarm("1", "1");
    AddAlarm("2", "3");
    AddAlarm("3", "4");
    EXPECT_THAT(Amisses(), IsEmpty());
}

TEST_F(Reckoning, FindsAnAlarmThatWasNotTakenUp) {
    AddAlarm("1", "0");
    AddAlarm("2", "");
    EXPECT_THAT(Amisses(), ElementsAre("1||it hasn't been taken up", "2||it hasn't been taken up"));
    Execute("UPDATE AlarmLog SET alarmack = '1'");
    EXPECT_THAT(Amisses(), IsEmpty());
}

TEST_F(Reckoning, FindsAnAlarmThatIsFoldedWrongly) {
    AddAlarm("1", "2");
    EXPECT_THAT(Amisses(),
                ElementsAre("1||it counts as being paged, and no page of it is pending"));
    Give("duty", "north");
    EXPECT_THAT(Amisses(), IsEmpty());
    for (const char* over : {"3", "4"}) {
        Execute(std::string("UPDATE AlarmLog SET pagerstate = '") + over + "'");
        EXPECT_THAT(Amisses(), ElementsAre("1||it counts as over, and a page of it is pending, "
                                           "which would be dropped"));
    }
    Execute("UPDATE AlarmLog SET alarmack = '1', pagerstate = '1'");
    EXPECT_THAT(Amisses(), IsEmpty()) << "acknowledged";
}

TEST_F(Reckoning, FindsAPageThatNoLineHasTaken) {
    AddAlarm("1", "2");
    Owe("duty");
    EXPECT_THAT(Amisses(), ElementsAre("1|duty|no line has taken the page, though \"north\" has "
                                       "nothing else to do"));
    Give("other", "north", "8");
    Give("other", "south", "9");
    EXPECT_THAT(Amisses(), IsEmpty()) << "they have something to do";
    NoteSending("south", 0, "other");
    Execute("UPDATE Host_Sends SET alarm = '9'");
    EXPECT_THAT(Amisses(), ElementsAre("1|duty|no line has taken the page, though \"south\" has "
                                       "nothing else to do"))
        << "what was tried doesn't count";
}

TEST_F(Reckoning, LetsAPageWaitForALineThatCanHaveIt) {
    AddAlarm("1", "2");
    Owe("bound");
    Set("north", "health = 'sick'");
    EXPECT_THAT(Amisses(), IsEmpty()) << "bound to a sick line";
    Set("north", "health = 'healthy', paused = 1");
    EXPECT_THAT(Amisses(), IsEmpty()) << "... to one that is paused";
    Set("north", "paused = 0, pid = 0");
    EXPECT_THAT(Amisses(), IsEmpty()) << "... to one without a process";
    Set("north", "pid = 7");
    EXPECT_EQ(1U, Amisses().size());
    Execute("DELETE FROM Host_Deliveries");
    Owe("duty");
    Execute("UPDATE AlarmFwd_COMProperties SET SMS1Dial = ''");
    EXPECT_THAT(Amisses(), IsEmpty()) << "none can dial for it";
}

TEST_F(Reckoning, FindsALineThatDoesNotTakeWhatItIsGiven) {
    AddAlarm("1", "2");
    Owe("duty", "south");
    Give("other", "north", "8");
    EXPECT_THAT(Amisses(), IsEmpty()) << "it is at work";
    Set("south", "doing = 'idle'");
    EXPECT_THAT(Amisses(), ElementsAre("1|duty|no line has taken the page, though \"south\" has "
                                       "nothing else to do"));
}

TEST_F(Reckoning, FindsAPageThatIsOwedToNobody) {
    AddAlarm("1", "2");
    Owe("nobody");
    EXPECT_THAT(Amisses(),
                ElementsAre("1|nobody|the page is still owed, though the pager can't be paged"));
}

TEST_F(Reckoning, FindsAPageWhoseDueTimeIsLongPast) {
    AddAlarm("1", "2");
    Give("duty", "north");
    EXPECT_THAT(Amisses(15 * 60), IsEmpty());
    EXPECT_THAT(Amisses(16 * 60), ElementsAre("1|duty|\"north\" has sent nothing, though the "
                                              "page has been due for 16 minutes"));
    NoteSending("south", 10 * 60);
    EXPECT_EQ(1U, Amisses(16 * 60).size()) << "another line";
    NoteSending("north", 10 * 60);
    EXPECT_THAT(Amisses(16 * 60), IsEmpty()) << "it is at work";
    NoteSending("north", 55 * 60);
    EXPECT_THAT(Amisses(60 * 60), ElementsAre("1|duty|others went before it, though the page "
                                              "has been due for 60 minutes"));
    for (int more = 0; more < 10; ++more) {
        Give("other", "north", "9");
    }
    EXPECT_THAT(Amisses(60 * 60), IsEmpty()) << "there may be as many before it";
}

TEST_F(Reckoning, LetsAPageWaitForItsNextTry) {
    AddAlarm("1", "2");
    Give("duty", "north");
    NoteSending("north", 60, "duty");
    NoteChange("duty", 60);
    EXPECT_THAT(Amisses((1 + 45 + 15) * 60), IsEmpty());
    EXPECT_EQ(1U, Amisses((1 + 45 + 16) * 60).size());
    Execute("UPDATE AlarmFwd_PagerSetting SET retrydelay = '0'");
    EXPECT_THAT(Amisses((1 + 5 + 15) * 60), IsEmpty()) << "the first failure's pause";
    EXPECT_EQ(1U, Amisses((1 + 5 + 16) * 60).size());
    Execute("DELETE FROM AlarmFwd_PagerSetting WHERE description = 'duty'");
    EXPECT_THAT(Amisses((1 + 45 + 15) * 60), IsEmpty()) << "the library has its own pause";
    EXPECT_EQ(1U, Amisses((1 + 45 + 15) * 60 + 1).size());
}

TEST_F(Reckoning, FindsAPageThatStaysWithALineThatCanNotHaveIt) {
    AddAlarm("1", "2");
    Give("duty", "north");
    Set("north", "health = 'sick'");
    EXPECT_THAT(Amisses(), ElementsAre("1|duty|the page waits for \"north\", which is sick, though "
                                       "another line could have it"));
    Set("south", "health = 'sick'");
    EXPECT_THAT(Amisses(), IsEmpty());
    Set("south", "health = 'healthy'");
    Execute("UPDATE AlarmFwd_PagerEvents SET line = ''");
    EXPECT_THAT(Amisses(), ElementsAre("1|duty|the page belongs to no line of the site"));
}

TEST_F(Reckoning, LetsBoundAndMovedPagesStay) {
    AddAlarm("1", "2");
    Give("bound", "north");
    Set("north", "health = 'sick'");
    EXPECT_THAT(Amisses(24 * 3600), IsEmpty());
    Execute("UPDATE AlarmFwd_PagerEvents SET PagerDescr = 'duty'");
    EXPECT_EQ(1U, Amisses().size());
    Owe("duty");
    Execute("UPDATE Host_Deliveries SET answer = 1, tries = 1");
    EXPECT_THAT(Amisses(), IsEmpty());
}

}  // namespace
}  // namespace host
