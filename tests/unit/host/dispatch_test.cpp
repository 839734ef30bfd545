// Which line gets which page, by two nodes that share a database. Their lines' processes are this
// program, which only waits then.
#include "host/node/dispatch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "host/store/tables/lines.h"
#include "host/store/tables/nodes.h"
#include "tests/unit/host/another_program.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;

constexpr const char* kWaitsForPages = "a line that waits for pages";

// Before anything else of the program.
const bool waits_for_pages = [] {
    while (std::string_view(program_invocation_name) == kWaitsForPages) {
        pause();
    }
    return false;
}();

// What a node does when it looks at its lines, and then deals pages out.
struct DealingNode {
    DealingNode(Connection& site, const std::string& name, OperatorLog& log)
        : connection(site), lines(Encoding::kLatin1, log), dispatch(lines, Encoding::kLatin1, log) {
        lines.ServeWith({{kWaitsForPages}, site.Path(), {}, {}});
        lines.ServeFor(name);
        lines.Read(connection);
        lines.Look(connection, time(nullptr));
    }
    void Deal(time_t now) {
        lines.Look(connection, now);
        dispatch.Run(connection, {false, false}, now);
    }

    Connection& connection;
    ServedLines lines;
    Dispatch dispatch;
};

class TwoNodesThatDeal : public ServiceTest {
 protected:
    TwoNodesThatDeal() {
        setenv("PAGERFWD_STATE", ".", 1);
        WriteTransaction transaction(connection);
        StoreNodes(connection, {"north", "south"});
        transaction.Commit();
        AddLine("N", "north");
        AddLine("S", "south");
        AddPager("duty");
        Execute("UPDATE AlarmFwd_PagerSetting SET pgtype = '4'");
        north.emplace(connection, "north", log);
        south.emplace(connection, "south", log);
    }

    void AddLine(const std::string& name, const std::string& node) {
        Execute(
            "INSERT INTO AlarmFwd_COMProperties (Description, node, device, \"Select\", SMS1Dial)"
            " VALUES ('" +
            name + "', '" + node + "', '/dev/null', '10', 'ATDT')");
    }
    void Owe(const std::string& alarm, int severity = 1, const std::string& pager = "duty") {
        AddAlarm(alarm, "2");
        Execute("UPDATE AlarmLog SET severity = '" + std::to_string(severity) +
                "' WHERE alarmlogID = '" + alarm + "'");
        AddDelivery(alarm, 0, pager);
    }
    // Who has which page.
    std::vector<std::string> Pages() {
        return Rows(
            "alarm || ' ' || line FROM Host_Deliveries"
            " ORDER BY CAST(alarm AS INTEGER)");
    }

    std::optional<DealingNode> north;
    std::optional<DealingNode> south;
};

TEST_F(TwoNodesThatDeal, HaveAPageEachOnTheirLinesBeforeOneHasTwo) {
    Owe("1");
    Owe("2");
    north->Deal(kNow);
    EXPECT_THAT(Pages(), ElementsAre("1 N", "2 ")) << said.str();
    EXPECT_TRUE(north->dispatch.IsWaiting());
    south->Deal(kNow);
    EXPECT_THAT(Pages(), ElementsAre("1 N", "2 S"));
    north->Deal(kNow + 1);
    EXPECT_FALSE(north->dispatch.IsWaiting());
}

TEST_F(TwoNodesThatDeal, HaveANextPageEachWhereNoLineStandsIdle) {
    for (const char* alarm : {"1", "2", "3", "4", "5"}) {
        Owe(alarm);
    }
    north->Deal(kNow);
    south->Deal(kNow);
    north->Deal(kNow + 1);
    south->Deal(kNow + 1);
    EXPECT_THAT(Pages(), ElementsAre("1 N", "2 S", "3 S", "4 N", "5 "));
}

TEST_F(TwoNodesThatDeal, DontWaitLongForEachOther) {
    Owe("1");
    Owe("2");
    north->Deal(kNow);
    north->Deal(kNow + Dispatch::kLeftFor - 1);
    EXPECT_THAT(Pages(), ElementsAre("1 N", "2 "));
    north->Deal(kNow + Dispatch::kLeftFor);
    EXPECT_THAT(Pages(), ElementsAre("1 N", "2 N"));
    EXPECT_FALSE(north->dispatch.IsWaiting());
}

TEST_F(TwoNodesThatDeal, DontWaitLongerWhereAClockIsSetBack) {
    Owe("1");
    Owe("2");
    north->Deal(kNow);
    north->dispatch.Run(connection, {false, false}, kNow - 3600);
    EXPECT_THAT(Pages(), ElementsAre("1 N", "2 N"));
}

TEST_F(TwoNodesThatDeal, LeaveNothingToALineThatCannotHaveIt) {
    Owe("1");
    Owe("2");
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"UPDATE Host_Lines SET health = 'sick'", "UPDATE Host_Lines SET health = 'well'"},
        {"UPDATE Host_Lines SET paused = 1", "UPDATE Host_Lines SET paused = 0"},
        {"UPDATE Host_Lines SET pid = 0", "UPDATE Host_Lines SET pid = 1"},
        {"UPDATE AlarmFwd_COMProperties SET SMS1Dial = ''",
         "UPDATE AlarmFwd_COMProperties SET SMS1Dial = 'ATDT'"},
        {"UPDATE AlarmFwd_PagerSetting SET node = 'north'",
         "UPDATE AlarmFwd_PagerSetting SET node = ''"}};
    for (const auto& [change, back] : cases) {
        const bool is_line = change.find("Host_Lines") != std::string::npos;
        const bool is_port = change.find("COMProp") != std::string::npos;
        const std::string where = is_line   ? " WHERE line = 'S'"
                                  : is_port ? " WHERE Description = 'S'"
                                            : "";
        Execute(change + where);
        // Only the one looks: nobody mends what its row says of the other.
        north->dispatch.Run(connection, {false, false}, kNow);
        EXPECT_THAT(Pages(), ElementsAre("1 N", "2 N")) << change;
        Execute(back + where);
        Execute("UPDATE Host_Deliveries SET line = ''");
    }
}

TEST_F(TwoNodesThatDeal, GiveABoundPagersPagesToItsLineAtOnce) {
    Execute("UPDATE AlarmFwd_PagerSetting SET comport = 'N'");
    Owe("1");
    Owe("2");
    north->Deal(kNow);
    EXPECT_THAT(Pages(), ElementsAre("1 N", "2 N"));
}

TEST_F(TwoNodesThatDeal, GiveSeverePagesBeforeMildOnes) {
    Owe("1", 7);
    Owe("2", 3);
    Owe("3", 5);
    north->Deal(kNow);
    EXPECT_THAT(Pages(), ElementsAre("1 ", "2 N", "3 ")) << "the mild one doesn't overtake";
    south->Deal(kNow);
    EXPECT_THAT(Pages(), ElementsAre("1 S", "2 N", "3 S"));
}

// Its place is kept, also before a page that only this node's line can have.
TEST_F(TwoNodesThatDeal, LetNoMilderPageOvertakeOneThatIsLeftToOthers) {
    AddPager("bound");
    Execute(
        "UPDATE AlarmFwd_PagerSetting SET comport = 'N', pgtype = '4'"
        " WHERE description = 'bound'");
    Owe("1", 1);
    Owe("2", 2);
    Owe("3", 3, "bound");
    north->Deal(kNow);
    EXPECT_THAT(Pages(), ElementsAre("1 N", "2 ", "3 "));
    north->Deal(kNow + Dispatch::kLeftFor);
    EXPECT_THAT(Pages(), ElementsAre("1 N", "2 N", "3 "));
}

// A page that a line tries again is no first page: the line is idle for those.
TEST_F(TwoNodesThatDeal, GiveFirstPagesToALineThatOnlyRepeatsOthers) {
    Execute(
        "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState, line)"
        " VALUES ('9', 'ops', 'duty', '2', 'S')");
    Execute(
        "INSERT INTO Host_Sends (at, seconds, alarm, pager, port, outcome, result, reason)"
        " VALUES (1, 1, '9', 'duty', 'S', 'not sent', 6, '')");
    Owe("1");
    Owe("2");
    north->Deal(kNow);
    south->Deal(kNow);
    EXPECT_THAT(Pages(), ElementsAre("1 N", "2 S"));
}

// --- What waits for more than a line.

class PagesThatWait : public TwoNodesThatDeal {
 protected:
    // By a node that knows no other, twice.
    void DealAlone() {
        north->dispatch.Run(connection, {true, true}, kNow);
        north->dispatch.Run(connection, {true, true}, kNow + 1);
    }
    size_t TimesSaid(const std::string& text) const {
        const std::string all = said.str();
        size_t times = 0;
        for (size_t at = all.find(text); at != std::string::npos; at = all.find(text, at + 1)) {
            ++times;
        }
        return times;
    }
};

TEST_F(PagesThatWait, AreToldOfOnceWhereNoLineCanHaveThem) {
    AddPager("bound");
    Execute("UPDATE AlarmFwd_PagerSetting SET comport = 'none' WHERE description = 'bound'");
    Owe("1", 1, "bound");
    Owe("2");
    DealAlone();
    EXPECT_THAT(Pages(), ElementsAre("1 ", "2 N"));
    EXPECT_EQ(1U, TimesSaid("pager \"bound\": no line that can have its pages is in service; "
                            "they wait\n"))
        << said.str();
}

TEST_F(PagesThatWait, AreSetAsideWhereTheirPagerIsTooLarge) {
    AddPager("large");
    WriteAsAnother(database,
                   "UPDATE AlarmFwd_PagerSetting SET pgnumber = hex(zeroblob(600000))"
                   " WHERE description = 'large'");
    Owe("1", 1, "large");
    Owe("2");
    DealAlone();
    EXPECT_THAT(Pages(), ElementsAre("1 ", "2 N"));
    EXPECT_EQ(1U, TimesSaid("alarm 1 (ops) to \"large\" is set aside: ")) << said.str();
}

// It can't be known whether they need one.
TEST_F(PagesThatWait, AreSetAsideWhereThereIsNoPagerAndTheirAlarmIsTooLarge) {
    Owe("1", 1, "nobody");
    Owe("2");
    WriteAsAnother(database,
                   "UPDATE AlarmLog SET details = hex(zeroblob(600000)) WHERE alarmlogID = '1'");
    DealAlone();
    EXPECT_THAT(Pages(), ElementsAre("1 ", "2 N"));
    EXPECT_EQ(1U, TimesSaid("alarm 1 (ops) to \"nobody\" is set aside: ")) << said.str();
}

// --- However many wait.

class AThousandAndMore : public TwoNodesThatDeal {
 protected:
    static constexpr int kFirst = 1001;
    static constexpr int kLast = 1000 + 3 * Dispatch::kLookedAtInAPass / 2;

    AThousandAndMore() {
        const std::string numbers =
            "WITH RECURSIVE numbers(n) AS (SELECT " + std::to_string(kFirst) +
            " UNION ALL SELECT n + 1 FROM numbers WHERE n < " + std::to_string(kLast) + ") ";
        Execute(numbers +
                "INSERT INTO AlarmLog (alarmlogID, pagerstate, alarmack, alarm_group, severity)"
                " SELECT n, '2', '0', 'ops', '1' FROM numbers");
        Execute(numbers +
                "INSERT INTO Host_Deliveries (alarm, place, alarm_group, pager, since, severity)"
                " SELECT n, 0, 'ops', 'duty', 0, 1 FROM numbers");
    }

    void Acknowledge(int alarm) {
        Execute("UPDATE AlarmLog SET alarmack = '1' WHERE alarmlogID = '" + std::to_string(alarm) +
                "'");
    }
    std::vector<std::string> Closed() {
        return Rows("alarm FROM Host_Deliveries WHERE answer IS NOT NULL ORDER BY alarm");
    }
    void DealAsLeader(time_t now) { north->dispatch.Run(connection, {true, false}, now); }
};

TEST_F(AThousandAndMore, AreLookedAtInPortionsWhetherTheyNeedALine) {
    Acknowledge(kFirst);
    Acknowledge(kLast);
    DealAsLeader(kNow);
    EXPECT_THAT(Closed(), ElementsAre(std::to_string(kFirst)));
    EXPECT_TRUE(north->dispatch.IsWaiting()) << "for the next portion";
    DealAsLeader(kNow + 1);
    EXPECT_THAT(Closed(), ElementsAre(std::to_string(kFirst), std::to_string(kLast)));
    DealAsLeader(kNow + Dispatch::kLeftFor);
    DealAsLeader(kNow + 2 * Dispatch::kLeftFor);
    EXPECT_THAT(Rows("alarm FROM Host_Deliveries WHERE line <> '' ORDER BY alarm"),
                ElementsAre("1002", "1003"));
}

// The severest of all is found behind them, and so is another pager's.
TEST_F(AThousandAndMore, AreOvertakenBySevererOnesAndByThoseOfOtherLines) {
    Execute("UPDATE Host_Deliveries SET severity = 5");
    AddPager("bound");
    Execute(
        "UPDATE AlarmFwd_PagerSetting SET comport = 'S', pgtype = '4'"
        " WHERE description = 'bound'");
    Owe("9001", 2, "bound");
    Owe("9002", 1);
    north->Deal(kNow);
    south->Deal(kNow);
    EXPECT_THAT(
        Rows("alarm || ' ' || line FROM Host_Deliveries WHERE line <> '' ORDER BY severity, alarm"),
        ElementsAre("9002 N", "9001 S", "1001 S"));
}

}  // namespace
}  // namespace host
