// A lock that ends with its process.
#include "host/service/lock_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "host/store/connection.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/files.h"

namespace host {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* kFile = "some.lock";

class ALockFile : public ::testing::Test {
 protected:
    const test_support::TempDir folder;
    LockFile lock{kFile};
};

// Another process that holds the lock.
struct Holder {
    Holder() { EXPECT_EQ("taken", process.ReadLine()); }
    ChildProcess process{{STORE_PROCESS, kFile, "lock-file"}};
};

TEST_F(ALockFile, IsTakenByOneObjectAtATime) {
    LockFile other(kFile);
    EXPECT_FALSE(lock.IsTaken());
    EXPECT_TRUE(lock.TryTake("run"));
    EXPECT_FALSE(other.TryTake("test"));
    EXPECT_TRUE(other.IsTaken());
    EXPECT_FALSE(lock.IsTaken());  // by another
    EXPECT_TRUE(lock.TryTake("run"));
}

TEST_F(ALockFile, IsFreeWhenItsObjectEnds) {
    {
        LockFile other(kFile);
        ASSERT_TRUE(other.TryTake("run"));
    }
    EXPECT_FALSE(lock.IsTaken());
    EXPECT_TRUE(lock.TryTake("run"));
}

// A lock of the process, in place of the open file, would be lost with the second object.
TEST_F(ALockFile, StaysTakenWhenAnotherObjectOfItsProcessEnds) {
    ASSERT_TRUE(lock.TryTake("run"));
    EXPECT_TRUE(LockFile(kFile).IsTaken());
    EXPECT_TRUE(LockFile(kFile).IsTaken());
}

TEST_F(ALockFile, MovesWithItsObject) {
    ASSERT_TRUE(lock.TryTake("run"));
    {
        const LockFile moved(std::move(lock));
        EXPECT_TRUE(LockFile(kFile).IsTaken());
    }
    EXPECT_FALSE(LockFile(kFile).IsTaken());
}

TEST_F(ALockFile, OfAnotherProcessNamesIt) {
    const Holder holder;
    EXPECT_FALSE(lock.TryTake("run"));
    EXPECT_TRUE(lock.IsTaken());
    EXPECT_THAT(lock.Holder(), StartsWith("a test, process "));
}

TEST_F(ALockFile, IsFreeWhenItsProcessEnds) {
    Holder holder;
    EXPECT_EQ(0, holder.process.Finish());
    EXPECT_FALSE(lock.IsTaken());
    EXPECT_TRUE(lock.TryTake("run"));
}

TEST_F(ALockFile, IsFreeWhenItsProcessIsKilled) {
    Holder holder;
    holder.process.Kill();
    EXPECT_FALSE(lock.IsTaken());
    EXPECT_TRUE(lock.TryTake("run"));
    EXPECT_TRUE(std::filesystem::exists(kFile));
}

TEST_F(ALockFile, NamesItsLatestHolder) {
    WriteFile(kFile, "somebody with a long story, process 4711 of long ago\n");
    ASSERT_TRUE(lock.TryTake("run"));
    EXPECT_EQ("run, process " + std::to_string(getpid()), LockFile(kFile).Holder());
}

TEST_F(ALockFile, MayHaveAHolderThatHasSaidNothing) {
    EXPECT_EQ("another process", lock.Holder());
}

TEST_F(ALockFile, ThatCantBeOpenedIsAnErrorThatNamesIt) {
    try {
        LockFile nowhere("/nowhere/at/all.lock");
        FAIL() << "opened";
    } catch (const StoreError& error) {
        EXPECT_THAT(error.what(), HasSubstr("/nowhere/at/all.lock: "));
        EXPECT_THAT(error.what(), HasSubstr("No such file or directory"));
    }
}

}  // namespace
}  // namespace host
