// Two nodes over one real server, their lines in real time: what becomes of a page when a node is
// killed, with its lines or without, stopped and woken up, ended in order, drained. Judged by what
// the centres received.
//
// Each takes about a minute: a page is on its line for some twenty seconds, and no clock is virtual
// here, since the server has none but the real one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <map>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/own_postgres.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/files.h"

namespace {

using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

// A program of a process group of its own, killed at the end.
class Started {
 public:
    Started(std::vector<std::string> words, const std::string& output) {
        process_ = fork();
        if (process_ == 0) {
            setpgid(0, 0);
            FILE* const opened = std::freopen(output.c_str(), "w", stderr);
            if (opened == nullptr || dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
                _exit(1);
            }
            std::vector<char*> pointers;
            for (std::string& word : words) {
                pointers.push_back(word.data());
            }
            pointers.push_back(nullptr);
            execv(pointers[0], pointers.data());
            _exit(1);
        }
        setpgid(process_, process_);
    }
    ~Started() {
        Signal(SIGKILL, true);
        Await();
    }
    Started(const Started&) = delete;
    Started& operator=(const Started&) = delete;

    void Signal(int signal, bool group) const {
        if (process_ > 0) {
            kill(group ? -process_ : process_, signal);
        }
    }
    int Await() {
        int status = 0;
        if (process_ > 0) {
            waitpid(process_, &status, 0);
            process_ = -1;
        }
        return status;
    }

 private:
    pid_t process_ = -1;
};

class TwoHosts : public ::testing::Test {
 protected:
    TwoHosts() {
        setenv("PAGERFWD_DATABASE", database_.c_str(), 1);
        setenv("PAGERFWD_STATE", ".", 1);
        WriteFile("exchange.toml",
                  "[[line]]\nport = \"COM 1\"\n[[line]]\nport = \"COM 2\"\n"
                  "[[centre]]\nname = \"tap\"\nprotocol = \"tap\"\nnumbers = [\"5550101\"]\n");
        exchange_ = std::make_unique<Started>(
            std::vector<std::string>{PAGERSIM_PROGRAM, "serve", "--links", "lines"},
            "exchange.log");
        Until("the lines", [] { return access("lines/ttyS1", F_OK) == 0; });
    }

    void MakeSite(const std::string& more = "") {
        std::string site = more;
        int device = 0;
        for (const std::string node : {"north", "south"}) {
            site += "[[node]]\nname = \"" + node + "\"\n[[port]]\nname = \"" + node +
                    "\"\nnode = \"" + node + "\"\ndevice = \"" +
                    std::filesystem::current_path().string() + "/lines/ttyS" +
                    std::to_string(device++) + "\"\n[port.sms1]\ndial = \"ATDT0,5550101\"\n";
        }
        WriteFile("site.toml", site +
                                   "[[pager]]\ndescription = \"duty\"\ntype = \"sms1\"\n"
                                   "number = \"5550111\"\nretries = 1\ndelay = 1\n"
                                   "[[route]]\npagers = [\"duty\"]\n");
        EXPECT_EQ(0, Pagerfwd({"init"}).exit_code);
        EXPECT_EQ(0, Pagerfwd({"import", "site.toml"}).exit_code);
    }

    static ProgramRun Pagerfwd(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), PAGERFWD_PROGRAM);
        return RunProgram(arguments);
    }
    static std::unique_ptr<Started> Run(const std::string& node) {
        const std::string folder = node + "-host";
        std::filesystem::create_directory(folder);
        return std::make_unique<Started>(
            std::vector<std::string>{PAGERFWD_PROGRAM, "--state", folder, "--locks", folder, "run",
                                     "--node", node},
            node + ".log");
    }
    void Raise(int count) {
        for (int alarm = 1; alarm <= count; ++alarm) {
            Pagerfwd({"alarm", "raise", "alarm " + std::to_string(alarm)});
        }
    }

    std::string Ask(const std::string& sql) const {
        return test_support::OwnPostgres::Ask(database_, sql);
    }
    // The node that deals pages out looks at the other's line once a second.
    void UntilBothServe() const {
        Until("both", [&] { return Ask("SELECT count(*) FROM Host_Lines WHERE pid > 0") == "2"; });
        std::this_thread::sleep_for(std::chrono::seconds(3));
    }
    // Which line has a page on it, in the middle of the dialogue with the centre.
    void UntilOnLine(const std::string& line) const {
        Until("a page on " + line, [&] {
            return Ask("SELECT doing FROM Host_Lines WHERE line = '" + line + "'").find(": ") !=
                       std::string::npos &&
                   Ask("SELECT page_pager FROM Host_Lines WHERE line = '" + line + "'") == "duty";
        });
    }
    void UntilAllLeft() const {
        Until("the end of all pages",
              [&] { return Ask("SELECT count(*) FROM AlarmLog WHERE pagerstate <> '4'") == "0"; });
    }
    static void Until(const std::string& what, const std::function<bool()>& is_so) {
        constexpr std::chrono::seconds kLongest{240};
        const auto begin = std::chrono::steady_clock::now();
        while (!is_so()) {
            ASSERT_LT(std::chrono::steady_clock::now() - begin, kLongest) << what;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
    }
    // What the centre has received: how often each alarm.
    std::map<std::string, int> Received() {
        exchange_->Signal(SIGTERM, false);
        exchange_->Await();
        std::map<std::string, int> received;
        const std::string text = ReadFile("exchange.log");
        const std::regex page("5550111: \"[^\"]*/(alarm [0-9]+)");
        for (std::sregex_iterator one(text.begin(), text.end(), page), end; one != end; ++one) {
            ++received[(*one)[1]];
        }
        return received;
    }
    // None lost; one twice only where its history has named it before.
    void Judge(int alarms) {
        const std::map<std::string, int> received = Received();
        int named =
            std::stoi(Ask("SELECT count(*) FROM Host_History WHERE note LIKE '%may have%'"));
        EXPECT_EQ(static_cast<size_t>(alarms), received.size());
        for (const auto& [alarm, count] : received) {
            named -= count - 1;
        }
        EXPECT_GE(named, 0) << "a page was sent twice, and nobody had said that it might be";
    }

    const test_support::TempDir folder_;
    const std::string database_ = test_support::TheServer().MakeDatabase();
    std::unique_ptr<Started> exchange_;
};

TEST_F(TwoHosts, LoseNoPageWhenOneIsKilledWithItsLines) {
    MakeSite();
    const auto north = Run("north");
    const auto south = Run("south");
    UntilBothServe();
    Raise(2);
    UntilOnLine("north");
    north->Signal(SIGKILL, true);
    const auto killed = std::chrono::steady_clock::now();
    Until("the takeover",
          [&] { return Ask("SELECT count(*) FROM Host_History WHERE change = 'moved'") != "0"; });
    EXPECT_LT(std::chrono::steady_clock::now() - killed, std::chrono::seconds(8));
    UntilAllLeft();
    EXPECT_THAT(ReadFile("south.log"), HasSubstr("was on its line, and may have been sent"));
    Judge(2);
}

TEST_F(TwoHosts, LoseNoPageWhenOnlyTheNodeIsKilled) {
    MakeSite();
    const auto north = Run("north");
    const auto south = Run("south");
    UntilBothServe();
    Raise(2);
    UntilOnLine("north");
    north->Signal(SIGKILL, false);
    UntilAllLeft();
    Judge(2);
}

TEST_F(TwoHosts, LoseNoPageWhenOneIsStoppedForLongerThanItsLease) {
    MakeSite();
    const auto north = Run("north");
    const auto south = Run("south");
    UntilBothServe();
    Raise(2);
    UntilOnLine("north");
    north->Signal(SIGSTOP, true);
    Until("the takeover",
          [&] { return Ask("SELECT count(*) FROM Host_History WHERE change = 'moved'") != "0"; });
    north->Signal(SIGCONT, true);
    UntilAllLeft();
    EXPECT_THAT(ReadFile("north.log"), HasSubstr("it begins anew"));
    EXPECT_EQ("3", Ask("SELECT term FROM Host_Nodes WHERE node = 'north'"));
    Judge(2);
}

TEST_F(TwoHosts, SendNoPageTwiceWhenOneIsDrained) {
    MakeSite();
    const auto north = Run("north");
    const auto south = Run("south");
    UntilBothServe();
    Raise(2);
    UntilOnLine("north");
    EXPECT_EQ(0, Pagerfwd({"node", "drain", "north"}).exit_code);
    UntilAllLeft();
    EXPECT_EQ("0", Ask("SELECT count(*) FROM Host_History WHERE note LIKE '%may have%'"));
    Judge(2);
}

TEST_F(TwoHosts, SendNoPageTwiceWhenOneEndsInOrder) {
    MakeSite();
    auto north = Run("north");
    const auto south = Run("south");
    UntilBothServe();
    Raise(2);
    UntilOnLine("north");
    north->Signal(SIGTERM, false);
    north->Await();
    UntilAllLeft();
    EXPECT_EQ("0", Ask("SELECT count(*) FROM Host_History WHERE note LIKE '%may have%'"));
    Judge(2);
}

TEST_F(TwoHosts, AskAboutAPageThatMayHaveLeft) {
    MakeSite("[site]\nunknown_outcome = \"ask\"\n");
    const auto north = Run("north");
    Until("north", [&] { return Ask("SELECT count(*) FROM Host_Lines WHERE pid > 0") == "1"; });
    Raise(1);
    UntilOnLine("north");
    north->Signal(SIGKILL, true);
    const auto south = Run("south");
    Until("the question", [] {
        return Pagerfwd({"page", "list"}).out.find("outcome unknown") != std::string::npos;
    });
    const std::string alarm = Ask("SELECT alarmlogID FROM AlarmLog");
    EXPECT_EQ(0, Pagerfwd({"page", "resend", alarm, "duty"}).exit_code);
    UntilAllLeft();
    Judge(1);
}

TEST_F(TwoHosts, HaveTwoNames) {
    MakeSite();
    const auto north = Run("north");
    Until("north", [&] { return Ask("SELECT count(*) FROM Host_Lines WHERE pid > 0") == "1"; });
    std::filesystem::create_directory("south-host");
    const ProgramRun second =
        Pagerfwd({"--state", "south-host", "--locks", ".", "run", "--node", "north"});
    EXPECT_EQ(1, second.exit_code);
    EXPECT_THAT(second.err, HasSubstr("node \"north\" runs already: "));
}

// Two that start at one instant: each has its term, and one of them takes the alarms up.
TEST_F(TwoHosts, StartAtOneInstantOnAnEmptySite) {
    MakeSite();
    const auto north = Run("north");
    const auto south = Run("south");
    UntilBothServe();
    EXPECT_EQ("2", Ask("SELECT count(*) FROM Host_Nodes WHERE term = 1"));
    EXPECT_EQ("1", Ask("SELECT count(*) FROM Host_Nodes WHERE leads = 1"));
    Raise(2);
    UntilAllLeft();
    Judge(2);
}

}  // namespace
