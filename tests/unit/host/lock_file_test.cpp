// A lock that ends with its process.
#include "host/files/lock_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
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
const Ownership kOwn{geteuid(), getegid(), 0600};

class ALockFile : public ::testing::Test {
 protected:
    const test_support::TempDir folder;
    LockFile lock{kFile, kOwn};
};

// Another process that holds the lock.
struct Holder {
    Holder() { EXPECT_EQ("taken", process.ReadLine()); }
    ChildProcess process{{STORE_PROCESS, kFile, "lock-file"}};
};

TEST_F(ALockFile, IsTakenByOneObjectAtATime) {
    LockFile other(kFile, kOwn);
    EXPECT_FALSE(lock.IsTaken());
    EXPECT_TRUE(lock.TryTake("run"));
    EXPECT_FALSE(other.TryTake("test"));
    EXPECT_TRUE(other.IsTaken());
    EXPECT_FALSE(lock.IsTaken());  // by another
    EXPECT_TRUE(lock.TryTake("run"));
}

TEST_F(ALockFile, IsFreeWhenItsObjectEnds) {
    {
        LockFile other(kFile, kOwn);
        ASSERT_TRUE(other.TryTake("run"));
    }
    EXPECT_FALSE(lock.IsTaken());
    EXPECT_TRUE(lock.TryTake("run"));
}

// A lock of the process, in place of the open file, would be lost with the second object.
TEST_F(ALockFile, StaysTakenWhenAnotherObjectOfItsProcessEnds) {
    ASSERT_TRUE(lock.TryTake("run"));
    EXPECT_TRUE(LockFile(kFile, kOwn).IsTaken());
    EXPECT_TRUE(LockFile(kFile, kOwn).IsTaken());
}

TEST_F(ALockFile, MovesWithItsObject) {
    ASSERT_TRUE(lock.TryTake("run"));
    {
        const LockFile moved(std::move(lock));
        EXPECT_TRUE(LockFile(kFile, kOwn).IsTaken());
    }
    EXPECT_FALSE(LockFile(kFile, kOwn).IsTaken());
}

TEST_F(ALockFile, OfAnotherProcessNamesIt) {
    const Holder holder;
    EXPECT_FALSE(lock.TryTake("run"));
    EXPECT_TRUE(lock.IsTaken());
    EXPECT_THAT(lock.Words(), StartsWith("a test, process "));
    EXPECT_EQ("pagerfwd " + lock.Words(), lock.Holder());
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
    EXPECT_EQ("run, process " + std::to_string(getpid()), LockFile(kFile, kOwn).Words());
}

TEST_F(ALockFile, MayHaveAHolderThatHasSaidNothing) {
    EXPECT_EQ("another process", lock.Holder());
}

TEST_F(ALockFile, ThatCantBeOpenedIsAnErrorThatNamesIt) {
    LockFile nowhere("/nowhere/at/all.lock", kOwn);
    EXPECT_FALSE(nowhere.IsTaken());
    try {
        nowhere.TryTake("run");
        FAIL() << "taken";
    } catch (const StoreError& error) {
        EXPECT_THAT(error.what(), HasSubstr("/nowhere/at/all.lock: "));
        EXPECT_THAT(error.what(), HasSubstr("No such file or directory"));
    }
}

TEST_F(ALockFile, IsNotMadeByLooking) {
    EXPECT_FALSE(lock.IsTaken());
    EXPECT_EQ("another process", lock.Holder());
    EXPECT_FALSE(std::filesystem::exists(kFile));
}

// Whoever may write in the folder could have the service write to any file.
TEST_F(ALockFile, IsNoLink) {
    WriteFile("else", "dear");
    std::filesystem::create_symlink("else", kFile);
    EXPECT_THROW(lock.TryTake("run"), StoreError);
    EXPECT_THROW(lock.IsTaken(), StoreError);
    EXPECT_EQ(4U, std::filesystem::file_size("else"));
}

// Opening a pipe waits for who opens its other end.
TEST_F(ALockFile, IsNoPipe) {
    ASSERT_EQ(0, mkfifo(kFile, 0600));
    try {
        lock.TryTake("run");
        FAIL() << "taken";
    } catch (const StoreError& error) {
        EXPECT_THAT(error.what(), HasSubstr("it is no regular file"));
    }
}

}  // namespace
}  // namespace host
