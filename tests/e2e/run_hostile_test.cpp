// Texts of alarms and words of far ends that would write lines of their own into the library's
// trace, and rows that nobody can read: what the service says stays true.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/e2e/run_fixture.h"
#include "tests/unit/host/another_program.h"

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
    EXPECT_THAT(run.err, Not(HasSubstr("started anew")));
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
    EXPECT_THAT(Trace(), HasSubstr("\n10: 0: 7 Message transfered!\n"));
}

// Rows that another program has written, with a text of more than 1 MiB by which they are found:
// one of an alarm, one of a page that no engine could read.
TEST_F(RunAmongStrangers, ServesTheOthersBesideRowsThatAreTooLarge) {
    Raise("DUTY/1");
    const std::string large = " = hex(zeroblob(600000))";
    WriteAsAnother("pagerfwd.db",
                   "INSERT INTO AlarmLog (alarmlogID, pagerstate, alarmack) VALUES"
                   " ('7', '2', '0'), ('8', '0', '0');"
                   "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState)"
                   " VALUES ('7', 'ops', 'tech', '2');"
                   "UPDATE AlarmFwd_PagerEvents SET PagerRetries" +
                       large + "; UPDATE AlarmLog SET timestamp" + large +
                       " WHERE alarmlogID = '8'");
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ(1, pages["tap"]);
    EXPECT_EQ(1, PageCount());
    for (const char* row : {"row 3 of AlarmLog is off limit", "row 1 of AlarmFwd_PagerEvents is"}) {
        const size_t first = run.err.find(row);
        EXPECT_NE(std::string::npos, first) << run.err;
        EXPECT_EQ(std::string::npos, run.err.find(row, first + 1)) << "said once";
    }
}

// Such a page is owed as long as nobody mends the row, and holds up no end.
TEST_F(RunAmongStrangers, WaitsForNoPageOfAPagerWhoseRowIsTooLarge) {
    Raise("ALL/1");
    WriteAsAnother("pagerfwd.db",
                   "UPDATE AlarmFwd_PagerSetting SET pgnumber = hex(zeroblob(600000))"
                   " WHERE description = 'osaka'");
    At(3600, "kill -TERM $PPID; echo >late");
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(Stories(), ElementsAre("duty done 1", "osaka pending 0", "tech off limit 2"));
    EXPECT_FALSE(std::filesystem::exists("late")) << run.err;
}

}  // namespace
