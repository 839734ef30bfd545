// `pagerfwd run`: alarms to their end, acknowledgements, ends that are asked for, faults.
#include "tests/e2e/run_fixture.h"

#include <filesystem>

namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

class Run : public RunTest {};

TEST_F(Run, PagesEveryPagerAsTheRulesSay) {
    const int32_t alarm = Raise("ALL/1");
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(pages, ElementsAre(Pair("ntt", 1), Pair("plain", 2), Pair("tap", 1)));
    EXPECT_THAT(Stories(), ElementsAre("duty done 1", "osaka off limit 1", "tech off limit 2"));
    EXPECT_EQ("3", StateOf(alarm));
    EXPECT_THAT(run.err, AllOf(HasSubstr("2001-01-08 10:00:00 serving ./pagerfwd.db\n"),
                               HasSubstr("(ALL/1) to \"duty\": queued\n"),
                               HasSubstr("(ALL/1) to \"tech\": queued\n"),
                               HasSubstr("(ALL/1) to \"osaka\": queued\n"), HasSubstr(" ended\n"),
                               Not(HasSubstr("error"))));
}

TEST_F(Run, PagesPagersOfEveryType) {
    MakeSite("pagerfwd.db", ReadFile(EXAMPLES "/site.toml"));
    exchange = ReadFile(EXAMPLES "/exchange.toml");
    const int32_t alarm = Raise("PLANT/017");
    EXPECT_EQ(0, RunUntilDone().exit_code);
    // Plain and NTT pagers are paged until their retries are used up, an SMS service once.
    EXPECT_THAT(pages, ElementsAre(Pair("ntt", 3), Pair("plain", 3 + 3 + 2), Pair("tap", 1),
                                   Pair("ucp", 1)));
    EXPECT_THAT(Stories(), ElementsAre("Osaka office off limit 3", "duty phone done 1",
                                       "engineer off limit 3", "manager phone done 1",
                                       "porter off limit 2", "technician off limit 3"));
    EXPECT_EQ("3", StateOf(alarm));
}

TEST_F(Run, LineWithSevenDataBitsCarriesSevenOfEachCharacter) {
    exchange +=
        "[[expect]]\ncentre = \"tap\"\nrecipient = \"5550111\"\n"
        "text = \"DUTY/Critical/pumps/cafi\"\n";
    ASSERT_EQ(0, RunProgram({PAGERFWD_PROGRAM, "alarm", "raise", "--group", "DUTY/1", "--server",
                             "pumps", "--severity", "critical", "caf\xc3\xa9"})
                     .exit_code);
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code) << run.out << run.err;
}

TEST_F(Run, UcpCentreMayShowATextInTheAlphabetOfGsm) {
    MakeSite("pagerfwd.db",
             "[[port]]\nname = \"COM 1\"\n[port.sms2]\ndial = \"ATDT5550102\"\n[[pager]]\n"
             "description = \"duty\"\ntype = \"sms2\"\nnumber = \"5550112\"\n"
             "[[route]]\npagers = [\"duty\"]\n");
    exchange =
        "[[line]]\nport = \"COM 1\"\n[[centre]]\nname = \"ucp\"\nprotocol = \"ucp\"\n"
        "numbers = [\"5550102\"]\nalphabet = \"gsm\"\n[[expect]]\ncentre = \"ucp\"\n"
        "recipient = \"5550112\"\ntext = \"DUTY/Critical/x/pumps Ä3Ñ ¡ ¤5 §\"\n";
    Execute(
        "INSERT INTO AlarmLog (alarmlogID, alarmName, severity, timestamp, server, details)"
        " VALUES ('7', 'DUTY/1', '1', '978948000', 'x', 'pumps [3] @ $5 _')");
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code) << run.out << run.err;
}

TEST_F(Run, TakesAlarmsThatAreRaisedMeanwhile) {
    At(30, Pagerfwd("alarm raise --group DUTY/1 --server pumps 'Pump 3' >/dev/null"));
    At(200, "kill -TERM $PPID");
    EXPECT_EQ(0, Simulated({"run"}).exit_code);
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    EXPECT_THAT(Stories(), ElementsAre("duty done 1"));
    EXPECT_THAT(Rows("pagerstate FROM AlarmLog"), ElementsAre("4"));
}

TEST_F(Run, TakesAlarmsThatAnotherProgramWrites) {
    Execute(
        "INSERT INTO AlarmLog (alarmlogID, alarmName, severity, timestamp)"
        " VALUES ('7', 'DUTY/1', '1', '978948000')");
    EXPECT_EQ(0, RunUntilDone().exit_code);
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
}

TEST_F(Run, TakesUpWhatHasWaitedForTheDatabase) {
    RunProgram({PAGERFWD_PROGRAM, "alarm", "raise", "--spool", "--group", "DUTY/1", "x"});
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    EXPECT_THAT(run.err, HasSubstr("1 alarm(s) taken up that had waited\n"));
}

// The plain pager would be paged again.
TEST_F(Run, EndsThePagesOfAnAlarmThatIsWithdrawn) {
    RunProgram({PAGERFWD_PROGRAM, "alarm", "raise", "--key", "k", "--group", "TECH/1", "x"});
    At(45, Pagerfwd("alarm withdraw --key k"));
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(pages, ElementsAre(Pair("plain", 1)));
    EXPECT_THAT(run.err, AllOf(HasSubstr("(TECH/1): resolved\n"),
                               HasSubstr("taken out: the alarm is resolved\n")));
}

TEST_F(Run, TellsWhoHadAPageOnceThatTheAlarmIsResolved) {
    MakeSite("pagerfwd.db", std::string(kSite) + "[resolved]\npage = true\n");
    RunProgram({PAGERFWD_PROGRAM, "alarm", "raise", "--key", "k", "--group", "TECH/1", "x"});
    At(45, Pagerfwd("alarm withdraw --key k"));
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(pages, ElementsAre(Pair("plain", 2)));
    EXPECT_THAT(Rows("details || ': ' || count(*) FROM AlarmLog JOIN Host_Sends"
                     " ON alarm = alarmlogID GROUP BY details ORDER BY details"),
                ElementsAre("resolved: x: 1", "x: 1"));
}

TEST_F(Run, EndsByItselfWhenNothingIsPending) {
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(pages, IsEmpty());
}

// The trace names an alarm by its local time.
TEST_F(Run, KnowsTheAlarmOfAPageInSummerToo) {
    test_support::UseZone(test_support::kCentralEurope);
    constexpr int32_t kTenInTheMorning = 994579200;  // 8 July 2001, in Central Europe
    Raise("DUTY/1", kTenInTheMorning);
    WriteFile("exchange.toml", exchange);
    const ProgramRun run =
        RunProgram({PAGERSIM_PROGRAM, "--quiet", "--start", "2001-07-08 10:00:00", "--",
                    PAGERFWD_PROGRAM, "run", "--until-done"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.err, HasSubstr("2001-07-08 10:00:"));
    EXPECT_THAT(run.err, HasSubstr("page of alarm 994579200 to \"duty\": sent ("));
    EXPECT_THAT(RunProgram({PAGERFWD_PROGRAM, "log", "994579200"}).out,
                HasSubstr("\"duty\": sent ("));
}

// A character of two bytes is one on an NTT pager, though its second byte would be one too.
TEST_F(Run, CountsCharactersOfTwoBytesWhereTheSiteIsShiftJis) {
    MakeSite("pagerfwd.db", std::string("encoding = \"shift_jis\"\n") + kSite);
    {
        host::Connection connection("pagerfwd.db");
        RaiseAlarm(connection, {"ALL/1", "1", "\x95\x5C", "x"}, kNow);
    }
    WriteFile("exchange.toml", exchange);
    RunProgram({PAGERSIM_PROGRAM, "--quiet", "--transcript", "said.txt", "--", PAGERFWD_PROGRAM,
                "run", "--until-done"});
    EXPECT_THAT(ReadFile("said.txt"), HasSubstr("ATDT*2*2966067##;"));
}

// --- Ends that are asked for.

class RunEnds : public Run, public ::testing::WithParamInterface<const char*> {
 protected:
    void EndAt(int second) { At(second, std::string("kill -") + GetParam() + " $PPID"); }
};

TEST_P(RunEnds, BetweenTwoPages) {
    EndAt(60);
    const ProgramRun run = Simulated({"run"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("2001-01-08 10:01:00 ended\n"));
}

TEST_P(RunEnds, NotInTheMiddleOfAPage) {
    Raise("ALL/1");
    EndAt(12);  // it dials
    const ProgramRun run = Simulated({"run"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("a page on the line is finished first\n"));
    EXPECT_EQ(1, PageCount());
    EXPECT_THAT(Stories(), Contains(EndsWith(" pending 0")).Times(2));

    EXPECT_EQ(0, RunUntilDone().exit_code);
    EXPECT_THAT(pages, ElementsAre(Pair("ntt", 1), Pair("plain", 2), Pair("tap", 1)));
    EXPECT_THAT(Stories(), ElementsAre("duty done 1", "osaka off limit 1", "tech off limit 2"));
}

INSTANTIATE_TEST_SUITE_P(By, RunEnds, ::testing::Values("TERM", "INT"));

TEST_F(Run, TellsOfPagesThatArePendingFromBefore) {
    Raise("DUTY/1");
    At(12, KillAll());
    Simulated({"run"});
    EXPECT_THAT(RunUntilDone().err, HasSubstr("warning: 1 page(s) are pending from before"));
}

// --- Acknowledgements.

class RunAcknowledged : public Run, public ::testing::WithParamInterface<int> {
 protected:
    void AcknowledgeAt(int second, int32_t alarm) {
        At(second, Pagerfwd("alarm ack " + std::to_string(alarm) + " >/dev/null"));
    }
};

// One page is on the line, one is in its queue, one waits for it.
TEST_P(RunAcknowledged, SendsNoPageToTheOtherPagers) {
    const int32_t alarm = Raise("ALL/1");
    AcknowledgeAt(GetParam(), alarm);
    EXPECT_EQ(0, RunUntilDone().exit_code);
    EXPECT_EQ(1, PageCount());
    EXPECT_EQ("1", StateOf(alarm));
    EXPECT_THAT(Stories(), Contains(EndsWith(" acknowledged 0")));
    EXPECT_THAT(Rows("answer FROM Host_Deliveries"), UnorderedElementsAre("1", "1", "2"));
}

// The pager would get the alarm twice. Its centre takes two seconds for each answer.
TEST_P(RunAcknowledged, SendsNoFurtherPageToItsPager) {
    exchange += "response_ms = 2000\n";
    const int32_t alarm = Raise("TECH/1");
    AcknowledgeAt(GetParam(), alarm);
    EXPECT_EQ(0, RunUntilDone().exit_code);
    EXPECT_THAT(pages, ElementsAre(Pair("plain", 1)));
    EXPECT_EQ("1", StateOf(alarm));
    EXPECT_THAT(Stories(), ElementsAre("tech acknowledged 1"));
}

// The modem is initialised; it dials; the page is transferred.
INSTANTIATE_TEST_SUITE_P(At, RunAcknowledged, ::testing::Values(3, 10, 17, 19, 20, 21));

// Between the delete and the insert of a page's row, and so before its fold.
TEST_F(Run, SendsNoFurtherPageWhenTheAcknowledgementComesWhileARowIsRewritten) {
    Execute(
        "CREATE TRIGGER Acknowledge AFTER UPDATE OF hidden_by ON AlarmFwd_PagerEvents"
        " WHEN NEW.hidden_by IS NOT NULL"
        " BEGIN UPDATE AlarmLog SET alarmack = '1'; END");
    const int32_t alarm = Raise("TECH/1");
    EXPECT_EQ(0, RunUntilDone().exit_code);
    EXPECT_THAT(pages, ElementsAre(Pair("plain", 1)));
    EXPECT_EQ("1", StateOf(alarm));
    EXPECT_THAT(Stories(), ElementsAre("tech acknowledged 1"));
}

// --- Old pages.

// The run before is killed while its first page is on the line, the second is queued, and the third
// waits for the second to be on the line.
TEST_F(Run, GivesUpOldPagesWhenItIsTold) {
    constexpr time_t kHour = 60 * 60;
    const int32_t old = Raise("ALL/1", kNow - 13 * kHour);
    At(5, KillAll());
    Simulated({"run"});
    const int32_t untouched = Raise("ALL/2", kNow - 13 * kHour);
    const int32_t young = Raise("DUTY/1", kNow - 11 * kHour);
    const ProgramRun run = Simulated({"run", "--until-done", "--discard-older-than", "12h"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("pages of older alarms that are given up: 3\n"));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    EXPECT_EQ("3", StateOf(old));
    EXPECT_EQ("3", StateOf(untouched));
    EXPECT_EQ("4", StateOf(young));
    EXPECT_THAT(Stories(), ElementsAre("duty done 1", "duty off limit 0", "tech off limit 0"));
    EXPECT_THAT(Rows("answer FROM Host_Deliveries WHERE pager = 'osaka'"), ElementsAre("4"));
}

TEST_F(Run, RefusesAnAgeThatIsNone) {
    const ProgramRun run = Simulated({"run", "--until-done", "--discard-older-than", "12"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("\"12\" is no age; write it as 90m, 12h or 3d"));
}

// --- Faults.

TEST_F(Run, TellsTheOperatorOfAWriteThatFails) {
    Execute(
        "CREATE TRIGGER Full BEFORE INSERT ON AlarmFwd_PagerEvents"
        " BEGIN SELECT RAISE(ABORT, 'no room left'); END");
    Raise("DUTY/1");
    At(100, "kill -TERM $PPID");
    const ProgramRun run = Simulated({"run"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("2001-01-08 10:00:00 error: "));
    EXPECT_THAT(run.err, HasSubstr("no room left"));
    EXPECT_THAT(Rows("answer FROM Host_Deliveries"), ElementsAre("1"));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
}

TEST_F(Run, TriesAgainWhereItCantNoteAnAnswer) {
    Execute(
        "CREATE TRIGGER Full BEFORE UPDATE OF answer ON Host_Deliveries"
        " BEGIN SELECT RAISE(ABORT, 'no room left'); END");
    Raise("ALL/1");
    At(300, "kill -TERM $PPID");
    const ProgramRun run = Simulated({"run"});
    EXPECT_THAT(run.err, HasSubstr("no room left; trying again\n"));
    Execute("DROP TRIGGER Full");
    EXPECT_EQ(0, RunUntilDone().exit_code);
    EXPECT_THAT(pages, ElementsAre(Pair("ntt", 1), Pair("plain", 2), Pair("tap", 1)));
    EXPECT_THAT(Rows("answer FROM Host_Deliveries ORDER BY place"), ElementsAre("3", "1", "1"));
}

TEST_F(Run, DoesWithoutALineThatCantTrace) {
    std::filesystem::create_directories("pagerfwd.db-lines/COM%201/pageprot.txt");
    Raise("DUTY/1");
    At(300, "kill -TERM $PPID");
    const std::string said = Simulated({"run"}).err;
    EXPECT_THAT(said, HasSubstr("line \"COM 1\": the trace can't be written in this folder: "));
    EXPECT_THAT(said, HasSubstr("line \"COM 1\" is sick: its process can't do its work"));
    EXPECT_THAT(Stories(), ElementsAre("duty pending 0"));
}

TEST_F(Run, NeedsTables) {
    EXPECT_EQ(3, Simulated({"--database", "none.db", "run"}).exit_code);
}

TEST_F(Run, KeepsTheTraceOfTheRunBefore) {
    Raise("DUTY/1");
    RunUntilDone();
    EXPECT_THAT(Trace(), HasSubstr("Message transfered!"));
    RunUntilDone();
    EXPECT_THAT(Trace(), Not(HasSubstr("Message transfered!")));
    EXPECT_THAT(Trace(".1"), HasSubstr("Message transfered!"));
}

// --- Ports.

TEST_F(Run, TakesUpAPortThatComesLater) {
    exchange.replace(0, std::string("[[line]]\n").size(),
                     "[[line]]\nthere_from = \"2001-01-08 10:07:00\"\n");
    Raise("DUTY/1");
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.err, AllOf(HasSubstr("line \"COM 1\" is sick: its device is missing"),
                               HasSubstr("line \"COM 1\" is back")));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    EXPECT_THAT(Stories(), ElementsAre("duty done 1"));
}

TEST_F(Run, KeepsThePagesOfAPortThatNeverComes) {
    exchange.replace(0, std::string("[[line]]\n").size(),
                     "[[line]]\nthere_from = \"2002-01-08 10:07:00\"\n");
    Raise("DUTY/1");
    At(3600, "kill -TERM $PPID");
    EXPECT_THAT(Simulated({"run"}).err, HasSubstr("line \"COM 1\" is sick: its device is missing"));
    EXPECT_THAT(pages, IsEmpty());
    EXPECT_THAT(Stories(), ElementsAre("duty pending 0"));
}

TEST_F(Run, SurvivesADeviceThatVanishes) {
    exchange.replace(0, std::string("[[line]]\n").size(), "[[line]]\nvanish_after = 40\n");
    Raise("DUTY/1");
    EXPECT_EQ(0, RunUntilDone().exit_code);
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
}

}  // namespace
