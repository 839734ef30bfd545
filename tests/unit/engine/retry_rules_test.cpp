// Tests of engine/retry_rules.h.
#include "engine/retry_rules.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr int32_t kMostMinutes = std::numeric_limits<int32_t>::max();

// CTime can be compared by > and <= only.
bool IsSame(const CTime& a, const CTime& b) {
    return a <= b && b <= a;
}

TEST(RetryRules, OnlyTheSmsServicesConfirmADelivery) {
    for (int32_t type = -1; type <= 260; ++type) {
        EXPECT_EQ(type == 4 || type == 5, ConfirmsDelivery(type)) << "pager type " << type;
    }
}

TEST(RetryRules, PagerHasItsOwnRule) {
    Pager pager{};
    pager.numRetries = 3;
    pager.retryDelay = 20;
    const RetryRule rule = RuleOf(&pager, {5, 45});
    EXPECT_EQ(3, rule.limit);
    EXPECT_EQ(20, rule.delayMinutes);
}

TEST(RetryRules, UnknownPagerHasTheDefaultRule) {
    const RetryRule rule = RuleOf(nullptr, {5, 45});
    EXPECT_EQ(5, rule.limit);
    EXPECT_EQ(45, rule.delayMinutes);
}

struct AttemptCase {
    const char* situation;
    uint32_t countedBefore;
    int32_t limit;
    bool mayGoOn;
};

TEST(RetryRules, AttemptsAreCountedAgainstTheLimit) {
    const AttemptCase kCases[] = {
        {"a fresh entry with 5 retries", 0, 5, true},
        {"the fifth retry was counted before", 4, 5, true},
        {"all five are used up", 5, 5, false},
        {"more than the limit, after a change of the settings", 6, 5, false},
        {"no retries at all", 0, 0, false},
        {"a negative limit", 0, -1, false},
        {"a count of -1, as in a test page", 0xFFFFFFFF, 0, true},
        {"the comparison is signed", 0x80000000, -5, true},
        {"the largest count there is", 0x7FFFFFFF, kMostMinutes, false},
    };
    for (const AttemptCase& c : kCases) {
        EXPECT_EQ(c.mayGoOn, HasAttemptsLeft(c.countedBefore, {c.limit, 45})) << c.situation;
    }
}

TEST(RetryRules, DelayCountsFromTheOldDueTime) {
    const CTime tenOClock(2001, 1, 8, 10, 0, 0);
    EXPECT_TRUE(IsSame(CTime(2001, 1, 8, 10, 45, 0), PutOff(tenOClock, 45)));
    EXPECT_TRUE(IsSame(tenOClock, PutOff(tenOClock, 0)));
    EXPECT_TRUE(IsSame(CTime(2001, 1, 8, 9, 59, 0), PutOff(tenOClock, -1)));
}

TEST(RetryRules, DelaysOfAnyLengthStayWithinWhatATimeCanHold) {
    const CTime due(2001, 1, 8, 10, 0, 0);
    EXPECT_TRUE(PutOff(due, kMostMinutes) > due);
    EXPECT_TRUE(due > PutOff(due, -kMostMinutes));

    const CTime last(std::numeric_limits<time_t>::max());
    EXPECT_TRUE(IsSame(last, PutOff(last, 1)));
    const CTime first(std::numeric_limits<time_t>::min());
    EXPECT_TRUE(IsSame(first, PutOff(first, -1)));
}

TEST(RetryRules, LastSecondCanBeReached) {
    constexpr time_t kLast = std::numeric_limits<time_t>::max();
    EXPECT_TRUE(IsSame(CTime(kLast), PutOff(CTime(kLast - 60), 1)));
    EXPECT_TRUE(IsSame(CTime(kLast), PutOff(CTime(kLast - 59), 1)));
    EXPECT_TRUE(IsSame(CTime(kLast - 1), PutOff(CTime(kLast - 61), 1)));
}

}  // namespace
