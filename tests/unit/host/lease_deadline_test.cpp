// The deadline that a node shares with its lines.
#include "host/process/lease_deadline.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <string>

namespace host {
namespace {

int Mapped() {
    int count = 0;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        count += line.find("memfd:lease") != std::string::npos ? 1 : 0;
    }
    return count;
}

TEST(ADeadline, IsOverAtFirst) {
    EXPECT_TRUE(LeaseDeadline().IsOver());
}

TEST(ADeadline, IsWhereItWasMovedTo) {
    LeaseDeadline deadline;
    deadline.MoveTo(LeaseDeadline::Now() + std::chrono::hours(1));
    EXPECT_FALSE(deadline.IsOver());
    EXPECT_GT(deadline.Left(), std::chrono::minutes(59));
    EXPECT_LE(deadline.Left(), std::chrono::hours(1));
    deadline.MoveTo(LeaseDeadline::Now() - std::chrono::milliseconds(1));
    EXPECT_TRUE(deadline.IsOver());
}

TEST(ADeadline, KeepsNoMemoryWhenItHasGone) {
    {
        const LeaseDeadline deadline;
        EXPECT_EQ(1, Mapped());
    }
    EXPECT_EQ(0, Mapped());
}

TEST(ADeadline, IsSeenByWhoeverHasItsDescriptor) {
    LeaseDeadline nodes;
    const LeaseDeadline lines(Descriptor(dup(nodes.Number())));
    EXPECT_TRUE(lines.IsOver());
    nodes.MoveTo(LeaseDeadline::Now() + std::chrono::hours(1));
    EXPECT_FALSE(lines.IsOver());
}

}  // namespace
}  // namespace host
