// `pagerfwd run` with several lines: what they do at once, and what becomes of the pages of one
// that is dead, killed or stuck.
#include <filesystem>
#include <set>

#include "tests/e2e/run_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ContainsRegex;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Le;
using ::testing::Not;
using ::testing::Pair;
using ::testing::SizeIs;

class RunLines : public RunTest {
 protected:
    RunLines() { Serve(2); }

    // So many lines, "COM 1" and on, each with a modem; "duty" is bound to none, "bound" to COM 1.
    void Serve(int lines) {
        std::string site;
        exchange = "[[centre]]\nname = \"tap\"\nprotocol = \"tap\"\nnumbers = [\"5550101\"]\n";
        for (int line = 1; line <= lines; ++line) {
            site += "[[port]]\nname = \"COM " + std::to_string(line) + "\"\ndevice = \"/dev/ttyS" +
                    std::to_string(line - 1) + "\"\n[port.sms1]\ndial = \"ATDT0,5550101\"\n";
            exchange += "[[line]]\nport = \"COM " + std::to_string(line) + "\"\n";
        }
        for (const char* pager : {"duty", "bound"}) {
            site += std::string("[[pager]]\ndescription = \"") + pager +
                    "\"\ntype = \"sms1\"\nnumber = \"5550111\"\nretries = 2\ndelay = 1\n";
        }
        site +=
            "port = \"COM 1\"\n[[route]]\ngroups = \"DUTY/*\"\npagers = [\"duty\"]\n"
            "[[route]]\ngroups = \"BOUND/*\"\npagers = [\"bound\"]\n";
        MakeSite(database, site);
    }

    // Adds a setting to the modem of a line.
    void Modem(const std::string& port, const std::string& setting) {
        const std::string line = "port = \"" + port + "\"\n";
        exchange.insert(exchange.find(line) + line.size(), setting + "\n");
    }

    // The process of a line, for a command. A shell reads the words of a process without what
    // stands between them.
    static std::string ProcessOf(const std::string& port) {
        return "$(read all </proc/$PPID/task/$PPID/children; for one in $all; do"
               " read -r words </proc/$one/cmdline; case $words in (*'serve-line--line=" +
               port + "--'*) echo $one;; esac; done)";
    }

    static std::vector<std::string> Sends() {
        return Rows("outcome || ' ' || result || ' ' || port FROM Host_Sends ORDER BY row_id");
    }

    struct Call {
        std::string line;
        double from;
        double to;
    };
    static std::vector<Call> Calls() {
        std::vector<Call> calls;
        std::ifstream file("report.json");
        const nlohmann::json report = nlohmann::json::parse(file);
        for (const nlohmann::json& call : report["calls"]) {
            calls.push_back({call["line"].get<std::string>(), call["from_seconds"].get<double>(),
                             call["to_seconds"].get<double>()});
        }
        return calls;
    }
};

TEST_F(RunLines, WorkAtOnce) {
    Raise("DUTY/1");
    Raise("DUTY/2");
    EXPECT_EQ(0, RunUntilDone().exit_code);
    const std::vector<Call> calls = Calls();
    ASSERT_EQ(2U, calls.size());
    EXPECT_NE(calls[0].line, calls[1].line);
    EXPECT_LT(calls[0].from, calls[1].to);
    EXPECT_LT(calls[1].from, calls[0].to);
    EXPECT_THAT(Stories(), ElementsAre("duty done 1", "duty done 1"));
}

TEST_F(RunLines, HaveThePagesThatAreBoundToThem) {
    Raise("BOUND/1");
    Raise("BOUND/2");
    EXPECT_EQ(0, RunUntilDone().exit_code);
    EXPECT_THAT(Sends(), ElementsAre("sent 0 COM 1", "sent 0 COM 1"));
}

TEST_F(RunLines, HaveTracesOfTheirOwn) {
    Raise("DUTY/1");
    Raise("DUTY/2");
    RunUntilDone();
    for (const char* line : {"COM%201", "COM%202"}) {
        EXPECT_THAT(ReadFile(Lines() + "/" + std::string(line) + "/pageprot.txt"),
                    HasSubstr("Message transfered!"));
    }
    EXPECT_FALSE(std::filesystem::exists("pageprot.txt"));
}

TEST_F(RunLines, MayHaveAnyNameAndADeviceAnywhere) {
    MakeSite(database,
             "[[port]]\nname = \"north\"\ndevice = \"/dev/ttyS4\"\n[port.sms1]\n"
             "dial = \"ATDT0,5550101\"\n[[pager]]\ndescription = \"duty\"\ntype = \"sms1\"\n"
             "number = \"5550111\"\nport = \"north\"\n[[route]]\npagers = [\"duty\"]\n");
    exchange += "[[line]]\nport = \"COM 5\"\n";
    Raise("DUTY/1");
    EXPECT_EQ(0, RunUntilDone().exit_code);
    EXPECT_THAT(Sends(), ElementsAre("sent 0 north"));
    EXPECT_EQ("COM 5", Calls().at(0).line);
    EXPECT_THAT(ReadFile(Lines() + "/north/pageprot.txt"), HasSubstr("COM Name: COM 1"));
}

TEST_F(RunLines, MayHaveNamesThatAreNoneOfFoldersAndThatLookLikeOptions) {
    const std::vector<std::string> names = {"--ask", "-n", "..", "../../tmp", "COM 1", "com 1"};
    std::string site;
    exchange = "[[centre]]\nname = \"tap\"\nprotocol = \"tap\"\nnumbers = [\"5550101\"]\n";
    for (size_t line = 0; line < names.size(); ++line) {
        const std::string pager = "of " + names[line];
        site += "[[port]]\nname = \"" + names[line] + "\"\ndevice = \"/dev/ttyS" +
                std::to_string(line) + "\"\n[port.sms1]\ndial = \"ATDT0,5550101\"\n" +
                "[[pager]]\ndescription = \"" + pager + "\"\ntype = \"sms1\"\nport = \"" +
                names[line] + "\"\nnumber = \"5550111\"\nretries = 0\ndelay = 1\n" +
                "[[route]]\ngroups = \"ALL/*\"\npagers = [\"" + pager + "\"]\n";
        exchange += "[[line]]\nport = \"COM " + std::to_string(line + 1) + "\"\n";
    }
    MakeSite("odd.db", site);
    RunProgram({PAGERFWD_PROGRAM, "--database", "odd.db", "alarm", "raise", "--group", "ALL/1",
                "--server", "s", "x"});
    const ProgramRun run = Simulated({"--database", "odd.db", "run", "--until-done"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    for (const std::string& name : names) {
        EXPECT_THAT(run.err, HasSubstr("to \"of " + name + "\": sent (24 s, " + name + ")\n"));
    }
    EXPECT_THAT(pages, ElementsAre(Pair("tap", names.size())));
}

TEST_F(RunLines, MayBeForty) {
    constexpr int kLines = 40;
    Serve(kLines);
    for (int alarm = 1; alarm <= kLines; ++alarm) {
        Raise("DUTY/" + std::to_string(alarm));
    }
    EXPECT_EQ(0, RunUntilDone().exit_code);
    EXPECT_THAT(Rows("count(DISTINCT port) FROM Host_Sends WHERE outcome = 'sent'"),
                ElementsAre(std::to_string(kLines)));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", kLines)));
    EXPECT_GT(40, std::stol(Rows("max(at) FROM Host_Sends").front()) - kNow) << "a page takes 24 s";
}

// --- A line that is dead.

class RunDeadLine : public RunLines, public ::testing::WithParamInterface<const char*> {};

TEST_P(RunDeadLine, HoldsUpNoOtherAndItsPagesGoByIt) {
    Modem("COM 1", GetParam());
    for (int alarm = 1; alarm <= 6; ++alarm) {
        Raise("DUTY/" + std::to_string(alarm));
    }
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.err, HasSubstr("error: line \"COM 1\" is sick: "));
    EXPECT_THAT(run.err, Not(HasSubstr("line \"COM 2\" is")));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 6)));
    EXPECT_EQ(std::vector<std::string>(6, "duty done 1"), Stories());
    EXPECT_THAT(Rows("line FROM Host_History WHERE change = 'moved'"), Contains("COM 1"));
    EXPECT_THAT(Rows("CASE WHEN max(at) - (SELECT since FROM Host_Lines WHERE line = 'COM 1') <= 60"
                     " THEN 'soon' END FROM Host_History WHERE change = 'moved'"),
                ElementsAre("soon"))
        << run.err;
    for (const Call& call : Calls()) {
        EXPECT_EQ("COM 2", call.line);
    }
}

INSTANTIATE_TEST_SUITE_P(Since, RunDeadLine,
                         ::testing::Values("powered = false", "dial_tone = false",
                                           "there_until = \"2001-01-08 10:00:05\""));

TEST_F(RunLines, KeepThePagesThatAreBoundToThemUntilTheyAreBack) {
    Modem("COM 1", "there_from = \"2001-01-08 10:20:00\"");
    Raise("BOUND/1");
    Raise("DUTY/1");
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.err, AllOf(HasSubstr("error: line \"COM 1\" is sick: its device is missing"),
                               HasSubstr("line \"COM 1\" is back\n")));
    EXPECT_THAT(Stories(), ElementsAre("bound done 1", "duty done 1"));
    EXPECT_THAT(Rows("port FROM Host_Sends WHERE outcome = 'sent' ORDER BY row_id"),
                ElementsAre("COM 2", "COM 1"));
}

TEST_F(RunLines, AreSickWhereTheirFolderIsInSomebodysWayAndHoldUpNoOther) {
    std::filesystem::create_directory(Lines());
    WriteFile(Lines() + "/COM%201", "");
    Raise("DUTY/1");
    const ProgramRun run = RunUntilDone();
    EXPECT_THAT(run.err, HasSubstr("error: line \"COM 1\" is sick: "));
    EXPECT_THAT(run.err, HasSubstr("the folder can't be used: it is a link, or no folder"));
    EXPECT_THAT(Sends(), ElementsAre("sent 0 COM 2"));
}

TEST_F(RunLines, AreMissedWithinSecondsAndBackWithinSeconds) {
    Modem("COM 1", "there_until = \"2001-01-08 10:01:00\"");
    Modem("COM 2", "there_from = \"2001-01-08 10:02:00\"");
    At(180, "kill -TERM $PPID");
    const std::string said = Simulated({"run"}).err;
    EXPECT_THAT(said, HasSubstr("10:00:00 error: line \"COM 2\" is sick: its device is missing"));
    EXPECT_THAT(said,
                ContainsRegex("10:01:0[0-2] error: line .COM 1. is sick: its device is miss"));
    EXPECT_THAT(said, ContainsRegex("10:02:0[0-5] line .COM 2. is back"));
}

// Killed once with a page that could not be finished, and twice by somebody.
TEST_F(RunLines, AreNotStuckWhereTheyAreKilledOnceTheirDeviceIsBack) {
    Modem("COM 1", "there_until = \"2001-01-08 10:00:12\"\nthere_from = \"2001-01-08 10:02:00\"");
    Raise("DUTY/1");
    Raise("DUTY/2");
    for (const int second : {300, 400}) {
        At(second, "read lines </proc/$PPID/task/$PPID/children; kill -KILL $lines");
    }
    At(500, "kill -TERM $PPID");
    const std::string said = Simulated({"run"}).err;
    EXPECT_THAT(said, HasSubstr("line \"COM 1\": its page can't be finished"));
    EXPECT_THAT(said, HasSubstr("line \"COM 1\": its process was killed; it is started anew"));
    EXPECT_THAT(said, Not(HasSubstr("it gets stuck")));
}

TEST_F(RunLines, TellSinceWhenTheyHaveNothingToDo) {
    Raise("DUTY/1");
    At(300, Pagerfwd("line list --json >lines"));
    At(301, "kill -TERM $PPID");
    Simulated({"run"});
    for (const auto& line : nlohmann::json::parse(ReadFile("lines"))) {
        EXPECT_EQ("idle", line["doing"]);
        EXPECT_GT("2001-01-08 10:01:00", line["doing_since"].get<std::string>());
    }
}

TEST_F(RunLines, AreStartedAnewOnceWhereTheirSettingsChange) {
    std::string changed = ReadFile("site.toml");
    for (size_t at; (at = changed.find("ATDT0,")) != std::string::npos;) {
        changed.replace(at, 6, "ATDP0,");
    }
    WriteFile("changed.toml", changed);
    At(30, Pagerfwd("import changed.toml >changed") + "; kill -HUP $PPID");
    At(300, Pagerfwd("line list --json >lines"));
    At(301, "kill -TERM $PPID");
    Simulated({"run"});
    for (const auto& line : nlohmann::json::parse(ReadFile("lines"))) {
        EXPECT_EQ("idle", line["doing"]);
        EXPECT_LT("2001-01-08 10:00:29", line["doing_since"].get<std::string>());
        EXPECT_GT("2001-01-08 10:01:00", line["doing_since"].get<std::string>());
    }
}

TEST_F(RunLines, ShowTheLatestReasonWhyTheyAreSick) {
    Modem("COM 2", "there_from = \"2001-01-08 10:02:00\"\npowered = false");
    At(100, Pagerfwd("line list >before"));
    At(300, Pagerfwd("line list >after"));
    At(301, "kill -TERM $PPID");
    Simulated({"run"});
    EXPECT_THAT(ReadFile("before"), HasSubstr("its device is missing"));
    EXPECT_THAT(ReadFile("after"), HasSubstr("its modem doesn't answer"));
}

TEST_F(RunLines, LoseTheirPagesWithinAMinuteWhenTheirDeviceIsPulledInACall) {
    Modem("COM 1", "there_until = \"2001-01-08 10:00:12\"");
    Raise("DUTY/1");
    Raise("DUTY/2");
    const ProgramRun run = RunUntilDone();
    EXPECT_THAT(run.err, HasSubstr("line \"COM 1\": its page can't be finished; its process is "
                                   "killed"));
    EXPECT_THAT(Stories(), ElementsAre("duty done 1", "duty done 1"));
    EXPECT_GT(72, Calls().back().from) << run.err;
}

TEST_F(RunLines, AreToldOnceWhenTheyAreSick) {
    Modem("COM 1", "powered = false");
    for (int alarm = 1; alarm <= 4; ++alarm) {
        Raise("BOUND/" + std::to_string(alarm));
    }
    At(4000, "kill -TERM $PPID");
    const std::string said = Simulated({"run"}).err;
    const std::string once = "line \"COM 1\" is sick: its modem doesn't answer";
    const size_t first = said.find(once);
    ASSERT_NE(std::string::npos, first);
    EXPECT_EQ(std::string::npos, said.find(once, first + 1));
    // The next page is on the line by the time that the node knows.
    EXPECT_THAT(Sends(), AllOf(SizeIs(Le(3)), Each("not sent 8 COM 1")));
    EXPECT_THAT(Rows("health || ': ' || reason FROM Host_Lines WHERE line = 'COM 1'"),
                ElementsAre("sick: its modem doesn't answer"));
}

TEST_F(RunLines, AreSickSinceTheyFellSickWhateverIsFoundOutLater) {
    Modem("COM 1", "powered = false");
    for (const int second : {5, 8, 11}) {
        At(second, "kill -KILL " + ProcessOf("COM 1"));
    }
    At(200, "kill -TERM $PPID");
    Simulated({"run"});
    EXPECT_THAT(Rows("reason || CASE WHEN since - 978948000 < 20 THEN ', soon' END FROM Host_Lines"
                     " WHERE line = 'COM 1'"),
                ElementsAre("its modem doesn't answer, soon"));
}

// --- Processes that are killed.

TEST_F(RunLines, LoseNoPageWhenOneIsKilled) {
    Raise("BOUND/1");
    At(12, "kill -KILL " + ProcessOf("COM 1"));  // it dials
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.err, HasSubstr("line \"COM 1\": its process was killed; it is started anew"));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    EXPECT_THAT(Stories(), ElementsAre("bound done 1"));
    EXPECT_THAT(Sends(), ElementsAre("cut off 0 COM 1", "sent 0 COM 1"));
}

TEST_F(RunLines, FinishThePageOnTheLineWhenTheNodeIsKilledAndTheNextWaits) {
    Raise("BOUND/1");
    Raise("BOUND/2");
    At(12, "kill -KILL $PPID; " + Pagerfwd("run --until-done") + " 2>second.txt");
    EXPECT_EQ(128 + 9, Simulated({"run"}).exit_code);
    const std::string said = ReadFile("second.txt");
    EXPECT_THAT(said, HasSubstr("10:00:12 waiting for the lines of the run before"));
    EXPECT_THAT(said, Not(HasSubstr("10:00:13 serving")));
    EXPECT_THAT(said, HasSubstr("ended\n"));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 2)));
    EXPECT_THAT(Stories(), ElementsAre("bound done 1", "bound done 1"));
}

// --- A library that is stuck for good.

TEST_F(RunLines, AreStartedAnewWhereTheTraceCantBeWritten) {
    Raise("BOUND/1");
    const std::string trace = Lines() + "/COM%201/pageprot.txt";
    At(12, "rm " + trace + "; mkdir " + trace);
    At(100, Pagerfwd("alarm raise --group BOUND/2 --server s x >/dev/null"));
    At(200, "rmdir " + trace);
    At(1000, "kill -TERM $PPID");
    const ProgramRun run = Simulated({"run"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.err, HasSubstr("line \"COM 1\" makes no progress; its process is killed"));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 2))) << run.err;
    EXPECT_THAT(Stories(), ElementsAre("bound done 1", "bound done 1"));
}

// --- Storms.

// Nobody writes a trace while there is nothing to do.
TEST_F(RunLines, AreNotTakenForStuckByTheFirstPageInALongTime) {
    At(1200, Pagerfwd("alarm raise --group BOUND/2 --server s x >/dev/null"));
    At(1300, "kill -TERM $PPID");
    const ProgramRun run = Simulated({"run"});
    EXPECT_THAT(run.err, HasSubstr("to \"bound\": sent (24 s, COM 1)"));
    EXPECT_THAT(run.err, Not(HasSubstr("started anew")));
}

// A library's round over its pages isn't interrupted: the guide says how long a first page waits
// for one. Two of three pages are due again when it begins, and the third is when the next does.
TEST_F(RunLines, LetAFirstPageWaitForTheRepeatsOfOneRoundAndNoMore) {
    constexpr int kRepeated = 3;
    MakeSite(database, kSite);  // "tech" is paged twice, a minute apart
    exchange += "[[centre]]\nname = \"plain\"\nprotocol = \"plain\"\nnumbers = [\"5550100\"]\n";
    for (int alarm = 0; alarm < kRepeated; ++alarm) {
        Raise("TECH/" + std::to_string(alarm));
    }
    // The first of the two is on the line.
    At(78, Pagerfwd("alarm raise --group DUTY/1 --severity critical --server s x >/dev/null"));
    EXPECT_EQ(0, RunUntilDone().exit_code);
    EXPECT_THAT(Rows("pager FROM Host_Sends ORDER BY row_id"),
                ElementsAre("tech", "tech", "tech", "tech", "tech", "duty", "tech"));
}

TEST_F(RunLines, SendAStormsFirstPagesAsFastAsTheLinesCanAndTheSevereFirst) {
    constexpr int kLines = 4;
    constexpr int kAlarms = 100;
    Serve(kLines);
    Raise("DUTY/0");
    RunUntilDone();
    const double page = Rows("seconds FROM Host_Sends").empty()
                            ? 0
                            : std::stod(Rows("seconds FROM Host_Sends").front());
    ASSERT_LT(0, page);
    const std::string before = Rows("max(row_id) FROM Host_Sends").front();
    const time_t begun = std::stol(Rows("max(at) FROM Host_Sends").front());
    {
        host::Connection connection(database);
        for (int alarm = 0; alarm < kAlarms; ++alarm) {
            RaiseAlarm(connection,
                       {"DUTY/" + std::to_string(alarm), alarm % 10 == 9 ? "1" : "3", "pumps", "x"},
                       kNow);
        }
    }
    EXPECT_EQ(0, RunUntilDone().exit_code);
    const std::string sends = " FROM Host_Sends WHERE outcome = 'sent' AND row_id > " + before;
    EXPECT_THAT(Rows("count(DISTINCT alarm)" + sends), ElementsAre("100"));
    const double took = static_cast<double>(std::stol(Rows("max(at)" + sends).front()) - begun);
    EXPECT_THAT(took, Le(double{kAlarms} / kLines * page * 1.1));
    // Ten are critical; the last of them leaves when each line has had its share.
    const std::string critical = sends +
                                 " AND alarm IN (SELECT alarmlogID FROM AlarmLog"
                                 "  WHERE severity = '1')";
    const double severe =
        static_cast<double>(std::stol(Rows("max(at)" + critical).front()) - begun);
    EXPECT_THAT(severe, Le(3 * page * 1.1 + 2));
}

}  // namespace
