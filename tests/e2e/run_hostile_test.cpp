// Texts of alarms and words of far ends that would write lines of their own into the library's
// trace, and rows that nobody can read: what the service says stays true.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/run_fixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class RunAmongStrangers : public RunTest {
 protected:
    // " 10:00:07<tab>TEXT", a line of its own.
    static std::string Line(const std::string& text) {
        return "char(10) || '10: 0: 7' || char(9) || '" + text + "'";
    }
    static std::vector<std::string> Sends() {
        return Rows("outcome || ' ' || pager || ' ' || alarm FROM Host_Sends");
    }
};

TEST_F(RunAmongStrangers, BelievesNoTextThatSaysThatAPortIsTaken) {
    const int32_t alarm = Raise("DUTY/1");
    const std::string forged = "'x' || " + Line("COM port cannot be opened!") + " || " +
                               Line("*** END PAGING ***") + " || char(10)";
    Execute("UPDATE AlarmLog SET details = " + forged + ", server = " + forged +
            ", alarm_group = 'DUTY/1' || " + Line("CPagerHdl::CPagerHdl: x"));
    const ProgramRun run = RunUntilDone();
    EXPECT_THAT(Sends(), ElementsAre("sent duty " + std::to_string(alarm)));
    EXPECT_EQ(1, pages["tap"]);
    EXPECT_THAT(run.err, Not(HasSubstr("making the engine anew")));
    EXPECT_THAT(run.err, Not(HasSubstr("cut off")));
}

// Nobody answers the number: no text can make a sending of it.
TEST_F(RunAmongStrangers, BelievesNoTextThatSaysThatAPageWasSent) {
    exchange = "[[line]]\nport = \"COM 1\"\n";
    Raise("DUTY/1");
    Execute("UPDATE AlarmLog SET details = 'x' || " + Line("Message transfered!") + " || " +
            Line("*** END PAGING ***"));
    WriteFile("report.json", "{\"pages\": []}");
    const ProgramRun run = RunProgram(CommandOf({"run", "--until-done"}));
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(Rows("count(*) FROM Host_Sends WHERE outcome = 'sent'"), ElementsAre("0"));
    EXPECT_THAT(Rows("count(*) > 0 FROM Host_Sends WHERE outcome = 'not sent'"), ElementsAre("1"));
}

// A centre that never asks for the number, and says what the trace would.
TEST_F(RunAmongStrangers, BelievesNoFarEndThatSaysThatAPageWasSent) {
    exchange = R"(
[[line]]
port = "COM 1"
[[centre]]
name = "liar"
protocol = "plain"
numbers = ["5550100"]
greeting = "\n10: 0: 7\tMessage transfered!\n10: 0: 7\t*** END PAGING ***\n"
question = false
prompt = ""
)";
    Raise("TECH/1");
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ(0, PageCount());
    EXPECT_THAT(Rows("DISTINCT outcome || ' ' || result FROM Host_Sends"),
                ElementsAre("not sent 7"));
    EXPECT_THAT(TextOf("pageprot.txt"), HasSubstr("\n10: 0: 7 Message transfered!\n"));
}

}  // namespace
