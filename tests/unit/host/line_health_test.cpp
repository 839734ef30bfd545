// When a line is sick, and when it is asked.
#include "host/node/line_health.h"

#include <gtest/gtest.h>

#include "host/lines/line_exit.h"

namespace host {
namespace {

using Outcome = TracedPage::Outcome;

class HealthOfALine : public ::testing::Test {
 protected:
    static constexpr std::time_t kNow = 1000000;

    static Send Sending(Outcome outcome, int64_t result = 0, const std::string& reason = "") {
        Send send;
        send.outcome = outcome;
        send.result = result;
        send.reason = reason;
        return send;
    }
    void Sent() { health.Sent(Sending(Outcome::kSent), kNow); }
    void Fails(int64_t result, const std::string& reason = "") {
        health.Sent(Sending(Outcome::kNotSent, result, reason), kNow);
    }

    LineHealth health;
};

TEST_F(HealthOfALine, IsGoodAtFirst) {
    EXPECT_FALSE(health.IsSick());
    EXPECT_FALSE(health.IsToBeAsked(kNow));
}

TEST_F(HealthOfALine, IsLostByTwoFailuresInARow) {
    Fails(8);
    EXPECT_FALSE(health.IsSick());
    Fails(8);
    EXPECT_TRUE(health.IsSick());
    EXPECT_EQ("its modem doesn't answer", health.Reason());
    EXPECT_EQ(kNow, health.Since());
}

TEST_F(HealthOfALine, IsKeptByASendingInBetween) {
    for (int time = 0; time < 5; ++time) {
        Fails(5);
        Sent();
    }
    EXPECT_FALSE(health.IsSick());
}

TEST_F(HealthOfALine, IsLostByADeadTelephoneLineButNotByABusyCentre) {
    Fails(6, "dialling failed: the modem said BUSY");
    Fails(6, "dialling failed: the modem said BUSY");
    Fails(7);
    Fails(7);
    EXPECT_FALSE(health.IsSick());
    Fails(6, "dialling failed: the modem said NO DIALTONE");
    Fails(6, "dialling failed: the modem said NO DIALTONE");
    EXPECT_TRUE(health.IsSick());
    EXPECT_TRUE(health.LacksTone());
    EXPECT_EQ("its modem hears no dial tone", health.Reason());
}

TEST_F(HealthOfALine, IsNotLostByOneFailureBehindAnAnswer) {
    Fails(8);
    Fails(8);
    health.Answered(kNow);
    Fails(8);
    EXPECT_FALSE(health.IsSick());
}

TEST_F(HealthOfALine, IsNotToldByPagesThatTheirHoursBar) {
    Fails(8);
    health.Sent(Sending(Outcome::kOutsideHours), kNow);
    Fails(8);
    EXPECT_TRUE(health.IsSick());
}

TEST_F(HealthOfALine, IsLostByALibraryThatIsStuckTwiceInARow) {
    health.Stuck(kNow);
    EXPECT_FALSE(health.IsSick());
    Sent();
    health.Stuck(kNow + 700);
    health.Sent(Sending(Outcome::kCutOff), kNow + 701);
    EXPECT_FALSE(health.IsSick());
    health.Stuck(kNow + 1400);
    EXPECT_TRUE(health.IsSick());
    EXPECT_EQ("it gets stuck", health.Reason());
}

TEST_F(HealthOfALine, IsLostByThreeDeathsInTenMinutes) {
    health.Died("it was stuck", kNow);
    health.Died("it was stuck", kNow + 300);
    health.Died("it was stuck", kNow + 600);
    EXPECT_FALSE(health.IsSick());
    health.Died("its process was killed", kNow + 899);
    EXPECT_TRUE(health.IsSick());
    EXPECT_EQ("its process was killed", health.Reason());
}

TEST_F(HealthOfALine, IsAskedForWithGrowingPauses) {
    Fails(8);
    Fails(8);
    std::time_t now = kNow;
    for (const std::time_t pause : {60, 120, 240, 480, 960, 1800, 1800}) {
        EXPECT_FALSE(health.IsToBeAsked(now + pause - 1)) << pause;
        EXPECT_TRUE(health.IsToBeAsked(now + pause)) << pause;
        now += pause;
        health.DidNotAnswer("its device can't be opened", now);
    }
    EXPECT_EQ("its device can't be opened", health.Reason());
    health.Answered(now);
    EXPECT_FALSE(health.IsSick());
    EXPECT_EQ("", health.Reason());
}

// A modem that answers, and whose pages fail all the same.
TEST_F(HealthOfALine, IsAskedForLaterWhereItIsLostAgainBeforeAPageGotThrough) {
    Fails(8);
    Fails(8);
    health.Answered(kNow);
    Fails(8);
    Fails(8);
    EXPECT_FALSE(health.IsToBeAsked(kNow + 119));
    EXPECT_TRUE(health.IsToBeAsked(kNow + 120));
    health.Answered(kNow);
    Sent();
    Fails(8);
    Fails(8);
    EXPECT_TRUE(health.IsToBeAsked(kNow + 60));
}

TEST_F(HealthOfALine, IsAskedForAtOnceWhereItWasLostBeforeTheNodeBegan) {
    health.FallSick("its modem doesn't answer", kNow);
    EXPECT_TRUE(health.IsSick());
    EXPECT_TRUE(health.IsToBeAsked(kNow));
}

TEST(ReasonsOfEnds, AreInWords) {
    const auto exited = [](LineExit end) { return ReasonOf(static_cast<int>(end) << 8); };
    EXPECT_STREQ("its device can't be opened", exited(LineExit::kNoDevice));
    EXPECT_STREQ("its modem doesn't answer", exited(LineExit::kSilent));
    EXPECT_STREQ("its device is used already", exited(LineExit::kTaken));
    EXPECT_STREQ("its process was killed", ReasonOf(9));
}

}  // namespace
}  // namespace host
