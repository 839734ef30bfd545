// Who is told how the node goes: notices on the standard input of a command, while pages go on, and
// the beat of every minute.
#include <sstream>

#include "tests/e2e/run_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Pair;

class Alerts : public RunTest {
 protected:
    void EndAt(int second) { At(second, "kill -TERM $PPID"); }

    // The usual site, and what is before it.
    static void MakeSiteWith(const std::string& before) {
        WriteFile("site.toml", before + kSite);
        const ProgramRun run = RunProgram({PAGERFWD_PROGRAM, "import", "site.toml"});
        ASSERT_EQ(0, run.exit_code) << run.err;
    }
    // "over: line-sick: ...", one for each notice.
    static std::vector<std::string> Told() {
        std::vector<std::string> told;
        std::istringstream lines(ReadFile("told"));
        for (std::string line; std::getline(lines, line);) {
            const auto event = nlohmann::json::parse(line);
            told.push_back((event["over"].get<bool>() ? "over: " : "") +
                           event["kind"].get<std::string>() + ": " +
                           event["text"].get<std::string>());
        }
        return told;
    }

    static constexpr const char* kKeep =
        "[notify]\ncommand = [\"/bin/sh\", \"-c\", \"cat >>told\"]\n";
};

TEST_F(Alerts, TellOfALineThatIsSickAndBack) {
    MakeSiteWith(std::string(kKeep) +
                 "[[port]]\nname = \"north\"\ndevice = \"/dev/ttyS5\"\n"
                 "[port.sms1]\ndial = \"ATDT0,5550101\"\n");
    exchange +=
        "[[line]]\nport = \"COM 6\"\nthere_until = \"2001-01-08 10:00:01\"\n"
        "there_from = \"2001-01-08 10:20:00\"\n";
    Raise("DUTY/1");
    Raise("DUTY/2");
    EndAt(2400);
    const ProgramRun run = Simulated({"run"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(Told(), ElementsAre(HasSubstr("line-sick: line \"north\" is sick: "),
                                    "over: line-sick: line \"north\" is back"))
        << run.err;
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 2))) << run.err;
}

TEST_F(Alerts, TellOfWhatNobodyGot) {
    MakeSiteWith(kKeep);
    const int32_t nobodys = Raise("NOBODY/1");
    exchange.replace(exchange.find("5550101"), 7, "5550109");
    const int32_t dead = Raise("DUTY/1");
    const ProgramRun run = RunUntilDone();
    const std::string alarm = "alarm " + std::to_string(dead) + " (DUTY/1)";
    EXPECT_THAT(Told(), ElementsAre("alarm-unheard: alarm " + std::to_string(nobodys) +
                                        " (NOBODY/1) reached nobody: it led to no pager",
                                    "page-given-up: page of " + alarm +
                                        " to \"duty\": given up, none of its tries got through",
                                    "alarm-unheard: " + alarm +
                                        " reached nobody: no page of it got through"))
        << run.err;
}

TEST_F(Alerts, HoldUpNoPageWhereTheCommandHangs) {
    MakeSiteWith("[notify]\ncommand = [\"" PAGERFWD_PROGRAM "\", \"watch\"]\n");
    Raise("NOBODY/1");
    EndAt(400);
    At(60, Pagerfwd("alarm raise --group DUTY/1 --severity critical --server pumps hot"));
    const ProgramRun run = Simulated({"run"});
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    EXPECT_THAT(run.err, AllOf(HasSubstr("the command of [notify], " PAGERFWD_PROGRAM
                                         ": took longer than 30 s, and was killed"),
                               HasSubstr("to \"duty\": done\n")));
    EXPECT_EQ(run.err.find("and was killed"), run.err.rfind("and was killed")) << "told once";
}

TEST_F(Alerts, BeatEveryMinuteWhileAllIsWell) {
    MakeSiteWith(std::string(kKeep) +
                 "[heartbeat]\ncommand = [\"/bin/sh\", \"-c\", \"echo beat >>beats\"]\n");
    Raise("ALL/1");
    EndAt(615);
    const ProgramRun run = Simulated({"run", "--metrics", "figures.prom"});
    EXPECT_EQ(11 * 5U, ReadFile("beats").size()) << run.err;
    EXPECT_THAT(Told(), IsEmpty()) << run.err;
    EXPECT_THAT(ReadFile("figures.prom"), HasSubstr("\npagerfwd_heartbeat_timestamp_seconds " +
                                                    std::to_string(kNow + 600).substr(0, 8)));
}

}  // namespace
