// Pending pages. Tested by tests/unit/host/pending_test.cpp.
#include "host/pages/pending.h"

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <tuple>

#include "host/pages/page_words.h"
#include "host/store/tables/alarm_log.h"
#include "host/store/tables/events.h"

namespace host {
namespace {

// In the order of OwedPages.
using Place = std::tuple<int64_t, bool, int64_t>;

Place PlaceOf(const OwedPage& owed) {
    return {std::strtoll(owed.page.alarm.c_str(), nullptr, 10), owed.waits, owed.place};
}

std::string Written(const Place& place) {
    return std::to_string(std::get<0>(place)) + "." + (std::get<1>(place) ? "1" : "0") + "." +
           std::to_string(std::get<2>(place));
}

// What isn't one is before all.
Place PlaceIn(const std::string& text) {
    if (text.empty()) {
        return {INT64_MIN, false, 0};
    }
    char* behind = nullptr;
    const int64_t alarm = std::strtoll(text.c_str(), &behind, 10);
    const bool waits = *behind == '.' && std::strtol(behind + 1, &behind, 10) != 0;
    const int64_t place = *behind == '.' ? std::strtoll(behind + 1, nullptr, 10) : -1;
    return {alarm, waits, place};
}

class Sieve {
 public:
    Sieve(Connection& connection, const PendingWanted& wanted)
        : connection_(connection), wanted_(wanted) {}

    bool Takes(const OwedPage& owed) {
        return (wanted_.pager.empty() || owed.page.pager == wanted_.pager) &&
               (!wanted_.group || wanted_.group(owed.page.group)) && IsInState(owed) &&
               WasRaisedThen(owed.page.alarm);
    }

 private:
    bool IsInState(const OwedPage& owed) const {
        PageStory page;
        page.waits = owed.waits;
        page.unknown = owed.unknown;
        return wanted_.state.empty() || wanted_.state == StateOf(page);
    }
    // Pages of an alarm follow each other.
    bool WasRaisedThen(const std::string& number) {
        if (wanted_.since == 0 && wanted_.until == 0) {
            return true;
        }
        if (number != number_) {
            number_ = number;
            const std::optional<Alarm> alarm = FindAlarm(connection_, number);
            raised_ = alarm ? alarm->raised : 0;
        }
        return raised_ >= wanted_.since && (wanted_.until == 0 || raised_ <= wanted_.until);
    }

    Connection& connection_;
    const PendingWanted& wanted_;
    std::string number_;
    std::time_t raised_ = 0;
};

}  // namespace

PendingFound FindPending(Connection& connection, const PendingWanted& wanted) {
    PendingFound found;
    Sieve sieve(connection, wanted);
    const Place after = PlaceIn(wanted.after);
    Place last;
    for (const OwedPage& owed : OwedPages(connection)) {
        if (!sieve.Takes(owed)) {
            continue;
        }
        ++found.all;
        const Place place = PlaceOf(owed);
        if (place <= after) {
            continue;
        }
        const bool belongs =
            wanted.whole_alarms && !found.pages.empty() && std::get<0>(place) == std::get<0>(last);
        if (found.pages.size() < wanted.count || belongs) {
            last = place;
            found.pages.push_back(PendingPage(connection, owed));
        } else if (found.next.empty()) {
            found.next = Written(last);
        }
    }
    return found;
}

}  // namespace host
