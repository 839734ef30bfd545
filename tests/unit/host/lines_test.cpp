// The lines of a site.
#include "host/store/tables/lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/lines/pausing.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;

class Lines : public ServiceTest {
 protected:
    Lines() {
        Execute(
            "INSERT INTO AlarmFwd_COMProperties (Description, device)"
            " VALUES ('south', '/dev/ttyUSB0'), ('COM 1', ''), ('south', '/dev/null')");
    }
    LineState South() { return FindLine(connection, "south").value_or(LineState()); }
};

TEST_F(Lines, AreThePortsOfTheSite) {
    std::vector<std::string> names;
    for (const LineState& line : ReadLines(connection)) {
        names.push_back(line.line + " at " + line.device);
    }
    EXPECT_THAT(names, ElementsAre("south at /dev/ttyUSB0", "COM 1 at "));
    EXPECT_FALSE(FindLine(connection, "north"));
}

TEST_F(Lines, AreOfUnknownHealthUntilSomebodyLooks) {
    EXPECT_EQ(Health::kUnknown, South().health);
    EXPECT_EQ(0, South().since);
    EXPECT_EQ("", South().doing);
    EXPECT_FALSE(South().paused);
}

TEST_F(Lines, HaveAHealthAndItsReason) {
    SetHealth(connection, "south", Health::kSick, "the modem is silent", kNow);
    EXPECT_EQ(Health::kSick, South().health);
    EXPECT_EQ("the modem is silent", South().reason);
    EXPECT_EQ(kNow, South().since);
    SetHealth(connection, "south", Health::kWell, "", kNow + 60);
    EXPECT_EQ(Health::kWell, South().health);
    EXPECT_EQ("", South().reason);
    EXPECT_EQ(Health::kUnknown, FindLine(connection, "COM 1")->health);
}

TEST_F(Lines, KeepWhatOthersHaveWritten) {
    EXPECT_TRUE(PauseLine(connection, "south", true, {"maria", kNow}));
    SetProcess(connection, "south", 4711);
    SetDoing(connection, "south", "page of alarm 7", kNow);
    SetHealth(connection, "south", Health::kWell, "", kNow + 1);
    EXPECT_TRUE(South().paused);
    EXPECT_EQ(4711, South().process);
    EXPECT_EQ("page of alarm 7", South().doing);
    EXPECT_EQ(kNow, South().doing_since);
    EXPECT_TRUE(PauseLine(connection, "south", false, {"maria", kNow + 2}));
    EXPECT_FALSE(South().paused);
}

TEST_F(Lines, ArePausedBySomebody) {
    EXPECT_TRUE(PauseLine(connection, "south", true, {"maria", kNow}));
    EXPECT_FALSE(PauseLine(connection, "south", true, {"anna", kNow})) << "it is already";
    EXPECT_FALSE(PauseLine(connection, "west", true, {"anna", kNow})) << "there is none";
    EXPECT_TRUE(PauseLine(connection, "south", false, {"anna", kNow + 60}));
    EXPECT_EQ((std::vector<std::string>{"maria|line paused|south", "anna|line resumed|south"}),
              Rows("who || '|' || what || '|' || note FROM Host_Trail ORDER BY row_id"));
}

TEST_F(Lines, DoNothingWithoutAProcess) {
    SetProcess(connection, "south", 4711);
    SetDoing(connection, "south", "page of alarm 7", kNow);
    SetProcess(connection, "south", 0);
    EXPECT_EQ("", South().doing);
}

TEST_F(Lines, ThatComeBackToTheSiteAreInService) {
    SetPaused(connection, "south", true);
    SetPaused(connection, "north", true);  // no port of the site any more
    {
        WriteTransaction transaction(connection);
        ForgetPausesOfFormerLines(connection);
        transaction.Commit();
    }
    EXPECT_TRUE(South().paused);
    Execute("INSERT INTO AlarmFwd_COMProperties (Description) VALUES ('north')");
    EXPECT_FALSE(FindLine(connection, "north")->paused);
}

}  // namespace
}  // namespace host
