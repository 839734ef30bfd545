// What the tables tell of lines: how busy they are, what they have sent, where they work.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "host/lines/line_folder.h"
#include "host/lines/site_lines.h"
#include "host/node/line_loads.h"
#include "host/node/new_sends.h"
#include "host/store/database_name.h"
#include "tests/unit/host/files.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::HasSubstr;

class Loads : public ServiceTest {
 protected:
    void AddEvent(const std::string& alarm, const std::string& line) {
        Execute(
            "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState, line)"
            " VALUES ('" +
            alarm + "', 'ops', 'duty', '2', '" + line + "')");
    }
    void AddSend(const std::string& alarm, const std::string& line) {
        Send send;
        send.alarm = alarm;
        send.pager = "duty";
        send.port = line;
        send.outcome = TracedPage::Outcome::kNotSent;
        RecordSend(connection, send);
    }

    LineLoads loads;
};

TEST_F(Loads, CountWhatIsToBeHandedOverAndWhatTheLibraryHas) {
    AddDelivery("7", 0, "duty");
    AddDelivery("7", 1, "night");
    Execute("UPDATE Host_Deliveries SET line = 'north' WHERE place = 0");
    AddEvent("8", "north");
    AddEvent("9", "north");
    AddSend("9", "north");
    AddEvent("10", "south");
    AddSend("10", "north");  // the page has moved since
    loads.Read(connection);
    EXPECT_EQ(2, loads.Of("north").ahead);
    EXPECT_EQ(3, loads.Of("north").pending);
    EXPECT_EQ(1, loads.Of("south").ahead);
    EXPECT_EQ(0, loads.Of("west").ahead);
}

TEST_F(Loads, GoBeforeTheOrderInWhichLinesWereGivenPages) {
    loads.Give("north");
    loads.Give("south");
    EXPECT_EQ(1, loads.Of("north").ahead);
    EXPECT_EQ(1, loads.Of("north").pending);
    EXPECT_TRUE(IsLessBusy(loads.Of("west"), loads.Of("north")));
    EXPECT_TRUE(IsLessBusy(loads.Of("north"), loads.Of("south")));
    loads.Read(connection);  // both have ended
    loads.Give("north");
    EXPECT_TRUE(IsLessBusy(loads.Of("south"), loads.Of("north")));
}

class Sendings : public Loads {};

TEST_F(Sendings, AreNewOnce) {
    AddSend("7", "north");
    NewSends sends(connection);
    EXPECT_TRUE(sends.Take().empty());
    AddSend("8", "north");
    AddSend("9", "south");
    const std::vector<Send> taken = sends.Take();
    ASSERT_EQ(2U, taken.size());
    EXPECT_EQ("8", taken[0].alarm);
    EXPECT_EQ("south", taken[1].port);
    EXPECT_TRUE(sends.Take().empty());
    Tell(log, taken[0], Encoding::kLatin1);
    EXPECT_THAT(said.str(), HasSubstr("page of alarm 8 to \"duty\": not sent (0 s, north): "));
}

TEST_F(Sendings, AreToldWithWhatTheyCameTo) {
    Send send;
    send.alarm = "8";
    send.pager = "duty";
    send.port = "north";
    send.seconds = 24;
    send.outcome = TracedPage::Outcome::kDialled;
    Tell(log, send, Encoding::kLatin1);
    EXPECT_THAT(said.str(), HasSubstr("page of alarm 8 to \"duty\": dialled (24 s, north); the "
                                      "call is the page, and nothing confirms it\n"));
}

class LinesOfTheSite : public ServiceTest {
 protected:
    // The folder of all.
    std::string AllLines() const {
        return std::filesystem::weakly_canonical(BesideName(database)).string() + "-lines";
    }
};

TEST_F(LinesOfTheSite, KnowTheirDeviceAndWhomTheyCanDialFor) {
    Execute(
        "INSERT INTO AlarmFwd_COMProperties (Description, device, \"Select\", PagerDial)"
        " VALUES ('COM 2', '', '1', 'ATDT'), ('north', '/dev/modem', '1', '')");
    Execute("UPDATE AlarmFwd_COMProperties SET SMS2Dial = 'ATDT5' WHERE Description = 'north'");
    const std::vector<SiteLine> lines = SiteLines(connection);
    ASSERT_EQ(2U, lines.size());
    EXPECT_EQ("/dev/ttyS1", lines[0].device);
    EXPECT_TRUE(lines[0].CanDialFor("1"));
    EXPECT_TRUE(lines[0].CanDialFor("3"));
    EXPECT_FALSE(lines[0].CanDialFor("4"));
    EXPECT_EQ("/dev/modem", lines[1].device);
    EXPECT_FALSE(lines[1].CanDialFor("4"));
    EXPECT_TRUE(lines[1].CanDialFor("5"));
    Execute("UPDATE AlarmFwd_COMProperties SET \"Select\" = '0' WHERE Description = 'north'");
    EXPECT_FALSE(FindSiteLine(connection, "north")->CanDialFor("5"));
    EXPECT_NE(lines[1].settings, FindSiteLine(connection, "north")->settings);
    EXPECT_FALSE(FindSiteLine(connection, "south"));
}

TEST_F(LinesOfTheSite, HaveOtherSettingsWhereALineFeedMovesToTheNextCell) {
    Execute(
        "INSERT INTO AlarmFwd_COMProperties (Description, Init, Reset)"
        " VALUES ('north', 'ATZ\n', 'ATH')");
    const std::string before = FindSiteLine(connection, "north")->settings;
    Execute("UPDATE AlarmFwd_COMProperties SET Init = 'ATZ', Reset = '\nATH'");
    EXPECT_NE(before, FindSiteLine(connection, "north")->settings);
}

TEST_F(LinesOfTheSite, HaveAFolderEachThatNoNameLeadsOutOf) {
    const std::string all = AllLines() + "/";
    EXPECT_EQ(all + "COM%201", LineFolder(database, "COM 1"));
    EXPECT_EQ(all + "%2E.%2Fx", LineFolder(database, "../x"));
    EXPECT_EQ(all + "%25", LineFolder(database, "%"));
    EXPECT_EQ(all + "%", LineFolder(database, ""));
    chmod(BesideOwner(database).c_str(), 0640);
    const std::string made = MakeLineFolder(database, "north");
    EXPECT_EQ(made, MakeLineFolder(database, "north"));
    struct stat status {};
    ASSERT_EQ(0, stat(made.c_str(), &status));
    EXPECT_EQ(0750U, status.st_mode & 0777U);
}

TEST_F(LinesOfTheSite, HaveNoFolderThatAStrangerMayHaveMade) {
    const auto why_not = [this]() -> std::string {
        try {
            MakeLineFolder(database, "north");
        } catch (const StoreError& error) {
            return error.what();
        }
        return "made";
    };
    const std::string all = AllLines();
    WriteFile(all, "");
    EXPECT_THAT(why_not(), HasSubstr("-lines: the folder can't be used: it is a link, or no "
                                     "folder"));
    std::filesystem::remove(all);
    std::filesystem::create_directory("elsewhere");
    std::filesystem::create_directory_symlink("elsewhere", all);
    EXPECT_THAT(why_not(), HasSubstr("it is a link, or no folder"));
    EXPECT_TRUE(std::filesystem::is_empty("elsewhere"));
    std::filesystem::remove(all);
    std::filesystem::create_directory(all);
    chmod(all.c_str(), 0777);
    EXPECT_THAT(why_not(), HasSubstr("others may write to it"));
    chmod(all.c_str(), 0700);
    EXPECT_EQ("made", why_not());
}

}  // namespace
}  // namespace host
