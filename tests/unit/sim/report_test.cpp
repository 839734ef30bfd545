// Reports, expectations, and the look at program files.
#include "sim/runner/report.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "sim/runner/program_file.h"

namespace pagersim {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using namespace std::chrono_literals;

Report TwoCalls() {
    Report report;
    report.Add({1000ms, "COM 1", "tap", EventKind::kDials, "5550101"});
    report.Add({2000ms, "COM 1", "tap", EventKind::kDelivers, "HELLO", "123"});
    report.Add({2500ms, "COM 1", kModem, EventKind::kSends, "x"});
    report.Add({3250ms, "COM 1", "tap", EventKind::kEnds, "5550101"});
    report.Add({5000ms, "COM 2", "tap", EventKind::kDials, "5550101"});
    report.Add({6000ms, "COM 2", "tap", EventKind::kDelivers, "M\xfcller\r", "124"});
    report.Add({7000ms, "COM 2", "tap", EventKind::kEnds, "5550101"});
    report.Add({9000ms, "COM 1", kProgram, EventKind::kCloses});
    return report;
}

TEST(Report, CallsAndPages) {
    const Report report = TwoCalls();
    ASSERT_THAT(report.Calls(), SizeIs(2));
    EXPECT_EQ(1000ms, report.Calls()[0].from);
    EXPECT_EQ(3250ms, report.Calls()[0].to);
    ASSERT_THAT(report.Pages(), SizeIs(2));
    EXPECT_EQ("HELLO", report.Pages()[0].text);
    EXPECT_EQ("M<fc>ller<cr>", report.Pages()[1].text);
    EXPECT_EQ(1U, report.Pages()[1].call);
    EXPECT_EQ(9000ms, report.End());
}

TEST(Report, InWords) {
    EXPECT_EQ(
        "tap received 2 pages:\n"
        "  123: \"HELLO\", in a call of 2.250 s on COM 1\n"
        "  124: \"M<fc>ller<cr>\", in a call of 2.000 s on COM 2\n"
        "ucp received nothing\n"
        "virtual time: 9.000 s\n",
        DescribePages({"tap", "ucp"}, TwoCalls()));
}

TEST(Report, InJson) {
    const Comparison comparison = Compare({{"tap", "123", "HELLO"}}, TwoCalls().Pages());
    const auto json = nlohmann::json::parse(ReportAsJson(TwoCalls(), 3, &comparison));
    EXPECT_EQ(3, json["status"]);
    EXPECT_EQ(9.0, json["virtual_seconds"]);
    EXPECT_EQ("5550101", json["calls"][0]["number"]);
    EXPECT_EQ(3.25, json["calls"][0]["to_seconds"]);
    EXPECT_EQ("HELLO", json["pages"][0]["text"]);
    EXPECT_EQ(2.0, json["pages"][0]["at_seconds"]);
    EXPECT_EQ(0, json["pages"][0]["call"]);
    EXPECT_FALSE(json["expected"]["met"]);
    EXPECT_THAT(json["expected"]["missing"], IsEmpty());
    EXPECT_EQ("124", json["expected"]["unexpected"][0]["recipient"]);
    EXPECT_FALSE(nlohmann::json::parse(ReportAsJson(TwoCalls(), 0, nullptr)).contains("expected"));
}

TEST(ParseExpectation, CentrePagerText) {
    const auto expected = ParseExpectation("tap:123=HELLO");
    ASSERT_TRUE(expected.has_value());
    EXPECT_EQ("tap", expected->centre);
    EXPECT_EQ("123", expected->recipient);
    EXPECT_EQ("HELLO", expected->text);
    EXPECT_EQ("a=b:c", ParseExpectation("tap:123=a=b:c")->text);
    EXPECT_EQ("", ParseExpectation("tap:123=")->text);
    for (const char* bad : {"", "tap", "tap:123", "tap=123", "a=tap:123"}) {
        EXPECT_FALSE(ParseExpectation(bad).has_value()) << bad;
    }
}

class CompareTest : public ::testing::Test {
 protected:
    static Comparison With(const std::vector<Expectation>& expected) {
        const std::vector<DeliveredPage> pages = {{"tap", "123", "A"}, {"ucp", "124", "B<cr>"}};
        return Compare(expected, pages);
    }
};

TEST_F(CompareTest, ExactlyThesePagesInWhateverOrder) {
    EXPECT_TRUE(With({{"ucp", "124", "B\r"}, {"tap", "123", "A"}}).Met());
}

TEST_F(CompareTest, OneTooFewOrTooMany) {
    EXPECT_FALSE(With({{"tap", "123", "A"}}).Met());
    EXPECT_FALSE(With({}).Met());
    EXPECT_FALSE(With({{"tap", "123", "A"}, {"tap", "123", "A"}, {"ucp", "124", "B\r"}}).Met());
}

TEST_F(CompareTest, EveryPartCounts) {
    for (const Expectation& wrong :
         {Expectation{"ucp", "123", "A"}, {"tap", "124", "A"}, {"tap", "123", "a"}}) {
        const Comparison comparison = With({wrong, {"ucp", "124", "B\r"}});
        EXPECT_THAT(comparison.missing, SizeIs(1));
        EXPECT_THAT(comparison.unexpected, SizeIs(1));
    }
}

TEST_F(CompareTest, InWords) {
    EXPECT_EQ("received exactly what was expected\n",
              DescribeComparison(With({{"ucp", "124", "B\r"}, {"tap", "123", "A"}})));
    EXPECT_EQ(
        "expected, but not received: tap, 9: \"A\"\n"
        "received, but not expected: tap, 123: \"A\"\n",
        DescribeComparison(With({{"tap", "9", "A"}, {"ucp", "124", "B\r"}})));
}

class ProgramFileTest : public ::testing::Test {
 protected:
    ProgramFileTest() {
        std::string pattern = "/tmp/program-file-XXXXXX";
        folder_ = mkdtemp(pattern.data());
    }
    ~ProgramFileTest() override { std::filesystem::remove_all(folder_); }

    std::string Write(const std::string& name, const std::string& text) const {
        const std::string path = folder_ + "/" + name;
        std::ofstream(path, std::ios::binary) << text;
        chmod(path.c_str(), 0755);
        return path;
    }

    std::string folder_;
};

TEST_F(ProgramFileTest, WordSizeOfElfFiles) {
    EXPECT_EQ(static_cast<int>(sizeof(void*)) * 8, WordSizeOf("/proc/self/exe"));
    EXPECT_EQ(32, WordSizeOf(Write("a",
                                   "\x7f"
                                   "ELF\x01")));
    EXPECT_EQ(64, WordSizeOf(Write("b",
                                   "\x7f"
                                   "ELF\x02")));
}

TEST_F(ProgramFileTest, AScriptHasItsInterpretersWordSize) {
    const std::string interpreter = Write("interpreter",
                                          "\x7f"
                                          "ELF\x01");
    EXPECT_EQ(32, WordSizeOf(Write("script", "#!" + interpreter + " -e\necho\n")));
    EXPECT_EQ(32, WordSizeOf(Write("blank", "#! " + interpreter + "\n")));
}

TEST_F(ProgramFileTest, OtherFilesHaveNone) {
    EXPECT_EQ(0, WordSizeOf(Write("text", "echo hello\n")));
    EXPECT_EQ(0, WordSizeOf(Write("empty", "")));
    EXPECT_EQ(0, WordSizeOf(folder_ + "/missing"));
    const std::string loop = folder_ + "/loop";
    EXPECT_EQ(0, WordSizeOf(Write("loop", "#!" + loop + "\n"))) << "and it comes to an end";
}

TEST_F(ProgramFileTest, ProgramsAreFoundAsTheShellDoes) {
    const std::string path = Write("tool", "x");
    EXPECT_EQ(path, FindProgram(path));
    EXPECT_EQ(std::nullopt, FindProgram(folder_ + "/missing"));
    EXPECT_THAT(FindProgram("sh").value_or(""), HasSubstr("/bin/sh"));
    EXPECT_EQ(std::nullopt, FindProgram("no-such-program-anywhere"));
}

}  // namespace
}  // namespace pagersim
