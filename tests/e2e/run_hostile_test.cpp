// Texts of alarms that would write lines of their own into the library's trace, and rows that
// nobody can read: what the service says stays true.
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

}  // namespace
