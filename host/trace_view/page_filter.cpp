// Choosing pages. Tested by tests/unit/host/trace_view_test.cpp.
#include "host/trace_view/page_filter.h"

#include <charconv>

#include "host/trace/calendar.h"

namespace host {
namespace {

constexpr int64_t kDay = 24 * 60 * 60;
constexpr size_t kDateSize = 10;

[[noreturn]] void Refuse(std::string_view text) {
    throw NoInstant("\"" + std::string(text) +
                    "\" is no instant; write it as 2001-01-08, or 2001-01-08 17:30:00");
}

// Two digits; -1 otherwise.
int TwoDigits(std::string_view text) {
    int number = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool valid = text.size() == 2 && error == std::errc() && end == text.data() + 2;
    return valid ? number : -1;
}

// "17:30" or "17:30:05"; -1 otherwise.
int SecondOfDay(std::string_view text) {
    const bool hasSeconds = text.size() == 8;
    if ((text.size() != 5 && !hasSeconds) || text[2] != ':' || (hasSeconds && text[5] != ':')) {
        return -1;
    }
    const int hour = TwoDigits(text.substr(0, 2));
    const int minute = TwoDigits(text.substr(3, 2));
    const int second = hasSeconds ? TwoDigits(text.substr(6)) : 0;
    const bool valid =
        hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second < 60;
    return valid ? (hour * 60 + minute) * 60 + second : -1;
}

}  // namespace

LocalSeconds ParseInstant(std::string_view text) {
    const std::optional<int64_t> day = ParseIsoDate(text.substr(0, kDateSize));
    if (!day) {
        Refuse(text);
    }
    if (text.size() == kDateSize) {
        return *day * kDay;
    }
    const char between = text[kDateSize];
    const int second = SecondOfDay(text.substr(kDateSize + 1));
    if ((between != ' ' && between != 'T') || second < 0) {
        Refuse(text);
    }
    return *day * kDay + second;
}

bool Failed(const TracedPage& page) {
    return page.outcome == TracedPage::Outcome::kNotSent ||
           page.outcome == TracedPage::Outcome::kCutOff;
}

bool PageFilter::TakesAll() const {
    return pager.empty() && !failed && !number && !since && !until;
}

bool PageFilter::Takes(const TracedPage& page) const {
    if ((!pager.empty() && page.pager != pager) || (failed && !Failed(page)) ||
        (number && page.number != *number)) {
        return false;
    }
    if (!page.day) {
        return true;
    }
    const LocalSeconds begun = *page.day * kDay + page.second;
    return (!since || begun >= *since) && (!until || begun <= *until);
}

}  // namespace host
