// Two hosts for tests.
#include "tests/proof/two_hosts.h"

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <thread>

#include "tests/proof/write_watch.h"
#include "tests/unit/host/files.h"

namespace proof {

TwoHosts::TwoHosts() {
    setenv("PAGERFWD_DATABASE", database_.c_str(), 1);
    setenv("PAGERFWD_STATE", ".", 1);
    WriteFile("exchange.toml",
              "[[line]]\nport = \"COM 1\"\n[[line]]\nport = \"COM 2\"\n"
              "[[centre]]\nname = \"tap\"\nprotocol = \"tap\"\nnumbers = [\"5550101\"]\n");
    exchange_ = std::make_unique<StartedProgram>(
        std::vector<std::string>{PAGERSIM_PROGRAM, "serve", "--links", "lines"}, "exchange.log");
    Until("the lines", [] { return access("lines/ttyS1", F_OK) == 0; });
}

// Eight data bits: a pty has no others, and one that a killed process has left set refuses settings
// that would change nothing else.
void TwoHosts::MakeSite(const std::string& more) {
    std::string site = more;
    int device = 0;
    for (const std::string node : {"north", "south"}) {
        site += "[[node]]\nname = \"" + node + "\"\n[[port]]\nname = \"" + node + "\"\nnode = \"" +
                node + "\"\ndevice = \"" + std::filesystem::current_path().string() +
                "/lines/ttyS" + std::to_string(device++) +
                "\"\n[port.sms1]\ndial = \"ATDT0,5550101\"\ndata = 8\nparity = \"none\"\n";
    }
    WriteFile("site.toml", site +
                               "[[pager]]\ndescription = \"duty\"\ntype = \"sms1\"\n"
                               "number = \"5550111\"\nretries = 1\ndelay = 1\n"
                               "[[route]]\npagers = [\"duty\"]\n");
    EXPECT_EQ(0, Pagerfwd({"init"}).exit_code);
    WatchWrites(database_);
    EXPECT_EQ(0, Pagerfwd({"import", "site.toml"}).exit_code);
}

ProgramRun TwoHosts::Pagerfwd(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), PAGERFWD_PROGRAM);
    return RunProgram(arguments);
}

std::unique_ptr<StartedProgram> TwoHosts::Run(const std::string& node,
                                              const std::vector<std::string>& more,
                                              const std::string& program) {
    const std::string folder = node + "-host";
    std::filesystem::create_directory(folder);
    return std::make_unique<StartedProgram>(
        std::vector<std::string>{program, "--state", folder, "--locks", folder, "run", "--node",
                                 node},
        node + ".log", more);
}

void TwoHosts::Raise(int count, const std::string& program) {
    for (int left = count; left > 0; --left) {
        RunProgram({program, "alarm", "raise", "alarm " + std::to_string(++raised_)});
    }
}

void TwoHosts::BeginBoth(const std::vector<std::string>& more_of_north,
                         const std::vector<std::string>& more_of_south) {
    MakeSite();
    north_ = Run("north", more_of_north);
    south_ = Run("south", more_of_south);
    UntilBothServe();
    Raise(2);
    UntilOnLine("north");
    UntilOnLine("south");
}

std::string TwoHosts::Ask(const std::string& sql) const {
    return test_support::OwnPostgres::Ask(database_, sql);
}

void TwoHosts::UntilBothServe() const {
    Until("both", [&] { return Ask("SELECT count(*) FROM Host_Lines WHERE pid > 0") == "2"; });
    std::this_thread::sleep_for(std::chrono::seconds(3));
}

void TwoHosts::UntilOnLine(const std::string& line) const {
    Until("a page on " + line, [&] {
        return Ask("SELECT doing FROM Host_Lines WHERE line = '" + line + "'").find(": ") !=
                   std::string::npos &&
               Ask("SELECT page_pager FROM Host_Lines WHERE line = '" + line + "'") == "duty";
    });
}

void TwoHosts::UntilTakenOver() const {
    Until("the takeover",
          [&] { return Ask("SELECT count(*) FROM Host_History WHERE change = 'moved'") != "0"; });
}

void TwoHosts::UntilAllLeft() const {
    Until("the end of all pages",
          [&] { return Ask("SELECT count(*) FROM AlarmLog WHERE pagerstate <> '4'") == "0"; });
}

void TwoHosts::Until(const std::string& what, const std::function<bool()>& is_so) {
    constexpr std::chrono::seconds kLongest{240};
    const auto begin = std::chrono::steady_clock::now();
    while (!is_so()) {
        ASSERT_LT(std::chrono::steady_clock::now() - begin, kLongest) << what;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

std::map<std::string, int> TwoHosts::Received() {
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

void TwoHosts::Judge(int alarms) {
    const std::map<std::string, int> received = Received();
    int named = std::stoi(Ask("SELECT count(*) FROM Host_History WHERE note LIKE '%may have%'"));
    EXPECT_EQ(static_cast<size_t>(alarms), received.size());
    for (const auto& [alarm, count] : received) {
        named -= count - 1;
    }
    EXPECT_GE(named, 0) << "a page was sent twice, and nobody had said that it might be";
    EXPECT_EQ("0", Ask("SELECT count(*) FROM (SELECT 1 FROM Host_History"
                       " WHERE note LIKE '%may have%' GROUP BY line, at HAVING count(*) > 1) AS s"))
        << "more than one page of a line";
    EXPECT_EQ("", LateWrites(database_)) << "written behind the end of the writer's term";
    EXPECT_LT(0, WritesInTerms(database_));
}

}  // namespace proof
