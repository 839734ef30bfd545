// Bells between processes.
#include "host/process/bell_socket.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <optional>
#include <utility>

namespace host {
namespace {

using Heard = BellSocket::Heard;

TEST(Bells, AreHeardOnceHoweverOftenTheyRing) {
    const auto [one, other] = BellSocket::Pair();
    EXPECT_EQ(Heard::kNothing, other.Listen());
    for (int time = 0; time < 200; ++time) {
        one.Ring();
    }
    EXPECT_EQ(Heard::kBell, other.Listen());
    EXPECT_EQ(Heard::kNothing, other.Listen());
    other.Ring();
    EXPECT_EQ(Heard::kBell, one.Listen());
}

TEST(Bells, NeverWaitForOneWhoDoesNotListen) {
    const auto [one, other] = BellSocket::Pair();
    for (int time = 0; time < 1000000; ++time) {
        one.Ring();
    }
    EXPECT_EQ(Heard::kBell, other.Listen());
}

TEST(Bells, TellOfTheEndOfTheOther) {
    std::optional<std::pair<BellSocket, BellSocket>> ends(BellSocket::Pair());
    const BellSocket one = std::move(ends->first);
    ends.reset();
    EXPECT_EQ(Heard::kEnd, one.Listen());
    one.Ring();
    EXPECT_EQ(Heard::kEnd, one.Listen());
}

TEST(Bells, AreOneByteEach) {
    const auto [one, other] = BellSocket::Pair();
    one.Ring();
    std::array<char, 4> bytes{};
    EXPECT_EQ(1, read(other.Number(), bytes.data(), bytes.size()));
}

}  // namespace
}  // namespace host
