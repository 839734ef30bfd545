// Texts that nobody would write, in every text that a service or the tables hand the engine: the
// way of the page through formats, buffers, conditions and onto the line is the same, and the trace
// has them raw.
#include "tests/engine/engine_test.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

// Of a text, in every page.
constexpr size_t kShown = 30;

struct Hostile {
    const char* name;
    std::string text;
};

std::ostream& operator<<(std::ostream& out, const Hostile& hostile) {
    return out << hostile.name;
}

class HostileText : public EngineTest, public ::testing::WithParamInterface<Hostile> {
 protected:
    const std::string& Text() const { return GetParam().text; }
};

TEST_P(HostileText, OfEveryTextIsPagedAndTracedAsItIs) {
    AddPager({"anna" + Text(), kSms1});
    AddAlarm(7, 2, Text());
    Start();
    EXPECT_EQ(1, Forward(7, {"anna" + Text()}, Text() + "/1"));
    UntilWorkerEnds();

    ASSERT_EQ(1U, Pages().size());
    EXPECT_THAT(Pages()[0], StartsWith("555|" + Text().substr(0, kShown)));
    EXPECT_THAT(Rows(), ElementsAre("7 anna" + Text() + " 0 4")) << "found by its condition";
    EXPECT_EQ("4", AlarmState(7));
    EXPECT_TRUE(TraceHas("Try to page for anna" + Text()));
    EXPECT_TRUE(TraceHas("CDB_PagerSettings::GetPager: anna" + Text() + ": "));
}

TEST_P(HostileText, OfANumberGoesOnTheLineAsItIs) {
    AddPager({"anna", kAlphanumeric, 0, 45, Text()});
    AddAlarm(7);
    Start();
    EXPECT_EQ(0, Test({"anna", kNumeric, 0, 45, Text()}));
    ASSERT_EQ(1U, Pages().size());
    EXPECT_THAT(Pages()[0], StartsWith(Text() + "|"));
    EXPECT_TRUE(TraceHas("Pagernumber: " + Text() + " ("));
}

TEST_P(HostileText, OfANameThatIsInNoTableIsRefused) {
    AddAlarm(7);
    Start();
    EXPECT_EQ(-1, Forward(7, {Text()}));
    EXPECT_EQ(5, Test({"anna", kAlphanumeric, 0, 45, "555", "always", "COM " + Text()}));
    EXPECT_THAT(Pages(), IsEmpty());
    EXPECT_THAT(Rows(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Texts, HostileText,
                         ::testing::Values(Hostile{"Format", "%s%n%d%*d%5000d%%"},
                                           Hostile{"Backslash", "\\n\\0\\x41\\"},
                                           Hostile{"Quote", "'' OR 1 = 1; --"},
                                           Hostile{"Control", "\x01\x1b[2J\x07\b\x7F\x9B"},
                                           Hostile{"HighBytes", "\xFF\xFE\xC0\x80\xE9"},
                                           Hostile{"Of64KiB", std::string(65536, 'x')}),
                         [](const auto& each) { return std::string(each.param.name); });

// A store that takes no text with a double quote in a condition hits no row by it, and no other row
// instead: the page leaves, its row stays as it was, and one with its new state joins it.
TEST_F(EngineTest, ADoubleQuoteInANameHitsNoOtherRow) {
    AddPager({"an\"na", kSms1});
    AddPager({"na\" OR \"1\" = \"1", kSms1});
    AddPager({"anna", kSms1});
    AddAlarm(7);
    AddRow(8, "anna");
    Start();
    EXPECT_EQ(1, Forward(7, {"an\"na", "na\" OR \"1\" = \"1"}));
    UntilWorkerEnds();

    EXPECT_EQ(2U, Pages().size());
    EXPECT_THAT(Rows(),
                UnorderedElementsAre("8 anna 0 2", R"(7 an"na 0 2)", R"(7 an"na 0 4)",
                                     R"(7 na" OR "1" = "1 0 2)", R"(7 na" OR "1" = "1 0 4)"));
}

}  // namespace
