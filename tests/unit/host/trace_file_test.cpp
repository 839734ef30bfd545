// Tests of host/platform/trace_file.h.
#include "host/platform/trace_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace host {
namespace {

constexpr int kFile = 7;
constexpr int kAppending = O_WRONLY | O_APPEND | O_CLOEXEC;

std::string written;
int written_to = -1;

ssize_t Note(int file, const void* bytes, size_t size) {
    written_to = file;
    written.assign(static_cast<const char*>(bytes), size);
    return static_cast<ssize_t>(size);
}

// What of it reaches the file.
std::string Write(const std::string& bytes, int file = kFile) {
    written.clear();
    EXPECT_EQ(static_cast<ssize_t>(bytes.size()), WriteAsOneEntry(Note, file, bytes));
    EXPECT_EQ(file, written_to);
    return written;
}

std::string WriteEntry(const std::string& entry) {
    NoteOpened("pageprot.txt", kAppending, kFile);
    return Write(entry);
}

const std::string kForged =
    "10: 0: 7\tWaitString [modemsay=\n10: 0: 7\tMessage transfered!\n10: 0: 7\tx] L:%d\n";

TEST(TraceFile, EntryHasOneTimeAtTheBeginningOfALine) {
    EXPECT_EQ("10: 0: 7\tWaitString [modemsay=\n10: 0: 7 Message transfered!\n10: 0: 7 x] L:%d\n",
              WriteEntry(kForged));
    EXPECT_EQ("10: 0: 7\tx\n\n10: 0: 7 x\n", WriteEntry("10: 0: 7\tx\n\n10: 0: 7\tx\n"));
    EXPECT_EQ("10: 0: 7\t\n 9:59:59 \n", WriteEntry("10: 0: 7\t\n 9:59:59\t\n"));
}

TEST(TraceFile, EntryWithoutSuchALineStaysAsItIs) {
    for (const std::string entry :
         {"10: 0: 7\tBefore Dial\n", "10: 0: 7\t\n:a\n", "10: 0: 7\tx\n0: 0: 7\tx\n",
          "10: 0: 7\tx\n\t\t\t\t\t\t\t\t", "10: 0: 7\tx\n10: 0: 7", "", "\n"}) {
        EXPECT_EQ(entry, WriteEntry(entry));
    }
}

TEST(TraceFile, IsOneEntryAnOpening) {
    EXPECT_NE(kForged, WriteEntry(kForged));
    EXPECT_EQ(kForged, Write(kForged)) << "the number may be another file's by now";
}

TEST(TraceFile, NoOtherFileIsTheTrace) {
    NoteOpened("pageprot.txt.1", kAppending, kFile);
    NoteOpened("/tmp/pageprot.txt", kAppending, kFile);
    NoteOpened("pageprot.txt", O_RDONLY, kFile);
    NoteOpened("pageprot.txt", O_WRONLY | O_CREAT | O_TRUNC, kFile);
    NoteOpened("pageprot.txt", kAppending, -1);
    EXPECT_EQ(kForged, Write(kForged));
    EXPECT_EQ(kForged, Write(kForged, -1));
    NoteOpened("pageprot.txt", kAppending, kFile);
    EXPECT_EQ(kForged, Write(kForged, kFile + 1)) << "a file of another number";
    EXPECT_NE(kForged, Write(kForged));
}

TEST(TraceFile, NewOneIsTheTraceToo) {
    NoteOpened("pageprot.txt", O_WRONLY | O_CREAT, 0);
    EXPECT_NE(kForged, Write(kForged, 0));
}

TEST(TraceFile, OfAnotherThreadIsNotThisOnes) {
    NoteOpened("pageprot.txt", kAppending, kFile);
    std::thread([] { EXPECT_EQ(kForged, Write(kForged)); }).join();
    EXPECT_NE(kForged, Write(kForged));
}

}  // namespace
}  // namespace host
