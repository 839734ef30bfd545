// Colours, for terminals only.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <cstdlib>

#include "host/text/colours.h"

namespace host {
namespace {

class ColoursTest : public ::testing::Test {
 protected:
    ColoursTest() {
        EXPECT_EQ(0, openpty(&master_, &terminal_, nullptr, nullptr, nullptr));
        setenv("TERM", "xterm", 1);
        unsetenv("NO_COLOR");
    }
    ~ColoursTest() override {
        close(master_);
        close(terminal_);
        unsetenv("NO_COLOR");
    }

    int master_ = -1;
    int terminal_ = -1;
};

TEST_F(ColoursTest, AreOnOnATerminal) {
    EXPECT_TRUE(Colours::For(terminal_).On());
    EXPECT_EQ("\x1b[31mno\x1b[0m", Colours::For(terminal_).Red("no"));
}

TEST_F(ColoursTest, AreOffElsewhere) {
    const int file = open("/dev/null", O_WRONLY | O_CLOEXEC);
    EXPECT_FALSE(Colours::For(file).On());
    EXPECT_EQ("no", Colours::For(file).Red("no"));
    close(file);
}

TEST_F(ColoursTest, AreOffWhereTheyAreNotWanted) {
    setenv("NO_COLOR", "1", 1);
    EXPECT_FALSE(Colours::For(terminal_).On());
    setenv("NO_COLOR", "", 1);
    EXPECT_TRUE(Colours::For(terminal_).On());
    setenv("TERM", "dumb", 1);
    EXPECT_FALSE(Colours::For(terminal_).On());
    unsetenv("TERM");
    EXPECT_FALSE(Colours::For(terminal_).On());
}

}  // namespace
}  // namespace host
