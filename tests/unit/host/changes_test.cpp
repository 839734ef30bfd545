// Whether there is anything new in a database.
#include "host/store/changes.h"

#include <gtest/gtest.h>

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

TEST_F(TheChanges, ThatWereForgottenAreThereAgain) {
    AreThere();
    changes.Forget();
    EXPECT_TRUE(AreThere());
}

}  // namespace
}  // namespace host
