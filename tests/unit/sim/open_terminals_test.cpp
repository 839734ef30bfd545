// Terminals that a program has open when it comes into a world.
#include "sim/world/open_terminals.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <pty.h>
#include <sys/resource.h>
#include <unistd.h>

#include <vector>

#include "sim/descriptor.h"
#include "sim/world/descriptors.h"

namespace pagersim {
namespace {

using ::testing::Contains;
using ::testing::Not;

std::vector<int> DescriptorsOfTerminals() {
    std::vector<int> found;
    for (const OpenTerminal& each : OpenTerminals()) {
        found.push_back(each.fd);
    }
    return found;
}

TEST(TerminalNumbers, AreThoseOfTerminalsAlone) {
    EXPECT_EQ(7U, TerminalNumber("/dev/pts/7"));
    for (const char* other : {"/dev/pts/", "/dev/pts/ptmx", "/dev/ptmx", "/dev/pts", "pts/7", ""}) {
        EXPECT_FALSE(TerminalNumber(other)) << other;
    }
}

TEST(TerminalsThatAreOpen, AreThoseThatTheTableOfLinesHasRoomFor) {
    rlimit most{};
    getrlimit(RLIMIT_NOFILE, &most);
    const rlimit before = most;
    most.rlim_cur = kDescriptorLimit + 1;
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &most));
    int master = -1;
    int slave = -1;
    ASSERT_EQ(0, openpty(&master, &slave, nullptr, nullptr, nullptr));
    const Descriptor far(master);
    const Descriptor near(slave);
    const Descriptor last(dup2(slave, kDescriptorLimit - 1));
    const Descriptor beyond(dup2(slave, kDescriptorLimit));
    const std::vector<int> found = DescriptorsOfTerminals();
    EXPECT_THAT(found, Contains(slave));
    EXPECT_THAT(found, Contains(kDescriptorLimit - 1));
    EXPECT_THAT(found, Not(Contains(kDescriptorLimit)));
    EXPECT_THAT(found, Not(Contains(master)));
    EXPECT_EQ(0, setrlimit(RLIMIT_NOFILE, &before));
}

}  // namespace
}  // namespace pagersim
