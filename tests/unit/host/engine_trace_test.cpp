// The trace of the engine: what is kept of it, and what is taken from it.
#include "host/line/engine_trace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/unit/host/service_test.h"

namespace host {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class TheEnginesTrace : public ServiceTest {
 protected:
    static constexpr const char* kFile = "pageprot.txt";
    static constexpr size_t kLongest = size_t{16} << 20;

    static void Add(const std::string& text) { std::ofstream(kFile, std::ios::app) << text; }
    static std::string TextOf(const std::string& path) {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    // What the library does when it is made.
    void Start() {
        trace.Begin();
        std::ofstream{kFile};
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
    EngineTrace trace{connection, Encoding::kLatin1, log};
};

TEST_F(TheEnginesTrace, SurvivesAnyNumberOfStarts) {
    for (int start = 0; start < 8; ++start) {
        Start();
        Add("10: 0: " + std::to_string(start) + "\tstart\n");
        trace.Look();
    }
    std::string before;
    for (int start = 0; start < 7; ++start) {
        before += "10: 0: " + std::to_string(start) + "\tstart\n";
    }
    EXPECT_EQ(before, TextOf("pageprot.txt.1"));
    EXPECT_EQ("10: 0: 7\tstart\n", TextOf(kFile));
    EXPECT_FALSE(fs::exists("pageprot.txt.2"));
}

TEST_F(TheEnginesTrace, IsMovedAsideAt16Mebibytes) {
    Start();
    Add(std::string(kLongest, '\n'));
    trace.Look();
    EXPECT_TRUE(fs::exists(kFile));
    Add("\n");
    trace.Look();
    EXPECT_FALSE(fs::exists(kFile));
    EXPECT_EQ(kLongest + 1, fs::file_size("pageprot.txt.1"));
}

TEST_F(TheEnginesTrace, DoesNotGrowAboveThatByStarts) {
    Start();
    Add(std::string(kLongest - 10, '\n'));
    Start();
    Add("eleven byte");
    Start();
    EXPECT_EQ("eleven byte", TextOf("pageprot.txt.1"));
    EXPECT_EQ(kLongest - 10, fs::file_size("pageprot.txt.2"));
}

TEST_F(TheEnginesTrace, IsMovedAsideAfterAWeek) {
    Start();
    Add("old\n");
    trace.Look();
    sleep(7 * 24 * 60 * 60 + 1);
    trace.Look();
    EXPECT_EQ("old\n", TextOf("pageprot.txt.1"));
    EXPECT_FALSE(fs::exists(kFile));
}

TEST_F(TheEnginesTrace, NamesThePortThatWasUsedAndWhatNothingConfirms) {
    Start();
    Add(Page());
    trace.Look();
    EXPECT_THAT(said.str(), HasSubstr("<6>page to \"duty\": dialled (0 s, COM 2); the call is the "
                                      "page, and nothing confirms it\n"));
    EXPECT_THAT(Rows("outcome || ' by ' || port FROM Host_Sends"), ElementsAre("dialled by COM 2"));
    EXPECT_EQ(1U, trace.Figures().sendings.at("dialled").at("COM 2"));
}

}  // namespace
}  // namespace host
