// A file that is read as it grows.
#include "host/files/growing_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/support/temp_dir.h"
#include "tests/unit/host/files.h"

namespace host {
namespace {

constexpr const char* kName = "trace.txt";

class AGrowingFile : public ::testing::Test {
 protected:
    static void Add(const std::string& text, const char* name = kName) {
        std::ofstream(name, std::ios::binary | std::ios::app) << text;
    }
    static std::string Aside(int number) {
        return ReadFile(std::string(kName) + "." + std::to_string(number));
    }

    const test_support::TempDir folder;
    GrowingFile file{kName};
};

TEST_F(AGrowingFile, MayBeMissing) {
    EXPECT_EQ("", file.Read());
    Add("one");
    EXPECT_EQ("one", file.Read());
}

TEST_F(AGrowingFile, IsReadWhereThereIsNoStandardInput) {
    Add("one");
    const int input = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    {
        GrowingFile in_its_place(kName);
        EXPECT_EQ("one", in_its_place.Read());
    }
    dup2(input, STDIN_FILENO);
    close(input);
}

TEST_F(AGrowingFile, IsReadOnce) {
    Add("one");
    EXPECT_EQ("one", file.Read());
    EXPECT_EQ("", file.Read());
    Add("two");
    Add("three");
    EXPECT_EQ("twothree", file.Read());
    EXPECT_EQ(11, file.Position());
}

TEST_F(AGrowingFile, HoldsAnyBytes) {
    const std::string bytes("a\0b\n\xFF", 5);
    Add(bytes);
    EXPECT_EQ(bytes, file.Read());
}

TEST_F(AGrowingFile, ComesInPiecesWhereItIsLarge) {
    constexpr size_t kMost = size_t{1} << 20;
    const std::string text = std::string(kMost, 'a') + "b";
    Add(text);
    EXPECT_EQ(std::string(kMost, 'a'), file.Read());
    EXPECT_EQ("b", file.Read());
    EXPECT_EQ("", file.Read());
}

TEST_F(AGrowingFile, MayBeEmptiedAndBegunAnew) {
    Add("a long text");
    file.Read();
    WriteFile(kName, "new");
    EXPECT_EQ("new", file.Read());
    WriteFile(kName, "");
    EXPECT_EQ("", file.Read());
    Add("newer");
    EXPECT_EQ("newer", file.Read());
}

TEST_F(AGrowingFile, IsReadToItsEndWhenItWasMovedAside) {
    Add("one");
    EXPECT_EQ("one", file.Read());
    Add("two");
    file.MoveAside();
    Add("three", "trace.txt.1");  // its writer had it open
    Add("new");
    EXPECT_EQ("twothree", file.Read());
    EXPECT_EQ("new", file.Read());
    EXPECT_EQ(3, file.Position());
}

TEST_F(AGrowingFile, IsReadToItsEndWhenAnotherTookItsPlace) {
    Add("one");
    EXPECT_EQ("one", file.Read());
    std::filesystem::rename(kName, "elsewhere");
    EXPECT_EQ("", file.Read());
    Add("two", "elsewhere");
    EXPECT_EQ("two", file.Read());
    Add("new");
    EXPECT_EQ("new", file.Read());
}

TEST_F(AGrowingFile, IsMovedAsideFiveTimes) {
    for (const char* text : {"1", "2", "3", "4", "5", "6", "7"}) {
        Add(text);
        file.MoveAside();
    }
    EXPECT_FALSE(std::filesystem::exists(kName));
    EXPECT_EQ("7", Aside(1));
    EXPECT_EQ("6", Aside(2));
    EXPECT_EQ("3", Aside(5));
    EXPECT_FALSE(std::filesystem::exists("trace.txt.6"));
}

TEST_F(AGrowingFile, IsNotMovedAsideWhereThereIsNothingInIt) {
    file.MoveAside();
    EXPECT_FALSE(std::filesystem::exists("trace.txt.1"));
    WriteFile(kName, "");
    file.MoveAside();
    EXPECT_TRUE(std::filesystem::exists(kName));
    Add("one");
    file.MoveAside();
    file.MoveAside();
    EXPECT_EQ("one", Aside(1));
}

// Both have 64 bits on file systems of today. In 32, the file can't even be opened.
TEST_F(AGrowingFile, MayBeLargerThanTwoGigabytes) {
    Add("one");
    std::filesystem::resize_file(kName, (uintmax_t{2} << 30) + 1);
    EXPECT_EQ(std::string("one") + std::string((size_t{1} << 20) - 3, '\0'), file.Read());
    EXPECT_EQ(8U, sizeof(file.Position()));
    EXPECT_EQ(8U, sizeof(ino_t));
}

// One that never ends, one that would hold up who opens it, and one that is somebody else's.
TEST_F(AGrowingFile, IsARegularOneAndNoLink) {
    std::filesystem::create_symlink("/dev/zero", kName);
    EXPECT_EQ("", file.Read());
    std::filesystem::remove(kName);
    ASSERT_EQ(0, mkfifo(kName, 0600));
    EXPECT_EQ("", file.Read());
    std::filesystem::remove(kName);
    WriteFile("else.txt", "secret");
    std::filesystem::create_symlink("else.txt", kName);
    EXPECT_EQ("", file.Read());
    std::filesystem::remove(kName);
    Add("one");
    EXPECT_EQ("one", file.Read());
}

// Moved aside and begun anew twice between two looks, as when the engine is made anew.
TEST_F(AGrowingFile, LosesNothingThatWasMovedAsideTwice) {
    Add("one");
    EXPECT_EQ("one", file.Read());
    file.MoveAside();
    Add("two");
    file.MoveAside();
    Add("three");
    EXPECT_EQ("two", file.Read());
    EXPECT_EQ("three", file.Read());
    EXPECT_EQ("", file.Read());
}

TEST_F(AGrowingFile, JoinsWhatWasMovedAsideLast) {
    constexpr time_t kOld = 1000;
    Add("one");
    file.JoinAside(6, kOld);
    Add("two");
    file.JoinAside(6, kOld);
    EXPECT_EQ("onetwo", Aside(1));
    EXPECT_FALSE(std::filesystem::exists(kName));
    Add("x");
    file.JoinAside(6, kOld);  // too large
    EXPECT_EQ("x", Aside(1));
    EXPECT_EQ("onetwo", Aside(2));
    Add("y");
    file.JoinAside(6, -kOld);  // too old
    EXPECT_EQ("y", Aside(1));
    EXPECT_EQ("x", Aside(2));
}

TEST_F(AGrowingFile, IsMovedAsideWhereTheDiskHasNoRoomToJoin) {
    std::filesystem::create_symlink("/dev/full", std::string(kName) + ".1");
    Add("one");
    file.JoinAside(100, 1000);
    EXPECT_EQ("one", Aside(1));
}

// Who reads on, as a command does, loses nothing.
TEST_F(AGrowingFile, IsReadToItsEndWhenItHasJoined) {
    Add("one");
    file.JoinAside(100, 1000);
    Add("two");
    GrowingFile reader(kName);
    EXPECT_EQ("two", reader.Read());
    Add("three");
    file.JoinAside(100, 1000);
    Add("four");
    EXPECT_EQ("three", reader.Read());
    EXPECT_EQ("four", reader.Read());
}

}  // namespace
}  // namespace host
