// The judge. Tested by crash_judge_test.cpp.
#include "tests/proof/crash_judge.h"

#include <algorithm>
#include <map>
#include <set>

#include "tests/proof/ledger.h"
#include "tests/proof/page_watch.h"

namespace proof::crash {
namespace {

struct Page {
    bool answered = false;
    std::vector<long> dials;
    int received = 0;
};

struct Kill {
    Phase phase;
    PageKey page;  // in flight
    Stage stage;
    bool writing;
    int unfolded;  // an alarm, or 0
};

// What a ledger tells, line by line.
struct Story {
    std::map<PageKey, Page> pages;
    std::map<int, long> acknowledged;  // when
    std::map<int, int> alarm_states;
    std::set<int> begun_acknowledging;
    std::optional<Kill> kill;
    std::vector<PageKey> still_pending;
    std::vector<std::string> misdelivered;
    bool ended = false;
};

constexpr int kBeingPaged = 2;

int Number(const std::string& word) {
    return std::stoi(word);
}

bool IsForPager(const std::string& number, const std::string& recipient) {
    const size_t at = number.find('@');
    const bool called = at == std::string::npos || at + 1 == number.size();
    return called ? number.compare(0, recipient.size(), recipient) == 0
                  : number.substr(at + 1) == recipient;
}

const PagerPlan& PlanOf(const std::string& pager) {
    return *std::find_if(kPagerPlans.begin(), kPagerPlans.end(),
                         [&](const PagerPlan& plan) { return pager == plan.name; });
}

// A text that a centre received names its alarm, where the protocol carries it.
bool IsOfAlarm(const std::string& pager, const std::string& text, int alarm) {
    const std::string type = PlanOf(pager).type;
    const bool carries_details = type == "sms1" || type == "sms2" || type == "alphanumeric";
    return !carries_details || text == "OPS/Major/SRV1/pump" + std::to_string(alarm);
}

void Note(Story& story, const LedgerLine& words) {
    const std::string& what = words[0];
    const auto page = [&]() -> Page& { return story.pages[{Number(words[1]), words[2]}]; };
    if (what == "forward") {
        page();
    } else if (what == "answer") {
        page().answered = words[3] == "1";
    } else if (what == "dial") {
        page().dials.push_back(std::stol(words[3]));
    } else if (what == "received") {
        ++page().received;
        if (!IsForPager(PlanOf(words[2]).number, words[4]) ||
            !IsOfAlarm(words[2], words[5], Number(words[1]))) {
            story.misdelivered.push_back(words[2] + " got " + words[5] + " to " + words[4]);
        }
    } else if (what == "acknowledge") {
        story.begun_acknowledging.insert(Number(words[1]));
    } else if (what == "acknowledged") {
        story.acknowledged[Number(words[1])] = std::stol(words[2]);
    } else if (what == "killed") {
        story.kill = Kill{static_cast<Phase>(Number(words[1])),
                          {Number(words[2]), words[3]},
                          static_cast<Stage>(Number(words[4])),
                          words[6] == "1",
                          Number(words[7])};
    } else if (what == "row") {
        if (Number(words[4]) == kBeingPaged) {
            story.still_pending.push_back({Number(words[1]), words[2]});
        }
    } else if (what == "alarm") {
        story.alarm_states[Number(words[1])] = Number(words[2]);
    } else if (what == "end") {
        story.ended = true;
    }
}

Story Read(std::istream& ledger) {
    Story story;
    for (const LedgerLine& line : ReadLedgerLines(ledger)) {
        Note(story, line);
    }
    return story;
}

// How often a page may have been received.
struct Bounds {
    int least;
    int most;
};

// The one page that a centre had accepted when the process was killed, and whose row did not say so
// yet, is sent once more. Within a write of the store, both are possible.
Bounds BoundsOf(const Story& story, const PageKey& key, const Page& page) {
    Bounds bounds{PlanOf(key.pager).sends, PlanOf(key.pager).sends};
    if (story.kill && story.kill->page == key && story.kill->stage == Stage::kAccepted) {
        ++bounds.most;
        bounds.least += story.kill->writing ? 0 : 1;
    }
    const bool may_be_short = !page.answered || story.begun_acknowledging.count(key.alarm) != 0;
    return {may_be_short ? 0 : bounds.least, bounds.most};
}

// A call that is killed is made again. Of two failures the first doesn't count; a crash forgets
// that it was, and so does the planned restart, which a page meets that the crash has delayed.
int MostDials(const Story& story, const PageKey& key) {
    const PagerPlan& plan = PlanOf(key.pager);
    const int busy = key.pager == "tap" ? kBusyCalls : 0;
    if (!story.kill) {
        return plan.calls + busy;
    }
    const bool always_fails = plan.sends == 0;
    const int forgotten = always_fails ? 2 : busy;
    return plan.calls + busy + 1 + forgotten;
}

std::string Name(const PageKey& key) {
    return "alarm " + std::to_string(key.alarm) + " for " + key.pager;
}

void JudgePage(const Story& story, const PageKey& key, const Page& page,
               std::vector<std::string>& complaints) {
    const Bounds bounds = BoundsOf(story, key, page);
    if (page.received < bounds.least || page.received > bounds.most) {
        complaints.push_back(Name(key) + " was received " + std::to_string(page.received) +
                             " times, not " + std::to_string(bounds.least) + " to " +
                             std::to_string(bounds.most));
    }
    if (static_cast<int>(page.dials.size()) > MostDials(story, key)) {
        complaints.push_back(Name(key) + " was dialled " + std::to_string(page.dials.size()) +
                             " times");
    }
    // From the look at the alarm to the dialling.
    constexpr long kSettingUp = 15;
    const auto acknowledged = story.acknowledged.find(key.alarm);
    if (acknowledged != story.acknowledged.end() && !page.dials.empty() &&
        page.dials.back() > acknowledged->second + kSettingUp) {
        complaints.push_back(Name(key) + " was dialled after its acknowledgement");
    }
}

// The fold of an alarm's pages is written after the row: a crash between the two leaves this alarm
// as being paged, though nothing is owed any more.
void JudgeAlarms(const Story& story, std::vector<std::string>& complaints) {
    for (const auto& alarm_state : story.alarm_states) {
        const auto alarm = alarm_state.first;
        const auto state = alarm_state.second;
        const bool may_lag = story.kill && story.kill->unfolded == alarm;
        const bool asked_for = std::any_of(
            story.pages.begin(), story.pages.end(),
            [&](const auto& page) { return page.first.alarm == alarm && page.second.answered; });
        if (state == kBeingPaged && asked_for && !may_lag) {
            complaints.push_back("alarm " + std::to_string(alarm) + " is still being paged");
        }
        if (story.acknowledged.count(alarm) != 0 && state != 1) {
            complaints.push_back("alarm " + std::to_string(alarm) + " is acknowledged no more");
        }
    }
}

}  // namespace

Verdict Judge(std::istream& ledger) {
    const Story story = Read(ledger);
    Verdict verdict;
    if (story.kill) {
        verdict.killed = story.kill->phase;
    }
    if (!story.ended) {
        verdict.complaints.emplace_back("the second life did not come to its end");
        return verdict;
    }
    verdict.complaints = story.misdelivered;
    if (story.pages.size() != kForwards) {
        verdict.complaints.emplace_back("not every page was forwarded");
    }
    for (const auto& [key, page] : story.pages) {
        JudgePage(story, key, page, verdict.complaints);
    }
    for (const PageKey& key : story.still_pending) {
        verdict.complaints.push_back(Name(key) + " is still pending");
    }
    JudgeAlarms(story, verdict.complaints);
    return verdict;
}

}  // namespace proof::crash
