// The decisions about repeating a page.
// Tested by tests/unit/engine/retry_rules_test.cpp.
#include "engine/retry_rules.h"

#include <algorithm>
#include <ctime>
#include <limits>

#include "modem/COMHdl.h"

RetryRule RuleOf(const Pager* pager, const RetryRule& ifUnknown) {
    return pager != nullptr ? RetryRule{pager->numRetries, pager->retryDelay} : ifUnknown;
}

bool ConfirmsDelivery(int32_t pagerType) {
    return pagerType == kFirstSmsService || pagerType == kSecondSmsService;
}

bool HasAttemptsLeft(uint32_t countedBefore, const RetryRule& rule) {
    return static_cast<int32_t>(countedBefore) < rule.limit;
}

CTime PutOff(const CTime& due, int32_t minutes) {
    constexpr long kLatest = std::numeric_limits<time_t>::max();
    constexpr long kEarliest = std::numeric_limits<time_t>::min();
    const auto seconds = static_cast<int32_t>(
        std::clamp<int64_t>(int64_t{minutes} * 60, std::numeric_limits<int32_t>::min(),
                            std::numeric_limits<int32_t>::max()));

    if (seconds > 0 && due > CTime(kLatest - seconds)) {
        return CTime(kLatest);
    }
    if (seconds < 0 && CTime(kEarliest - seconds) > due) {
        return CTime(kEarliest);
    }
    CTime later = due;
    later += CTimeSpan(seconds);
    return later;
}
