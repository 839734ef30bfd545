// Time of day, and days. Tested by tests/unit/host/trace_entries_test.cpp.
#include "host/trace/trace_clock.h"

#include "host/trace/calendar.h"

namespace host {
namespace {

constexpr int kDay = 24 * 60 * 60;

}  // namespace

void TraceClock::Advance(int secondOfDay) {
    const int passed = second_ < 0 ? 0 : secondOfDay - second_;
    second_ = secondOfDay;
    if (passed >= 0) {
        elapsed_ += passed;
    } else if (passed < -kDay / 2) {
        elapsed_ += passed + kDay;
        if (day_) {
            ++*day_;
        }
    }
}

void TraceClock::SetDate(std::string_view date) {
    if (const std::optional<int64_t> day = ParseTraceDate(date)) {
        day_ = day;
    }
}

}  // namespace host
