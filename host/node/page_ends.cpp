// Ends of pages, for the operator. Tested by tests/unit/host/page_ends_test.cpp.
#include "host/node/page_ends.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "host/pages/page_words.h"
#include "host/store/tables/alarm_log.h"
#include "host/store/tables/history.h"

namespace host {
namespace {

// Of however many that end at once: the pages that wait for a line wait for this, too.
constexpr int64_t kMostAtOnce = 500;

std::vector<Alarm> AcknowledgedAlarms(Connection& connection) {
    std::vector<Alarm> acknowledged;
    for (Alarm& alarm : LastAlarms(connection, kFollowedAlarms)) {
        if (alarm.acknowledged) {
            acknowledged.push_back(std::move(alarm));
        }
    }
    return acknowledged;
}

}  // namespace

PageEnds::PageEnds(Connection& connection, Encoding encoding, OperatorLog& log)
    : connection_(connection), encoding_(encoding), log_(log), seen_(LastChange(connection)) {
    for (const Alarm& alarm : AcknowledgedAlarms(connection)) {
        acknowledged_.insert(alarm.row);
    }
}

void PageEnds::Mark() {
    marked_ = LastChange(connection_);
}

void PageEnds::Skip() {
    Mark();
    seen_ = marked_;
}

// A site that was copied from elsewhere may have fewer rows by now.
void PageEnds::GoOnBehind(int64_t row) {
    if (row > 0) {
        seen_ = std::min(row, seen_);
    }
}

bool PageEnds::Look() {
    LookAtAcknowledgements();
    return LookAtPages();
}

bool PageEnds::LookAtAll() {
    bool told = false;
    do {
        told = Look() || told;
    } while (HaveMark());
    return told;
}

// Others acknowledge: the database's version tells whether there is anything to look for.
void PageEnds::LookAtAcknowledgements() {
    const int64_t version = connection_.Version();
    if (std::exchange(version_, version) == version) {
        return;
    }
    std::set<int64_t> now;
    for (const Alarm& alarm : AcknowledgedAlarms(connection_)) {
        now.insert(alarm.row);
        if (acknowledged_.count(alarm.row) == 0) {
            Tell(alarm);
        }
    }
    acknowledged_ = std::move(now);
}

void PageEnds::Tell(const Alarm& alarm) {
    const std::string by = alarm.acknowledged_by.empty() ? "another program"
                                                         : Decode(alarm.acknowledged_by, encoding_);
    log_.Info("alarm " + Decode(alarm.number, encoding_) + " (" + Decode(alarm.group, encoding_) +
              "): " + (EndedByWithdrawal(alarm) ? "resolved" : "acknowledged by " + by));
}

bool PageEnds::LookAtPages() {
    if (marked_ <= seen_) {
        return false;
    }
    const int64_t until = BehindEnds(connection_, seen_, marked_, kMostAtOnce);
    const std::vector<PageStory> pages = PagesEndedBetween(connection_, seen_, until);
    seen_ = until;
    for (const PageStory& page : pages) {
        Tell(page);
    }
    return !pages.empty();
}

void PageEnds::Tell(const PageStory& page) {
    ++counts_[StateOf(page)];
    listener_(page);
    given_up_ += page.end == PageEnd::kOffLimit ? 1 : 0;
    const std::string text = "page of alarm " + page.alarm + " to \"" +
                             Decode(page.pager, encoding_) + "\": " + EndOf(page) +
                             (page.note.empty() ? "" : ": " + Decode(page.note, encoding_));
    if (IsUndelivered(page)) {
        log_.Error(text);
    } else if (page.end == PageEnd::kOffLimit || page.end == PageEnd::kDropped) {
        log_.Warning(text);
    } else {
        log_.Info(text);
    }
}

}  // namespace host
