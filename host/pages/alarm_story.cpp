// The story of an alarm. Tested by tests/unit/host/alarm_story_test.cpp.
#include "host/pages/alarm_story.h"

#include <algorithm>

#include "host/pages/deliveries.h"
#include "host/pages/history.h"
#include "host/pages/page_words.h"
#include "host/pages/sends.h"

namespace host {
namespace {

void AddQueued(const std::vector<PageStory>& pages, std::vector<StoryLine>& story) {
    for (const PageStory& page : pages) {
        story.push_back({page.queued, page.pager, "queued", ""});
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

// What the library was never asked for, or refused. The tables don't say when: at the raising.
void AddRefusals(Connection& connection, const Alarm& alarm, std::vector<StoryLine>& story) {
    for (const Delivery& delivery : DeliveriesOf(connection, alarm.number)) {
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

}  // namespace

std::vector<StoryLine> TellAlarm(Connection& connection, const Alarm& alarm) {
    std::vector<StoryLine> story = {{alarm.raised, "", "raised", ""}};
    AddRefusals(connection, alarm, story);
    if (WentToNobody(connection, alarm)) {
        story.push_back({alarm.raised, "", "off limit", "no route leads to a pager"});
    }
    const std::vector<PageStory> pages = PagesOf(connection, alarm.number);
    // In one second, a page is queued, sent and ended in this order.
    AddQueued(pages, story);
    AddSends(connection, alarm, story);
    AddEnds(pages, story);
    if (alarm.acknowledged) {
        story.push_back({alarm.acknowledged_at, "", "acknowledged",
                         alarm.acknowledged_by.empty() ? "" : "by " + alarm.acknowledged_by});
    }
    std::stable_sort(story.begin(), story.end(), [](const StoryLine& left, const StoryLine& right) {
        return left.at < right.at;
    });
    return story;
}

}  // namespace host
