// What becomes of a page after an attempt to send it: the decisions, apart from carrying them out.
#ifndef PAGERFWD_ENGINE_RETRY_RULES_H
#define PAGERFWD_ENGINE_RETRY_RULES_H

#include <cstdint>

#include "linux/CTime.h"
#include "tables/pager_settings.h"

// How often and how far apart a page is repeated.
struct RetryRule {
    int32_t limit;         // counted attempts after the first
    int32_t delayMinutes;  // from one due time to the next
};

// The rule of a pager, or the other one when the pager is unknown.
RetryRule RuleOf(const Pager* pager, const RetryRule& ifUnknown);

// Whether one success is the end of the page. The SMS services confirm a delivery; to every other
// pager the page is repeated until the alarm is acknowledged or the attempts are used up.
bool ConfirmsDelivery(int32_t pagerType);

// Whether an entry with so many counted attempts may be tried again after this one. A count beyond
// the signed range counts as negative.
bool HasAttemptsLeft(uint32_t countedBefore, const RetryRule& rule);

// A due time so many minutes later: counted from the old due time, not from now. Stays within what
// a time can hold.
CTime PutOff(const CTime& due, int32_t minutes);

#endif
