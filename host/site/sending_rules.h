// How a page would fare on the line: what gets lost of its text, and how long it takes at worst.
#ifndef PAGERFWD_HOST_SITE_SENDING_RULES_H
#define PAGERFWD_HOST_SITE_SENDING_RULES_H

#include <cstdint>
#include <string>
#include <string_view>

#include "host/site/site.h"

namespace host {

// Whether the far end gets seven bits of each character only.
bool LosesEighthBit(const Port& port, const Pager& pager);

// What then arrives.
std::string AsSevenBits(std::string_view bytes);

// What a number costs at which nobody answers, or somebody who says nothing.
struct DeadNumber {
    int64_t calls;
    int64_t seconds_each;  // at most

    int64_t Seconds() const { return calls * seconds_each; }
};
DeadNumber CostOfDeadNumber(const Site& site, const Pager& pager);

// The pager whose number would cost the most; null where there is no pager.
const Pager* CostliestPager(const Site& site);

}  // namespace host

#endif
