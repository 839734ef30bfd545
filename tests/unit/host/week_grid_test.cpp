// The week as a grid, and its hours in the tables.
#include "host/site/week_grid.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "host/store/tables/time_models.h"
#include "tests/unit/host/host_test.h"

namespace host {
namespace {

constexpr const char* kOffice =
    "#     0        8        16\n"
    "mon   ........ xxxxxxxx xx......\n"
    "tue   ........ xxxxxxxx xx......\n"
    "wed   ........ xxxxxxxx xx......\n"
    "thu   ........ xxxxxxxx xx......\n"
    "fri   ........ xxxxxxxx xx......\n"
    "sat   ........ .xxx..xx ........\n"
    "sun   ........ ........ ........\n";

Week Office() {
    Week week;
    SetHours(week, "mon-fri 8-18");
    SetHours(week, "sat 9-12,14-16");
    return week;
}

std::string WhyNot(const std::string& grid) {
    try {
        ParseGrid(grid);
        return "a week";
    } catch (const NoHours& reason) {
        return reason.what();
    }
}

std::string With(std::string grid, const std::string& from, const std::string& to) {
    return grid.replace(grid.find(from), from.size(), to);
}

TEST(WeekGrid, ShowsTheWeek) {
    EXPECT_EQ(kOffice, WriteGrid(Office()));
    EXPECT_EQ(Office(), ParseGrid(kOffice));
}

TEST(WeekGrid, IsReadAsItWasWritten) {
    std::mt19937 random(4);
    for (int round = 0; round < 500; ++round) {
        Week week;
        for (size_t hour = 0; hour < week.size(); ++hour) {
            week.set(hour, random() % 2 == 0);
        }
        ASSERT_EQ(week, ParseGrid(WriteGrid(week)));
    }
}

TEST(WeekGrid, TakesWhatAnEditorMakesOfIt) {
    EXPECT_EQ(Office(), ParseGrid(With(kOffice, "mon ", "  MON\t")));
    EXPECT_EQ(Office(), ParseGrid(With(kOffice, "xx......\nfri", "XX......  # late\r\n\nFri")));
    const std::string grid = kOffice;
    EXPECT_EQ(Office(), ParseGrid(grid.substr(0, grid.size() - 1)));
}

TEST(WeekGrid, SaysWhatIsWrongWithIt) {
    EXPECT_EQ("there is no line for mon", WhyNot(""));
    EXPECT_EQ("there is no line for sun", WhyNot(With(kOffice, "sun", "#")));
    EXPECT_EQ("line 3: mon is there already", WhyNot(With(kOffice, "tue", "mon")));
    EXPECT_EQ("line 3: there is no day \"dienstag\"", WhyNot(With(kOffice, "tue", "Dienstag")));
    EXPECT_EQ("line 3: a line is for one day", WhyNot(With(kOffice, "tue", "tue-wed")));
    EXPECT_EQ("line 2: mon: there are 23 hours, and a day has 24",
              WhyNot(With(kOffice, "mon   .", "mon   ")));
    EXPECT_EQ("line 2: mon: there are 25 hours, and a day has 24",
              WhyNot(With(kOffice, "mon   .", "mon   xx")));
    EXPECT_EQ("line 2: mon: \"1\" is neither x (a page may leave) nor a dot",
              WhyNot(With(kOffice, "mon   .", "mon   1")));
}

TEST(SetHours, LeaveTheOtherDays) {
    Week week = Office();
    SetHours(week, "Mon-Fri 08-17");
    EXPECT_TRUE(week.test(16));
    EXPECT_FALSE(week.test(17));
    EXPECT_TRUE(week.test(5 * 24 + 9));
    SetHours(week, "  Sat,SUN   24H ");
    EXPECT_TRUE(week.test(6 * 24));
    SetHours(week, "mon-sun none");
    EXPECT_TRUE(week.none());
}

TEST(SetHours, SayWhatIsWrongWithThem) {
    Week week;
    for (const char* text :
         {"", "mon", "8-17", "mon-fri 17-8", "mon 8:30-9", "xmas 8-9", "mon 25", "mon,tues 8-9"}) {
        EXPECT_THROW(SetHours(week, text), NoHours) << text;
    }
}

class StoredHours : public HostTest {};

TEST_F(StoredHours, AreAddedAndChanged) {
    Lease lease(database);
    EXPECT_EQ(std::nullopt, FindWeek(lease.Database(), "office"));
    StoreWeek(lease.Database(), "office", Office());
    StoreWeek(lease.Database(), "never", Week());
    EXPECT_EQ(Office(), FindWeek(lease.Database(), "office"));
    StoreWeek(lease.Database(), "office", Week().set());
    EXPECT_EQ(Week().set(), FindWeek(lease.Database(), "office"));
    EXPECT_EQ(Week(), FindWeek(lease.Database(), "never"));
    EXPECT_EQ(2U, ReadWeeks(lease.Database()).size());
}

TEST_F(StoredHours, OfANameThatIsThereTwiceAreTheFirst) {
    Lease lease(database);
    StoreWeek(lease.Database(), "office", Office());
    lease.Database().Execute("INSERT INTO AlarmFwd_TMSetting (description) VALUES ('office')");
    StoreWeek(lease.Database(), "office", Week().set());
    EXPECT_EQ(Week().set(), ReadWeeks(lease.Database())[0].week);
    EXPECT_EQ(Week(), ReadWeeks(lease.Database())[1].week);
}

}  // namespace
}  // namespace host
