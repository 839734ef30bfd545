// What a running service tells its operator.
#include "host/process/operator_log.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>
#include <thread>

#include "sim/testing.h"
#include "tests/support/zone.h"

namespace host {
namespace {

class TheLog : public ::testing::Test {
 protected:
    TheLog() { test_support::UseTestZone(); }

    const pagersim::VirtualClock clock{pagersim::VirtualClock::kDefaultStart};
    std::ostringstream out;
};

TEST_F(TheLog, HasTheLevelUnderAJournal) {
    OperatorLog log(out, true);
    log.Info("one");
    log.Warning("two");
    log.Error("three");
    EXPECT_EQ("<6>one\n<4>warning: two\n<3>error: three\n", out.str());
}

TEST_F(TheLog, HasTheTimeElsewhere) {
    OperatorLog log(out, false);
    log.Info("one");
    log.Error("two");
    EXPECT_EQ("2001-01-08 10:00:00 one\n2001-01-08 10:00:00 error: two\n", out.str());
}

TEST_F(TheLog, MakesTextsFitForATerminal) {
    OperatorLog log(out, true);
    log.Warning("a\x1b[2Jb\nc\xFF 100%s \u6771");
    EXPECT_EQ("<4>warning: a\\x1b[2Jb\\x0ac\\xff 100%s \u6771\n", out.str());
}

TEST_F(TheLog, SaysTroubleThatLastsOnceAMinute) {
    OperatorLog log(out, true);
    for (int second = 0; second < 60; ++second) {
        log.Error("disk full");
        sleep(1);
    }
    EXPECT_EQ("<3>error: disk full\n", out.str());
    log.Error("disk full");
    EXPECT_EQ(
        "<3>error: disk full\n"
        "<6>the line before came 59 more time(s)\n"
        "<3>error: disk full\n",
        out.str());
}

TEST_F(TheLog, SaysHowOftenTroubleCameBeforeItSaysSomethingElse) {
    OperatorLog log(out, true);
    log.Warning("disk full");
    log.Warning("disk full");
    log.Info("serving");
    log.Warning("disk full");
    EXPECT_EQ(
        "<4>warning: disk full\n"
        "<6>the line before came 1 more time(s)\n"
        "<6>serving\n"
        "<4>warning: disk full\n",
        out.str());
}

TEST_F(TheLog, SaysWhatIsNoTroubleEachTime) {
    OperatorLog log(out, true);
    log.Info("test page sent");
    log.Info("test page sent");
    EXPECT_EQ("<6>test page sent\n<6>test page sent\n", out.str());
}

TEST_F(TheLog, HasWholeLinesFromEveryThread) {
    OperatorLog log(out, true);
    const auto write = [&log] {
        for (int i = 0; i < 500; ++i) {
            log.Info("a line that is written by two threads");
        }
    };
    std::thread other(write);
    write();
    other.join();
    std::istringstream lines(out.str());
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        ASSERT_EQ("<6>a line that is written by two threads", line);
    }
    EXPECT_EQ(1000, count);
}

}  // namespace
}  // namespace host
