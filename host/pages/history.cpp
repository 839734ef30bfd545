// The history in the database. Tested by tests/unit/host/history_test.cpp.
#include "host/pages/history.h"

#include <algorithm>
#include <optional>

#include "host/store/schema.h"
#include "host/store/tables/alarm_log.h"
#include "host/store/tables/history.h"
#include "host/store/tables/page_key.h"
#include "host/store/tables/pagers.h"
#include "host/store/tables/sends.h"
#include "host/store/tables/states.h"

namespace host {
namespace {

// What ends the pages of an alarm that are still owed.
PageEnd EndBy(Connection& connection, const std::string& number) {
    const std::optional<Alarm> alarm = FindAlarm(connection, number);
    if (!alarm || !NeedsNoPaging(*alarm)) {
        return PageEnd::kDropped;
    }
    return EndedByWithdrawal(*alarm) ? PageEnd::kResolved : PageEnd::kAcknowledged;
}

Reached ReachedWith(TracedPage::Outcome outcome) {
    switch (outcome) {
        case TracedPage::Outcome::kSent:
            return Reached::kSent;
        case TracedPage::Outcome::kDialled:
            return Reached::kDialled;
        case TracedPage::Outcome::kOutsideHours:
            return Reached::kOutsideHours;
        case TracedPage::Outcome::kNotSent:
        case TracedPage::Outcome::kCutOff:
            break;
    }
    return Reached::kNothing;
}

Reached ReachedBy(Connection& connection, const PageStory& page) {
    Reached reached = Reached::kUnknown;
    for (const Send& send : SendsOf(connection, page.alarm)) {
        if (send.pager == page.pager && send.at >= page.queued) {
            reached = std::max(reached, ReachedWith(send.outcome));
        }
    }
    return reached;
}

PageStory StoryOf(Connection& connection, const PageKey& key) {
    const PagerLimits limits = LimitsOf(connection, key.pager);
    PageStory story =
        TellStory(ChangesOf(connection, key), limits.delay, EndBy(connection, key.alarm));
    story.alarm = key.alarm;
    story.group = key.group;
    story.pager = key.pager;
    story.retries = limits.retries;
    story.reached = ReachedBy(connection, story);
    return story;
}

// Of a page that no library has: it is due as soon as a line can have it. What there is of its
// history is that of a line that had it, or of an earlier alarm of its number.
void Wait(Connection& connection, PageStory& story) {
    story.waits = true;
    if (story.queued != 0 && story.end == PageEnd::kPending) {
        return;
    }
    const std::optional<Alarm> alarm = FindAlarm(connection, story.alarm);
    story.queued = alarm ? alarm->raised : 0;
    story.due = story.queued;
    story.tries = 0;
    story.end = PageEnd::kPending;
    story.ended = 0;
    story.ended_by = 0;
}

std::vector<PageStory> StoriesOf(Connection& connection, const std::vector<PageKey>& keys) {
    std::vector<PageStory> stories;
    stories.reserve(keys.size());
    for (const PageKey& key : keys) {
        stories.push_back(StoryOf(connection, key));
    }
    return stories;
}

}  // namespace

PageStory PendingPage(Connection& connection, const OwedPage& owed) {
    PageStory story = StoryOf(connection, owed.page);
    story.line = owed.line;
    story.unknown = owed.unknown;
    if (owed.waits) {
        Wait(connection, story);
    }
    return story;
}

std::vector<PageStory> PendingPages(Connection& connection) {
    std::vector<PageStory> pages;
    for (const OwedPage& owed : OwedPages(connection)) {
        pages.push_back(PendingPage(connection, owed));
    }
    return pages;
}

std::vector<PageStory> EndedPages(Connection& connection, int64_t count) {
    return StoriesOf(connection, PagesNotOwed(connection, count));
}

std::vector<PageStory> PagesEndedBetween(Connection& connection, int64_t first, int64_t last) {
    std::vector<PageStory> ended;
    for (PageStory& story : StoriesOf(connection, PagesThatMayHaveEnded(connection, first, last))) {
        if (story.end != PageEnd::kPending && story.ended_by > first && story.ended_by <= last) {
            ended.push_back(std::move(story));
        }
    }
    return ended;
}

std::vector<PageStory> PagesOf(Connection& connection, const std::string& alarm) {
    return StoriesOf(connection, PagesInHistory(connection, alarm));
}

}  // namespace host
