// The story of an alarm. Tested by tests/unit/host/alarm_story_test.cpp.
#include "host/pages/alarm_story.h"

#include <algorithm>

#include "host/pages/history.h"
#include "host/pages/page_words.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/sends.h"
#include "host/store/tables/trail.h"

namespace host {
namespace {

void AddQueued(const std::vector<PageStory>& pages, std::vector<StoryLine>& story) {
    for (const PageStory& page : pages) {
        story.push_back({page.queued, page.pager, "queued", ""});
    }
}

void AddMoves(const std::vector<PageStory>& pages, std::vector<StoryLine>& story) {
    for (const PageStory& page : pages) {
        for (const PageMove& move : page.moves) {
            const std::string from = move.from.empty() ? "" : "from " + move.from + ": ";
            story.push_back({move.at, page.pager, "moved", from + move.why});
        }
    }
}

void AddEnds(const std::vector<PageStory>& pages, std::vector<StoryLine>& story) {
    for (const PageStory& page : pages) {
        if (page.end != PageEnd::kPending) {
            story.push_back({page.ended, page.pager, EndOf(page), page.note});
        }
    }
}

void AddSends(Connection& connection, const Alarm& alarm, std::vector<StoryLine>& story) {
    for (const Send& send : SendsOf(connection, alarm.number)) {
        std::string more = std::to_string(send.seconds) + " s";
        more += send.port.empty() ? "" : ", " + send.port;
        more += send.outcome == TracedPage::Outcome::kDialled ? "; nothing confirms it" : "";
        more += send.reason.empty() ? "" : ": " + send.reason;
        story.push_back({send.at, send.pager, WordOf(send.outcome), more});
    }
}

bool IsAmong(const std::vector<PageStory>& pages, const std::string& pager) {
    return std::any_of(pages.begin(), pages.end(),
                       [&pager](const PageStory& page) { return page.pager == pager; });
}

// What no library was ever asked for, or refused. The tables don't say when: at the raising.
void AddRefusals(Connection& connection, const Alarm& alarm, const std::vector<PageStory>& pages,
                 std::vector<StoryLine>& story) {
    for (const Delivery& delivery : DeliveriesOf(connection, alarm.number)) {
        if (!delivery.answer && IsAmong(pages, delivery.pager)) {
            continue;  // it was queued, and moved
        }
        if (!delivery.answer) {
            story.push_back({alarm.raised, delivery.pager, "waits to be queued", ""});
        } else if (*delivery.answer == kPagerUnknown) {
            story.push_back({alarm.raised, delivery.pager, "not queued", "there is no such pager"});
        } else if (*delivery.answer == kWasAcknowledged) {
            story.push_back(
                {alarm.raised, delivery.pager, "not queued", "the alarm was acknowledged before"});
        }
    }
}

std::string WithdrawnBy(Connection& connection, const Alarm& alarm) {
    for (const TrailEntry& entry : TrailOf(connection, alarm.number)) {
        if (entry.what == kTrailWithdrawn) {
            return "by " + entry.who;
        }
    }
    return "";
}

}  // namespace

std::vector<StoryLine> TellAlarm(Connection& connection, const Alarm& alarm) {
    std::vector<StoryLine> story = {{alarm.raised, "", "raised", ""}};
    const std::vector<PageStory> pages = PagesOf(connection, alarm.number);
    AddRefusals(connection, alarm, pages, story);
    if (WentToNobody(connection, alarm)) {
        story.push_back({alarm.raised, "", "off limit", "no route leads to a pager"});
    }
    // In one second, a page is queued, sent, moved and ended in this order.
    AddQueued(pages, story);
    AddSends(connection, alarm, story);
    AddMoves(pages, story);
    AddEnds(pages, story);
    if (alarm.times_raised > 1) {
        story.push_back({alarm.raised_last, "", "raised again",
                         std::to_string(alarm.times_raised) + " times in all"});
    }
    if (alarm.withdrawn != 0) {
        story.push_back({alarm.withdrawn, "", "resolved", WithdrawnBy(connection, alarm)});
    }
    if (alarm.acknowledged && !EndedByWithdrawal(alarm)) {
        story.push_back({alarm.acknowledged_at, "", "acknowledged",
                         alarm.acknowledged_by.empty() ? "" : "by " + alarm.acknowledged_by});
    }
    std::stable_sort(story.begin(), story.end(), [](const StoryLine& left, const StoryLine& right) {
        return left.at < right.at;
    });
    return story;
}

}  // namespace host
