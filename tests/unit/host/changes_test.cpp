// Whether there is anything new in a database.
#include "host/store/changes.h"

#include <gtest/gtest.h>

#include "host/store/tables/nodes.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

class TheChanges : public ServiceTest {
 protected:
    bool AreThere() { return changes.AreThere(connection); }

    Changes changes;
};

TEST_F(TheChanges, AreThereAtFirst) {
    EXPECT_TRUE(AreThere());
    EXPECT_FALSE(AreThere());
}

TEST_F(TheChanges, OfOthersAreSeenOnce) {
    AreThere();
    Connection(database).Execute("INSERT INTO AlarmLog (alarmlogID) VALUES ('7')");
    EXPECT_TRUE(AreThere());
    EXPECT_FALSE(AreThere());
}

TEST_F(TheChanges, OfThisConnectionAreSeenOnce) {
    AreThere();
    AddAlarm("7");
    EXPECT_TRUE(AreThere());
    EXPECT_FALSE(AreThere());
}

TEST_F(TheChanges, AreNoneWhereSomebodyOnlyReads) {
    AreThere();
    Rows("count(*) FROM AlarmLog");
    Statement(connection, "DELETE FROM AlarmLog WHERE alarmlogID = ''").Run();
    EXPECT_FALSE(AreThere());
}

#ifdef PAGERFWD_TEST_ON_POSTGRES
// Every node of a site renews its lease each second: nobody has to look at anything for that. What
// the server does for itself, a vacuum say, may come in between, and is seen.
TEST_F(TheChanges, AreNoneWhereNodesOnlyRenewTheirLeases) {
    Connection keeper(database);
    const auto north = TakeLease(keeper, "north", "a process", std::chrono::hours(1));
    const auto south = TakeLease(keeper, "south", "a process", std::chrono::hours(1));
    EXPECT_TRUE(AreThere());
    int seen = 0;
    for (int second = 0; second < 10; ++second) {
        EXPECT_TRUE(RenewLease(keeper, *north, std::chrono::hours(1)));
        EXPECT_TRUE(RenewLease(keeper, *south, std::chrono::hours(1)));
        seen += AreThere() ? 1 : 0;
    }
    EXPECT_LE(seen, 3);
}

TEST_F(TheChanges, AreSeenBesideRenewals) {
    Connection keeper(database);
    const auto north = TakeLease(keeper, "north", "a process", std::chrono::hours(1));
    AreThere();
    RenewLease(keeper, *north, std::chrono::hours(1));
    Connection(database).Execute("INSERT INTO AlarmLog (alarmlogID) VALUES ('7')");
    RenewLease(keeper, *north, std::chrono::hours(1));
    EXPECT_TRUE(AreThere());
    EXPECT_FALSE(AreThere());
}

// A change is under way while leases are renewed, and ends behind them.
TEST_F(TheChanges, AreSeenThatEndBehindRenewals) {
    Connection keeper(database);
    const auto north = TakeLease(keeper, "north", "a process", std::chrono::hours(1));
    Connection other(database);
    AreThere();
    {
        WriteTransaction change(other);
        other.Execute("INSERT INTO AlarmLog (alarmlogID) VALUES ('7')");
        RenewLease(keeper, *north, std::chrono::hours(1));
        AreThere();
        RenewLease(keeper, *north, std::chrono::hours(1));
        change.Commit();
    }
    EXPECT_TRUE(AreThere());
    EXPECT_FALSE(AreThere());
}
#endif

TEST_F(TheChanges, ThatWereForgottenAreThereAgain) {
    AreThere();
    changes.Forget();
    EXPECT_TRUE(AreThere());
}

}  // namespace
}  // namespace host
