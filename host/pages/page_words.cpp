// The words. Tested by tests/unit/host/page_words_test.cpp and alarm_story_test.cpp.
#include "host/pages/page_words.h"

#include "host/store/tables/deliveries.h"
#include "host/store/tables/states.h"

namespace host {
namespace {

struct Words {
    const char* state;
    const char* end;
};

// One that has no more tries, by the most that any of them has come to.
Words OffLimit(Reached reached) {
    switch (reached) {
        case Reached::kSent:
            return {"unacknowledged", "ended: it was sent, and nobody acknowledged"};
        case Reached::kDialled:
            return {"dialled",
                    "ended: it was dialled, which nothing confirms; nobody acknowledged"};
        case Reached::kOutsideHours:
            return {"outside hours", "ended: it was always outside the pager's hours"};
        case Reached::kNothing:
            return {"undelivered", "given up: its tries are used up, and none got through"};
        case Reached::kUnknown:
            break;
    }
    return {"off limit", "given up: its tries are used up"};
}

// One that its service was to confirm.
Words Done(Reached reached) {
    switch (reached) {
        case Reached::kDialled:
            return {"dialled", "done: it was dialled, which nothing confirms"};
        case Reached::kOutsideHours:
            return {"outside hours", "done: not sent, outside the pager's hours"};
        case Reached::kSent:
        case Reached::kNothing:
        case Reached::kUnknown:
            break;
    }
    return {"done", "done"};
}

Words WordsFor(const PageStory& page) {
    switch (page.end) {
        case PageEnd::kPending:
            if (page.unknown) {
                return {"outcome unknown",
                        "may have been sent when its node died: pagerfwd page resend, or done"};
            }
            return page.waits ? Words{"waiting", "waits for a line"} : Words{"pending", "pending"};
        case PageEnd::kDone:
            return Done(page.reached);
        case PageEnd::kOffLimit:
            return OffLimit(page.reached);
        case PageEnd::kAcknowledged:
            return {"acknowledged", "taken out: the alarm was acknowledged"};
        case PageEnd::kResolved:
            return {"resolved", "taken out: the alarm is resolved"};
        case PageEnd::kByHand:
            return {"cancelled", "given up by hand"};
        case PageEnd::kDropped:
            break;
    }
    return {"dropped", "dropped: its alarm was no longer being paged"};
}

std::string KindsOf(const std::vector<PageStory>& pages) {
    std::string kinds;
    for (const PageStory& page : pages) {
        const std::string kind = StateOf(page);
        if (page.end == PageEnd::kOffLimit && kinds.find(kind) == std::string::npos) {
            kinds += (kinds.empty() ? "" : ", ") + kind;
        }
    }
    return kinds.empty() ? StateWord(kStateOffLimit) : kinds;
}

}  // namespace

const char* StateOf(const PageStory& page) {
    return WordsFor(page).state;
}

std::string TriesOf(const PageStory& page) {
    return std::to_string(page.tries) + " of " + std::to_string(page.retries + 1);
}

std::string StateOf(const Alarm& alarm) {
    if (alarm.withdrawn != 0) {
        return "resolved";
    }
    return StateWord(alarm.acknowledged ? kStateAcknowledged : alarm.state);
}

std::string OutcomeOf(Connection& connection, const Alarm& alarm) {
    if (alarm.acknowledged || alarm.state != kStateOffLimit) {
        return StateOf(alarm);
    }
    return WentToNobody(connection, alarm) ? "no route"
                                           : KindsOf(PagesOf(connection, alarm.number));
}

bool WentToNobody(Connection& connection, const Alarm& alarm) {
    return alarm.state == kStateOffLimit && DeliveriesOf(connection, alarm.number).empty() &&
           PagesOf(connection, alarm.number).empty();
}

const char* EndOf(const PageStory& page) {
    return WordsFor(page).end;
}

}  // namespace host
