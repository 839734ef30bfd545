// The deadline that a node shares with its lines.
#include "host/process/lease_deadline.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace host {
namespace {

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

TEST(ADeadline, IsSeenByWhoeverHasItsDescriptor) {
    LeaseDeadline nodes;
    const LeaseDeadline lines(Descriptor(dup(nodes.Number())));
    EXPECT_TRUE(lines.IsOver());
    nodes.MoveTo(LeaseDeadline::Now() + std::chrono::hours(1));
    EXPECT_FALSE(lines.IsOver());
}

}  // namespace
}  // namespace host
