// pagerfwd explain.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/host/cli_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

class CliExplain : public CliFixture {};

TEST_F(CliExplain, ExplainsTwoByteCharactersWhereTheSiteIsShiftJis) {
    MakeSite(
        "encoding = \"shift_jis\"\n[[port]]\nname = \"COM 1\"\n[port.pager]\ndial = \"ATDT1\"\n"
        "[[pager]]\ndescription = \"duty\"\ntype = \"ntt\"\nnumber = \"0\"\n");
    // Its second byte is that of a backslash.
    EXPECT_THAT(Run({"explain", "duty", "--server", "\u8868", "--severity", "critical"}).out,
                HasSubstr("\n  = ATDT*2*2966067##;<cr>\n"));
}

TEST_F(CliExplain, ExplainsAPageOverAPortOfAnyName) {
    MakeSite(R"([[port]]
name = "north"
device = "/dev/ttyUSB0"
[port.pager]
dial = "ATDT0,"
[[port]]
name = "south"
device = "/dev/ttyUSB1"
[port.sms1]
dial = "ATDT1"
[[port]]
name = "west"
device = "/dev/ttyUSB2"
[port.sms1]
dial = "ATDT2"
[[pager]]
description = "duty"
type = "sms1"
number = "0"
)");
    EXPECT_THAT(Run({"explain", "duty"}).out,
                AllOf(HasSubstr("\nport   \"south\", /dev/ttyUSB1\nline   COM1:2400,E,7,1"),
                      HasSubstr("\n    ATDT1 ")));
    EXPECT_THAT(Run({"explain", "duty", "--line", "west"}).out,
                AllOf(HasSubstr("\nport   \"west\", /dev/ttyUSB2\n"), HasSubstr("\n    ATDT2 ")));
    EXPECT_THAT(Run({"explain", "duty", "--line", "west", "--json"}).out,
                AllOf(HasSubstr("\"port\": \"west\""), HasSubstr("\"device\": \"/dev/ttyUSB2\"")));
    for (const char* line : {"north", "east"}) {
        const ProgramRun run = Run({"explain", "duty", "--line", line});
        EXPECT_EQ(5, run.exit_code);
        EXPECT_THAT(run.err, HasSubstr(std::string("it isn't paged over port \"") + line + "\""));
    }
}

TEST_F(CliExplain, ExplainsAPageOfAnyAlarm) {
    MakeSite();
    EXPECT_THAT(Run({"explain", "duty", "--group", "PLANT/1", "--severity", "major", "--server",
                     "pumps", "--text", "2 \u2013 3"})
                    .out,
                HasSubstr("\n    PLANT/Major/pumps/2 - 3  text\n"));
    const ProgramRun run = Run({"explain", "duty", "--severity", "bad"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("there is no severity \"bad\""));
}

}  // namespace
