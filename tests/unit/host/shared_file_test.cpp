// Files that several users share, files that are written whole, and room that is kept.
#include "host/files/shared_file.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "host/files/last_room.h"
#include "host/files/whole_file.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host/as_nobody.h"
#include "tests/unit/host/files.h"

namespace host {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

class SharedFile : public ::testing::Test {
 protected:
    SharedFile() : umask_(umask(077)) {}
    ~SharedFile() override { umask(umask_); }

    static mode_t ModeOf(const char* path) {
        struct stat status {};
        return stat(path, &status) == 0 ? status.st_mode & 0777 : 0;
    }
    static Ownership Own(mode_t mode) { return {geteuid(), getegid(), mode}; }
    static std::string WhyNot(const char* path) {
        try {
            OpenOrMakeShared(path, O_RDWR, Own(0660));
            return "opened";
        } catch (const FileError& error) {
            return error.what();
        }
    }
    static size_t Files() {
        return static_cast<size_t>(std::distance(fs::directory_iterator("."), {}));
    }

    const test_support::TempDir folder;

 private:
    const mode_t umask_;
};

TEST_F(SharedFile, TakesTheModeThatItIsGivenWhateverTheUmask) {
    EXPECT_TRUE(OpenOrMakeShared("f", O_RDWR, Own(0660)).IsOpen());
    EXPECT_EQ(0660U, ModeOf("f"));
    EXPECT_EQ(1U, Files());
}

TEST_F(SharedFile, StaysAsItIsWhereItIsThere) {
    WriteFile("f", "dear");
    chmod("f", 0604);
    MakeShared("f", Own(0660));
    EXPECT_TRUE(OpenOrMakeShared("f", O_RDWR, Own(0660)).IsOpen());
    EXPECT_EQ(0604U, ModeOf("f"));
    EXPECT_EQ(4U, fs::file_size("f"));
    EXPECT_EQ(1U, Files());
}

TEST_F(SharedFile, IsNotMadeByLooking) {
    EXPECT_FALSE(OpenShared("f", O_RDONLY).IsOpen());
    EXPECT_EQ(0U, Files());
}

TEST_F(SharedFile, IsARegularOne) {
    fs::create_symlink("elsewhere", "link");
    EXPECT_EQ("it is a link", WhyNot("link"));
    EXPECT_FALSE(fs::exists("elsewhere"));
    ASSERT_EQ(0, mkfifo("pipe", 0600));
    EXPECT_EQ("it is no regular file", WhyNot("pipe"));
    EXPECT_THAT(WhyNot("/nowhere/at/all"), HasSubstr("No such file"));
}

TEST_F(SharedFile, TellsWhoseItIsWhereItMayNotBeOpened) {
    const AsNobody nobody;
    EXPECT_EQ("Permission denied; it belongs to user 0", WhyNot("/etc/shadow"));
}

TEST_F(SharedFile, LiesInNoFolderOfAnotherUser) {
    ASSERT_EQ(0, mkdir("theirs", 0700));
    const bool theirs = chown("theirs", kNobody, kNobody) == 0;  // by root alone
    try {
        MakeSharedFolder("theirs", Own(0600));
        EXPECT_FALSE(theirs);
    } catch (const FileError& error) {
        EXPECT_STREQ("it belongs to user 65534", error.what());
    }
}

TEST_F(SharedFile, IsTakenAwayFromOthers) {
    WriteFile("f", "");
    chmod("f", 0646);
    CloseToOthers(OpenShared("f", O_RDONLY));
    EXPECT_EQ(0640U, ModeOf("f"));
}

// As a disk that is full there: so much of a file is taken, then nothing more.
class RoomFor {
 public:
    explicit RoomFor(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit less{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &less);
    }
    ~RoomFor() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    RoomFor(const RoomFor&) = delete;
    RoomFor& operator=(const RoomFor&) = delete;

 private:
    void (*const handler_)(int) = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before_{};
};

class WholeFile : public SharedFile {};

TEST_F(WholeFile, IsPutInThePlaceOfTheOneBefore) {
    WriteWhole("f", "one\n", 0644);
    WriteWhole("f", "two\n", 0644);
    EXPECT_EQ("two\n", ReadFile("f"));
    EXPECT_EQ(0644U, ModeOf("f"));
    EXPECT_EQ(1U, Files());
}

TEST_F(WholeFile, LeavesNothingBehindWhereItCantBeWritten) {
    fs::create_directories("f/x");
    EXPECT_THROW(WriteWhole("f", "x", 0644), FileError);
    EXPECT_THROW(WriteWhole("no/such/folder/f", "x", 0644), FileError);
    EXPECT_EQ(1U, Files());
}

TEST_F(WholeFile, LeavesTheOneBeforeWhereTheDiskIsFullInItsMiddle) {
    WriteWhole("f", "good\n", 0644);
    for (const rlim_t room : {0U, 5U}) {
        const RoomFor some(room);
        EXPECT_THROW(WriteWhole("f", "one that is longer\n", 0644), FileError) << room;
    }
    EXPECT_EQ("good\n", ReadFile("f"));
    EXPECT_EQ(1U, Files());
}

// Of a name that can be foreseen, somebody may have made a link to a file of ours.
TEST_F(WholeFile, IsNotWrittenThroughALinkBesideIt) {
    WriteFile("dear", "dear");
    fs::create_symlink("dear", "f.new");
    fs::create_symlink("dear", "f");
    WriteWhole("f", "x", 0644);
    EXPECT_EQ(4U, fs::file_size("dear"));
    EXPECT_FALSE(fs::is_symlink("f"));
}

using LastRoom = SharedFile;

TEST_F(LastRoom, IsKeptBesideTheDatabaseUntilItIsGiven) {
    KeepLastRoom("site.db");
    EXPECT_EQ(uintmax_t{kLastRoom}, fs::file_size("site.db-room"));
    EXPECT_EQ(0640U, ModeOf("site.db-room"));
    GiveLastRoom("site.db");
    EXPECT_EQ(0U, Files());
    GiveLastRoom("site.db");
}

TEST_F(LastRoom, IsMadeOnlyWhereItIsMissing) {
    KeepLastRoom("site.db");
    const auto yesterday = fs::last_write_time("site.db-room") - std::chrono::hours(24);
    fs::last_write_time("site.db-room", yesterday);
    KeepLastRoom("site.db");
    EXPECT_EQ(yesterday, fs::last_write_time("site.db-room"));
    fs::resize_file("site.db-room", 5);
    KeepLastRoom("site.db");
    EXPECT_EQ(uintmax_t{kLastRoom}, fs::file_size("site.db-room"));
}

TEST_F(LastRoom, IsNotTakenFromADiskThatHasNone) {
    const RoomFor half(kLastRoom / 2);
    EXPECT_THROW(KeepLastRoom("site.db"), FileError);
    EXPECT_EQ(0U, Files());
}

}  // namespace
}  // namespace host
