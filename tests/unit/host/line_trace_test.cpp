// The trace of a line: what is kept of it, and what is taken from it.
#include "host/line/line_trace.h"
#include "host/store/tables/history.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "host/pages/history.h"
#include "tests/support/zone.h"
#include "tests/unit/host/files.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class TheTraceOfALine : public ServiceTest {
 protected:
    TheTraceOfALine() { test_support::UseTestZone(); }

    static constexpr const char* kFile = "pageprot.txt";
    static constexpr size_t kLongest = size_t{16} << 20;

    static void Add(const std::string& text) { std::ofstream(kFile, std::ios::app) << text; }
    // What the library does when it is made.
    void Start() {
        trace.Begin();
        std::ofstream{kFile};
    }

    // As its process does, for so many seconds.
    void LookFor(int seconds) {
        for (int second = 0; second < seconds; ++second) {
            sleep(1);
            trace.Look();
        }
    }

    // A call that is the page, over a port that the pager doesn't name.
    static std::string Page() {
        std::string text;
        for (const char* line :
             {"*** START PAGING ***", "Try to page for duty at 01/08/01\t10:00:00\t: ", "COM: ",
              "Pagernumber: 5550104@ (signal", "COM port information:", "COM Name: COM 2",
              "Message to send: ", "Before Dial", "After Dial", "*** END PAGING ***"}) {
            text += "10: 0: 0\t" + std::string(line) + "\n";
        }
        return text;
    }

    OperatorLog log{said, true};
    static SiteLine North() {
        SiteLine line;
        line.name = "north";
        line.device = "/dev/none";
        return line;
    }
    std::vector<std::string> seen;  // pagers
    LineTrace trace{connection, North(), Encoding::kLatin1, log,
                    [this](const TracedPage& page) { seen.push_back(page.pager); }};
};

TEST_F(TheTraceOfALine, SurvivesAnyNumberOfStarts) {
    for (int start = 0; start < 8; ++start) {
        Start();
        Add("10: 0: " + std::to_string(start) + "\tstart\n");
        trace.Look();
    }
    std::string before;
    for (int start = 0; start < 7; ++start) {
        before += "10: 0: " + std::to_string(start) + "\tstart\n";
    }
    EXPECT_EQ(before, ReadFile("pageprot.txt.1"));
    EXPECT_EQ("10: 0: 7\tstart\n", ReadFile(kFile));
    EXPECT_FALSE(fs::exists("pageprot.txt.2"));
}

TEST_F(TheTraceOfALine, IsMovedAsideAt16Mebibytes) {
    Start();
    Add(std::string(kLongest, '\n'));
    trace.Look();
    EXPECT_TRUE(fs::exists(kFile));
    Add("\n");
    trace.Look();
    EXPECT_FALSE(fs::exists(kFile));
    EXPECT_EQ(kLongest + 1, fs::file_size("pageprot.txt.1"));
}

TEST_F(TheTraceOfALine, DoesNotGrowAboveThatByStarts) {
    Start();
    Add(std::string(kLongest - 10, '\n'));
    Start();
    Add("eleven byte");
    Start();
    EXPECT_EQ("eleven byte", ReadFile("pageprot.txt.1"));
    EXPECT_EQ(kLongest - 10, fs::file_size("pageprot.txt.2"));
}

TEST_F(TheTraceOfALine, IsMovedAsideAfterAWeek) {
    Start();
    Add("old\n");
    trace.Look();
    sleep(7 * 24 * 60 * 60 + 1);
    trace.Look();
    EXPECT_EQ("old\n", ReadFile("pageprot.txt.1"));
    EXPECT_FALSE(fs::exists(kFile));
}

TEST_F(TheTraceOfALine, RecordsEachSendingByTheNameOfTheLine) {
    Start();
    Add(Page());
    trace.Look();
    EXPECT_THAT(Rows("outcome || ' by ' || port FROM Host_Sends"), ElementsAre("dialled by north"));
    EXPECT_THAT(seen, ElementsAre("duty"));
    EXPECT_EQ(nullptr, trace.UnderWay());
}

// --- What a process has left that was killed.

class TheTraceThatWasLeft : public TheTraceOfALine {
 protected:
    // The process before, which has recorded its first page.
    TheTraceThatWasLeft() {
        NoteEngineStart(connection, "north");
        Start();
        Add(Page());
        trace.Look();
    }
    // A page that ends so many seconds past ten.
    static std::string PageAt(int second) {
        std::string text = Page();
        const std::string from = "10: 0: 0";
        const std::string to = "10: 0:" + std::to_string(second);
        for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
            text.replace(at, from.size(), to);
        }
        return text.replace(text.find("10:00:00"), 8, "10:00:" + std::to_string(second));
    }
    std::vector<std::string> Sends() {
        return Rows("outcome || ' ' || (at - 978948000) FROM Host_Sends");
    }
    void StartAnother() {
        LineTrace another(connection, North(), Encoding::kLatin1, log, [](const TracedPage&) {});
        another.RecordLeft();
        NoteEngineStart(connection, "north");
        another.Begin();
    }
};

TEST_F(TheTraceThatWasLeft, IsRecordedByTheNextProcess) {
    Add(PageAt(20));
    Add(PageAt(40).substr(0, PageAt(40).find("After Dial") - 9));
    sleep(60);
    StartAnother();
    EXPECT_THAT(Sends(), ElementsAre("dialled 0", "dialled 20", "cut off 40"));
}

TEST_F(TheTraceThatWasLeft, IsRecordedOnce) {
    Add(PageAt(20));
    sleep(60);
    StartAnother();
    StartAnother();
    EXPECT_THAT(Sends(), ElementsAre("dialled 0", "dialled 20"));
}

// What is longer than any trace that is kept grows as fast as it is read.
TEST_F(TheTraceThatWasLeft, IsReadToSixtyFourMebibytesAndNoFurther) {
    fs::resize_file(kFile, (off_t{64} << 20) - PageAt(20).size());
    Add(PageAt(20));
    Add(PageAt(40));
    sleep(60);
    StartAnother();
    EXPECT_THAT(Sends(), ElementsAre("dialled 0", "dialled 20"));
}

TEST_F(TheTraceThatWasLeft, IsNotThatOfAnotherDatabase) {
    Execute("DELETE FROM Host_History");
    Add(PageAt(20));
    sleep(60);
    StartAnother();
    EXPECT_THAT(Sends(), ElementsAre("dialled 0"));
}

TEST_F(TheTraceOfALine, ShowsThePageThatIsUnderWay) {
    Start();
    Add(Page().substr(0, Page().find("After Dial") - 9));
    trace.Look();
    ASSERT_NE(nullptr, trace.UnderWay());
    EXPECT_EQ(PagePhase::kDial, trace.UnderWay()->phase);
    trace.Look();
    EXPECT_THAT(seen, ElementsAre("duty", "duty"));
    EXPECT_THAT(Rows("outcome FROM Host_Sends"), IsEmpty());
}

TEST_F(TheTraceOfALine, IsSilentBehindTenMinutesWithPagesAndWithoutNews) {
    Start();
    LookFor(5);
    Add("10: 0: 5\tnews\n");
    trace.Look();
    LookFor(600);
    EXPECT_FALSE(trace.IsSilent());
    LookFor(1);
    EXPECT_TRUE(trace.IsSilent());
    Add("10:10: 6\tnews\n");
    trace.Look();
    EXPECT_FALSE(trace.IsSilent());
}

TEST_F(TheTraceOfALine, IsNotSilentWhereNoPageIsToBeSent) {
    Start();
    LookFor(300);
    trace.HasNoPages();
    LookFor(600);
    EXPECT_FALSE(trace.IsSilent());
    LookFor(1);
    EXPECT_TRUE(trace.IsSilent());
}

TEST_F(TheTraceOfALine, IsNeitherSilentNorStuckWhereTheClockIsSet) {
    Start();
    Add(Page().substr(0, Page().find("After Dial") - 9));
    trace.Look();
    sleep(25 * 60 * 60);  // nobody looks: it comes to the same
    trace.Look();
    EXPECT_FALSE(trace.IsSilent());
    EXPECT_FALSE(trace.IsStuck());
    LookFor(601);
    EXPECT_TRUE(trace.IsSilent());
    EXPECT_TRUE(trace.IsStuck());
}

TEST_F(TheTraceOfALine, NamesADeviceThatCanNotBeOpened) {
    Start();
    std::string page = Page();
    const size_t opening = page.find("10: 0: 0\tCOM port information:");
    page.replace(opening, page.find("10: 0: 0\t*** END") - opening,
                 "10: 0: 0\tCOM port cannot be opened!\n");
    Add(page);
    trace.Look();
    EXPECT_THAT(Rows("outcome || ' ' || result FROM Host_Sends"), ElementsAre("not sent 5"));
    EXPECT_THAT(said.str(), HasSubstr("/dev/none could not be opened; does it exist"));
}

TEST_F(TheTraceOfALine, IsStuckWithAPageThatLastsTenMinutesUnlessExcused) {
    Start();
    Add("10: 0: 0\t*** START PAGING ***\n10: 0: 0\tTry to page for duty at 01/08/01\t10:00:00\t: "
        "\n");
    trace.Look();
    LookFor(601);
    EXPECT_TRUE(trace.IsStuck());
    trace.Excuse();
    LookFor(600);
    EXPECT_FALSE(trace.IsStuck());
    LookFor(1);
    EXPECT_TRUE(trace.IsStuck());
}

}  // namespace
}  // namespace host
