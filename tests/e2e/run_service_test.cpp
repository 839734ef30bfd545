// `pagerfwd run` as a service: its manager, its journal, its figures, its signals, and a database
// that is replaced under it.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstring>
#include <filesystem>
#include <future>
#include <optional>
#include <thread>

#include "host/process/database_locks.h"
#include "tests/e2e/run_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::Pair;

class RunService : public RunTest {
 protected:
    ~RunService() override {
        unsetenv("NOTIFY_SOCKET");
        unsetenv("JOURNAL_STREAM");
    }
    void EndAt(int second) { At(second, "kill -TERM $PPID"); }
    static std::string LogOf(int32_t alarm) {
        return RunProgram({PAGERFWD_PROGRAM, "log", std::to_string(alarm)}).out;
    }
};

// Hears what the service manager is told, while a program runs.
class Manager {
 public:
    Manager() : file_(socket(AF_UNIX, SOCK_DGRAM, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strcpy(address.sun_path, "manager");
        EXPECT_EQ(0, bind(file_, reinterpret_cast<const sockaddr*>(&address), sizeof address));
        setenv("NOTIFY_SOCKET", std::filesystem::absolute("manager").c_str(), 1);
        const timeval wait{0, 100000};
        setsockopt(file_, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
        thread_ = std::thread([this] { Listen(); });
    }
    ~Manager() { close(file_); }
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;

    std::vector<std::string> Heard() {
        done_ = true;
        thread_.join();
        return heard_;
    }

 private:
    // The program has ended by the time that it is done: all it said is there.
    void Listen() {
        std::array<char, 1000> text{};
        for (;;) {
            const bool last = done_;
            const ssize_t size = recv(file_, text.data(), text.size(), 0);
            if (size > 0) {
                heard_.emplace_back(text.data(), static_cast<size_t>(size));
            } else if (last) {
                return;
            }
        }
    }

    const int file_;
    std::atomic<bool> done_{false};
    std::vector<std::string> heard_;
    std::thread thread_;
};

TEST_F(RunService, TellsItsManagerHowItStands) {
    Raise("DUTY/1");
    EndAt(100);
    Manager manager;
    Simulated({"run"});
    const std::vector<std::string> heard = manager.Heard();
    EXPECT_THAT(heard, Contains("READY=1").Times(1));
    EXPECT_THAT(heard, Contains("STATUS=1 page(s) pending, 0 sent, 0 dialled, 0 failed"));
    EXPECT_THAT(heard, Contains("STATUS=0 page(s) pending, 1 sent, 0 dialled, 0 failed"));
    const auto stopping = std::find(heard.begin(), heard.end(), "STOPPING=1");
    EXPECT_LT(std::find(heard.begin(), heard.end(), "READY=1"), stopping);
    EXPECT_NE(heard.end(), stopping);
}

TEST_F(RunService, GivesEachLineItsPriorityUnderAJournal) {
    Raise("NOBODY/1");
    setenv("JOURNAL_STREAM", "8:1", 1);
    const ProgramRun run = RunUntilDone();
    EXPECT_THAT(run.err, AllOf(HasSubstr("<6>serving ./pagerfwd.db\n"),
                               HasSubstr("<4>warning: alarm "), Not(HasSubstr("2001-01-08"))));
}

TEST_F(RunService, KeepsItsFigures) {
    Raise("DUTY/1");
    EXPECT_EQ(0, Simulated({"run", "--until-done", "--metrics", "figures.prom"}).exit_code);
    EXPECT_THAT(ReadFile("figures.prom"),
                AllOf(HasSubstr("pagerfwd_pages_total{result=\"sent\",port=\"COM 1\"} 1\n"),
                      HasSubstr("pagerfwd_pages_ended_total{end=\"done\"} 1\n"),
                      HasSubstr("pagerfwd_pages_pending 0\n")));
}

TEST_F(RunService, TellsInTheLogOfThePageThatWasOnTheLineAtItsEnd) {
    const int32_t alarm = Raise("DUTY/1");
    EndAt(12);  // it dials
    const ProgramRun run = Simulated({"run"});
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    EXPECT_THAT(LogOf(alarm), HasSubstr("\"duty\": sent ("));
    EXPECT_THAT(run.err, HasSubstr("to \"duty\": done\n"));
}

TEST_F(RunService, ForgetsOldHistory) {
    Execute(
        "INSERT INTO Host_History (at, change, alarm, alarm_group, pager, state, tries)"
        " VALUES (970000000, 'written', '5', 'ops', 'duty', '4', '0'),"
        " (978940000, 'written', '6', 'ops', 'duty', '4', '0')");
    RunUntilDone();
    EXPECT_THAT(Rows("DISTINCT alarm FROM Host_History WHERE alarm <> ''"), ElementsAre("6"));
}

TEST_F(RunService, TellsItsJournalHowEachPageEnded) {
    Raise("ALL/1");
    exchange.replace(exchange.find("numbers = [\"5550101\"]"), 0, "calls = \"busy\"\n");
    const ProgramRun run = RunUntilDone();
    EXPECT_THAT(run.err,
                AllOf(HasSubstr("error: page of alarm 978948000 to \"duty\": given up: its tries "
                                "are used up, and none got through\n"),
                      HasSubstr("warning: page of alarm 978948000 to \"tech\": ended: it was sent, "
                                "and nobody acknowledged\n"),
                      HasSubstr(" to \"tech\": sent (")));
    EXPECT_THAT(run.err, HasSubstr(" s, COM 1)\n"));
    const std::string status = RunProgram({PAGERFWD_PROGRAM, "status"}).out;
    EXPECT_THAT(status, AllOf(HasSubstr(" undelivered "), HasSubstr(" unacknowledged ")));
}

TEST_F(RunService, TellsItsJournalWhoAcknowledged) {
    const int32_t alarm = Raise("TECH/1");
    At(70, Pagerfwd("alarm ack " + std::to_string(alarm) + " >/dev/null"));
    const std::string user = RunProgram({"/usr/bin/id", "-un"}).out;
    EXPECT_THAT(RunUntilDone().err, HasSubstr("(TECH/1): acknowledged by " + user));
}

// Nothing in the database changes meanwhile that would tell that it may be tried again.
TEST_F(RunService, TriesAgainEverySecondWhatTheDatabaseRefusedAndSaysItOnce) {
    Execute(
        "CREATE TRIGGER refuses BEFORE INSERT ON Host_Deliveries"
        " WHEN strftime('%s', 'now') < '978948020' BEGIN SELECT RAISE(ABORT, 'not now'); END");
    Raise("DUTY/1");
    EndAt(100);
    const ProgramRun run = Simulated({"run"});
    EXPECT_THAT(
        run.err,
        HasSubstr("2001-01-08 10:00:20 line \"COM 1\": alarm 978948000 (DUTY/1) to \"duty\""));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    const size_t first = run.err.find("not now; trying again");
    ASSERT_NE(std::string::npos, first);
    EXPECT_EQ(std::string::npos, run.err.find("not now; trying again", first + 1));
}

// The page on the line goes on. The line says what the database refuses it, as the node does.
TEST_F(RunService, TriesAgainWhatIsRefusedWhileSomebodyHoldsTheDatabase) {
    Raise("DUTY/1");
    At(12, HOLD_DATABASE " pagerfwd.db 60");
    EndAt(100);
    const ProgramRun run = Simulated({"run"});
    EXPECT_EQ(0, run.exit_code);
    const std::string line = "line \"COM 1\": [^\n]*/pagerfwd.db: ";
    EXPECT_THAT(run.err, AllOf(ContainsRegex(line + "database is locked; trying again\n"),
                               ContainsRegex(line + "works again\n")));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    EXPECT_THAT(Stories(), ElementsAre("duty done 1"));
}

// That the first line has ended can't be noted; the second is seen to end all the same.
TEST_F(RunService, EndsWithItsLinesWhileSomebodyHoldsTheDatabase) {
    MakeSite("pagerfwd.db", std::string(kSite) +
                                "[[port]]\nname = \"COM 2\"\n[port.pager]\ndial = \"ATDT\"\n"
                                "[port.sms1]\ndial = \"ATDT5550101\"\n");
    exchange += "[[line]]\nport = \"COM 2\"\n";
    At(12, HOLD_DATABASE " pagerfwd.db 3600");
    EndAt(14);
    const ProgramRun run = Simulated({"run"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.err, ContainsRegex("2001-01-08 10:0[0-9]:[0-9]+ ended\n"));
}

// Its second byte is that of a backslash: the display shows one question mark for the two.
TEST_F(RunService, CountsTwoByteCharactersWhereTheSiteIsShiftJis) {
    MakeSite("pagerfwd.db", "encoding = \"shift_jis\"\n" + std::string(kSite) +
                                "[[route]]\ngroups = \"OSAKA/*\"\npagers = [\"osaka\"]\n");
    {
        host::Connection connection("pagerfwd.db");
        RaiseAlarm(connection, {"OSAKA/1", "1", "\x95\x5C", "x"}, kNow);
    }
    RunUntilDone();
    std::ifstream file("report.json");
    EXPECT_EQ("1/?", nlohmann::json::parse(file)["pages"][0]["text"]);
}

// --- A call that is itself the page.

class RunDialled : public RunService {
 protected:
    RunDialled() {
        MakeSite("pagerfwd.db", std::string(kSite) +
                                    "[[pager]]\ndescription = \"bell\"\ntype = \"signal\"\n"
                                    "number = \"5550104@\"\nretries = 0\ndelay = 1\n"
                                    "[[route]]\ngroups = \"BELL/*\"\npagers = [\"bell\"]\n");
        exchange +=
            "[[centre]]\nname = \"signal\"\nprotocol = \"signal\"\nnumbers = [\"5550104\"]\n";
    }
};

TEST_F(RunDialled, IsNotCalledSent) {
    const int32_t alarm = Raise("BELL/1");
    const ProgramRun run = RunUntilDone();
    EXPECT_THAT(run.err, AllOf(HasSubstr("to \"bell\": dialled ("),
                               HasSubstr("nothing confirms it\n"), Not(HasSubstr("sent ("))));
    EXPECT_THAT(LogOf(alarm), AllOf(HasSubstr("\"bell\": dialled ("), Not(HasSubstr("sent"))));
    EXPECT_THAT(RunProgram({PAGERFWD_PROGRAM, "status"}).out, HasSubstr(" dialled "));
}

TEST_F(RunDialled, IsNotCalledSentByATest) {
    const ProgramRun run = Simulated({"test", "bell"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.out, AllOf(HasSubstr("dialled; the call is the page, and nothing confirms"),
                               Not(HasSubstr("sent"))));
    EXPECT_THAT(Simulated({"test", "--json", "bell"}).out,
                AllOf(HasSubstr("\"sent\": false"), HasSubstr("\"dialled\": true")));
}

// --- SIGHUP.

TEST_F(RunService, ReadsAnewAtSighupAndEndsNothing) {
    Raise("DUTY/1");
    At(12, "kill -HUP $PPID");  // it dials
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.err, AllOf(HasSubstr("reading anew, as asked: the ports are the same\n"),
                               Not(HasSubstr("started anew"))));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
}

TEST_F(RunService, ServesNewPortsFromSighupOn) {
    WriteFile("more.toml", std::string(kSite) +
                               "[[port]]\nname = \"COM 2\"\n[port.pager]\ndial = \"ATDT\"\n"
                               "[port.sms1]\ndial = \"ATDT5550101\"\n");
    exchange += "[[line]]\nport = \"COM 2\"\n";
    At(30, Pagerfwd("import more.toml >/dev/null") + "; kill -HUP $PPID");
    EndAt(60);
    const ProgramRun run = Simulated({"run"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("the ports have changed\n"));
    EXPECT_TRUE(std::filesystem::exists("pagerfwd-ttyS1"));
}

// Lines outlive a node that was killed: this process holds what one would hold.
TEST_F(RunService, WaitsForTheLinesOfTheRunBefore) {
    Raise("DUTY/1");
    std::optional<host::LockFile> line_before = host::EngineLock(database);
    ASSERT_TRUE(line_before->TryTake("run"));
    At(30, "touch half-a-minute");
    std::future<ProgramRun> running =
        std::async(std::launch::async, [this] { return RunUntilDone(); });
    while (!std::filesystem::exists("half-a-minute") &&
           running.wait_for(std::chrono::milliseconds(10)) == std::future_status::timeout) {
    }
    line_before.reset();
    const ProgramRun run = running.get();
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.err, HasSubstr("waiting for the lines of the run before"));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
}

// --- A database that is replaced.

TEST_F(RunService, ServesTheDatabaseThatReplacesItsOwn) {
    MakeSite("other.db", kSite);
    {
        host::Connection other("other.db");
        RaiseAlarm(other, {"DUTY/1", "1", "pumps", "x"}, kNow);
        other.Execute("PRAGMA wal_checkpoint(TRUNCATE)");
    }
    At(30, "mv other.db pagerfwd.db; rm -f pagerfwd.db-wal pagerfwd.db-shm");
    EndAt(120);
    const ProgramRun run = Simulated({"run"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.err, HasSubstr("warning: ./pagerfwd.db: replaced by another file"));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    EXPECT_THAT(Stories(), ElementsAre("duty done 1"));
}

TEST_F(RunService, TellsOnceThatItsDatabaseHasGone) {
    At(30, "mv pagerfwd.db away.db");
    At(50, "mv away.db pagerfwd.db");
    EndAt(60);
    const std::string told = Simulated({"run"}).err;
    const std::string text = "error: ./pagerfwd.db: the file has gone";
    const size_t first = told.find(text);
    ASSERT_NE(std::string::npos, first);
    EXPECT_EQ(std::string::npos, told.find(text, first + 1));
    EXPECT_THAT(told, Not(HasSubstr("replaced")));
}

// --- The trace.

TEST_F(RunService, KeepsItsTracesOverManyStarts) {
    Raise("DUTY/1");
    RunUntilDone();
    for (int start = 0; start < 6; ++start) {
        RunUntilDone();
    }
    EXPECT_THAT(Trace(".1"), HasSubstr("Message transfered!"));
    EXPECT_EQ("", Trace(".2"));
}

// As the administrator's guide has it, while a page is on the line.
TEST_F(RunService, CanBeBackedUp) {
    Raise("DUTY/1");
    At(12, "sqlite3 pagerfwd.db \"VACUUM INTO 'backup.db'\"");
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ(1, pages["tap"]);
    EXPECT_THAT(run.err, Not(HasSubstr("error")));
    host::Connection backup("backup.db");
    host::Statement whole(backup, "PRAGMA integrity_check");
    ASSERT_TRUE(whole.Step());
    EXPECT_EQ("ok", whole.Text(0));
    host::Statement pending(backup,
                            "SELECT PagerDescr FROM AlarmFwd_PagerEvents WHERE PagerState = '2'");
    ASSERT_TRUE(pending.Step());
    EXPECT_EQ("duty", pending.Text(0));
}

}  // namespace
