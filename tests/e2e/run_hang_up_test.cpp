// How a call to a centre that doesn't hang up by itself ends: what the modem makes of +++, and of
// the port's closing, with each of the settings that an operator may put into `init`.
#include "tests/e2e/run_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::HasSubstr;
using ::testing::Le;
using ::testing::Pair;
using ::testing::SizeIs;

// The library waits 13 s before its frame, and closes the port 10 s behind the answer.
constexpr double kHungUpAtOnce = 15;
constexpr double kHungUpByClosing = 23;

class HangingUp : public RunTest {
 protected:
    // Two pages by UCP, one behind the other; the modem has `line` besides its port. Returns how
    // long each call took, in seconds.
    std::vector<double> TwoPages(const std::string& init, const std::string& line,
                                 const std::string& centre = "") {
        MakeSite("pagerfwd.db",
                 "[[port]]\nname = \"COM 1\"\ninit = \"" + init +
                     "\"\n[port.sms2]\ndial = \"ATDT0,5550102\"\n[[pager]]\n"
                     "description = \"duty\"\ntype = \"sms2\"\nnumber = \"5550112\"\n"
                     "[[route]]\ngroups = \"ALL/*\"\npagers = [\"duty\"]\n");
        exchange = "[[line]]\nport = \"COM 1\"\n" + line +
                   "[[centre]]\nname = \"ucp\"\nprotocol = \"ucp\"\nnumbers = [\"5550102\"]\n" +
                   centre;
        Raise("ALL/1");
        Raise("ALL/2");
        At(150, "kill -TERM $PPID");
        log = Simulated({"run"}).err;
        return Calls();
    }

    static std::vector<double> Calls() {
        std::vector<double> seconds;
        std::ifstream file("report.json");
        const nlohmann::json report = nlohmann::json::parse(file);
        for (const nlohmann::json& call : report["calls"]) {
            seconds.push_back(call["to_seconds"].get<double>() -
                              call["from_seconds"].get<double>());
        }
        return seconds;
    }

    std::string log;
};

TEST_F(HangingUp, WaitsForThePortsClosingWhereTheModemHasTheUsualGuardTime) {
    EXPECT_THAT(TwoPages("AT&F", ""), AllOf(SizeIs(2), Each(Ge(kHungUpByClosing))));
    EXPECT_THAT(pages, ElementsAre(Pair("ucp", 2)));
}

TEST_F(HangingUp, NeverComesWhereTheModemIgnoresDtrAndSoTheNextPageFails) {
    EXPECT_THAT(TwoPages("AT&F", "dtr = \"&D0\"\n"), SizeIs(1));
    EXPECT_THAT(pages, ElementsAre(Pair("ucp", 1)));
    EXPECT_THAT(log, HasSubstr("the modem didn't answer"));
    EXPECT_THAT(Rows("outcome || ' ' || result FROM Host_Sends ORDER BY rowid"),
                ElementsAre("sent 0", "not sent 8"));
}

TEST_F(HangingUp, ComesWithTheClosingWhereInitSaysThatDtrCounts) {
    EXPECT_THAT(TwoPages("AT&F&D2", "dtr = \"&D0\"\n"),
                AllOf(SizeIs(2), Each(Ge(kHungUpByClosing))));
    EXPECT_THAT(pages, ElementsAre(Pair("ucp", 2)));
}

TEST_F(HangingUp, ComesAtOnceWhereInitShortensTheGuardTime) {
    EXPECT_THAT(TwoPages("AT&FS12=2", "dtr = \"&D0\"\n"),
                AllOf(SizeIs(2), Each(Le(kHungUpAtOnce))));
    EXPECT_THAT(pages, ElementsAre(Pair("ucp", 2)));
}

TEST_F(HangingUp, ComesAtOnceWithTheInitThatIsAdvised) {
    EXPECT_THAT(TwoPages("AT&F&D2S12=2", ""), AllOf(SizeIs(2), Each(Le(kHungUpAtOnce))));
    EXPECT_THAT(pages, ElementsAre(Pair("ucp", 2)));
}

TEST_F(HangingUp, DependsOnTheCentreWhereTheGuardTimeIsShortenedLess) {
    EXPECT_THAT(TwoPages("AT&F&D2S12=20", "", "response_ms = 100\n"),
                AllOf(SizeIs(2), Each(Ge(kHungUpByClosing))));
}

TEST_F(HangingUp, ComesAtOnceWhereTheCentreTakesLongerThanTheGuardTime) {
    EXPECT_THAT(TwoPages("AT&F&D2S12=20", "", "response_ms = 1000\n"),
                AllOf(SizeIs(2), Each(Le(kHungUpAtOnce))));
}

}  // namespace
