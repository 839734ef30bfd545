// What a running service tells its operator.
#include "host/service/operator_log.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <thread>

#include "sim/testing.h"

namespace host {
namespace {

class TheLog : public ::testing::Test {
 protected:
    TheLog() {
        setenv("TZ", "UTC", 1);
        tzset();
    }

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

TEST_F(TheLog, HasWholeLinesFromEveryThread) {
    OperatorLog log(out, true);
    const auto write = [&log] {
        for (int i = 0; i < 500; ++i) {
            log.Error("a line that is written by two threads");
        }
    };
    std::thread other(write);
    write();
    other.join();
    std::istringstream lines(out.str());
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        ASSERT_EQ("<3>error: a line that is written by two threads", line);
    }
    EXPECT_EQ(1000, count);
}

}  // namespace
}  // namespace host
