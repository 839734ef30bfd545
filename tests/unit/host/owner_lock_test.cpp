// The number by which a process is known while it lives.
#include "host/store/owner_lock.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

#include "tests/unit/host/child_process.h"
#include "tests/unit/host/files.h"
#include "tests/unit/host/host_test.h"

namespace host {
namespace {

class Owner : public HostTest {
 protected:
    ChildProcess another{{STORE_PROCESS, database, "own"}};
    const int32_t theirs = std::stoi(another.ReadLine());
    OwnerLock owners{database};
};

TEST_F(Owner, KeepsItsNumber) {
    const int32_t mine = owners.Mine();
    EXPECT_GT(mine, 0);
    EXPECT_EQ(mine, owners.Mine());
    EXPECT_NE(theirs, mine);
    EXPECT_TRUE(owners.Lives(mine));
}

TEST_F(Owner, LivesUntilItEnds) {
    EXPECT_TRUE(owners.Lives(theirs));
    EXPECT_EQ(0, another.Finish());
    EXPECT_FALSE(owners.Lives(theirs));
}

TEST_F(Owner, IsGoneWhenItIsKilled) {
    EXPECT_TRUE(owners.Lives(theirs));
    another.Kill();
    EXPECT_FALSE(owners.Lives(theirs));
}

TEST_F(Owner, IsNobodyUnderANumberThatWasNeverTaken) {
    EXPECT_FALSE(owners.Lives(theirs == 5 ? 6 : 5));
}

TEST_F(Owner, IsAskedBeforeItHasANumberItself) {
    OwnerLock asking(database);
    EXPECT_TRUE(asking.Lives(theirs));
}

// Whoever writes such a number into a row must not stop those who read the table.
TEST_F(Owner, IsNobodyBelowOne) {
    for (const int32_t nobody : {0, -1, std::numeric_limits<int32_t>::min()}) {
        EXPECT_FALSE(owners.Lives(nobody)) << nobody;
    }
}

TEST_F(Owner, IsAskedForWithoutMakingAFile) {
    WriteFile("other.db", "");
    OwnerLock asking("other.db");
    EXPECT_FALSE(asking.Lives(7));
    EXPECT_FALSE(std::filesystem::exists("other.db-owners"));
}

// A lock of the process, in place of the open file, would be lost with the second object.
TEST_F(Owner, LivesOnWhenAnotherObjectOnTheSameFileEnds) {
    const int32_t mine = owners.Mine();
    { OwnerLock(database).Lives(theirs); }
    OwnerLock asking(database);
    EXPECT_TRUE(asking.Lives(mine));
}

TEST(OwnerWithoutAFolder, IsAnError) {
    OwnerLock owners("/nowhere/at/all.db");
    EXPECT_THROW(owners.Mine(), StoreError);
    EXPECT_FALSE(owners.Lives(7));
}

}  // namespace
}  // namespace host
