// The sources of notices. Tested by tests/unit/host/news_test.cpp.
#include "host/node/news.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "host/node/reckoned_site.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/events.h"
#include "host/store/tables/lines.h"
#include "host/store/tables/nodes.h"
#include "host/store/tables/sends.h"
#include "host/store/tables/states.h"

namespace host {
namespace {

constexpr std::time_t kBetweenLooks = 5;

// A line records its sending a moment behind the end of the page.
constexpr std::time_t kUntilRecorded = 5;

// Far back enough to know of alarms that are followed whether a page got through before the start.
constexpr int64_t kFollowedSends = 10 * kFollowedAlarms;

void NameKey(Notice& notice, const Alarm& alarm) {
    if (!alarm.key.empty()) {
        notice.source = alarm.source;
        notice.key = alarm.key;
    }
}

bool IsOver(const Alarm& alarm) {
    return !alarm.acknowledged && (alarm.state == kStateOffLimit || alarm.state == kStateDone);
}

// One that an operator has given up is known to him.
bool HasReachedSomebody(const PageStory& page) {
    return page.reached == Reached::kSent || page.reached == Reached::kDialled ||
           page.end == PageEnd::kByHand ||
           (page.end == PageEnd::kDone && page.reached != Reached::kOutsideHours);
}

}  // namespace

News::News(Encoding encoding, Notices& notices)
    : encoding_(encoding), notices_(notices), pace_(kBetweenLooks) {}

void News::Look(Connection& connection, std::time_t now) {
    pace_.Want();
    if (!pace_.Take(now)) {
        return;
    }
    LookAtLines(connection, now);
    LookAtAlarms(connection, now, kUntilRecorded);
    LookAtWaitingPagers(connection, now);
    LookAtNodes(connection, now);
    first_ = false;
    if (WaitForTime()) {
        pace_.Want();
    }
}

// Whether something becomes news by time alone.
bool News::WaitForTime() const {
    const bool has_ended = std::any_of(ended_.begin(), ended_.end(),
                                       [](const auto& alarm) { return !alarm.second.looked_at; });
    return has_ended || waiting_.size() > told_waiting_.size();
}

void News::LookLast(Connection& connection, std::time_t now) {
    LookAtLines(connection, now);
    LookAtAlarms(connection, now, 0);
}

Notice News::Made(NoticeKind kind, bool over, const std::string& text) const {
    Notice notice;
    notice.kind = kind;
    notice.over = over;
    notice.text = text;
    return notice;
}

void News::LookAtLines(Connection& connection, std::time_t now) {
    std::set<std::string> sick;
    for (const LineState& state : ReadLines(connection)) {
        if (state.health != Health::kSick) {
            continue;
        }
        const std::string line = Decode(state.line, encoding_);
        sick.insert(line);
        if (sick_.count(line) == 0 && !first_) {
            Notice notice =
                Made(NoticeKind::kLineSick, false,
                     "line \"" + line + "\" is sick: " + Decode(state.reason, encoding_));
            notice.line = line;
            SayOfSite(notice, now);
        }
    }
    for (const std::string& line : sick_) {
        if (sick.count(line) == 0) {
            Notice notice = Made(NoticeKind::kLineSick, true, "line \"" + line + "\" is back");
            notice.line = line;
            SayOfSite(notice, now);
        }
    }
    sick_ = std::move(sick);
}

// One that was never tried was given up by the operator: its alarm was too old.
void News::PageEnded(const PageStory& page, std::time_t now) {
    const bool was_tried = page.tries > 0 || page.reached != Reached::kUnknown;
    if (!IsUndelivered(page) || !was_tried) {
        return;
    }
    const std::string pager = Decode(page.pager, encoding_);
    const std::string alarm = Decode(page.alarm, encoding_);
    given_up_[alarm].insert(pager);
    Notice notice = Made(NoticeKind::kPageGivenUp, false,
                         "page of alarm " + alarm + " (" + Decode(page.group, encoding_) +
                             ") to \"" + pager + "\": given up, none of its tries got through");
    notice.alarm = alarm;
    notice.pager = pager;
    SayOfSite(notice, now);
}

void News::LookAtAlarms(Connection& connection, std::time_t now, std::time_t until_recorded) {
    std::set<int64_t> rows;
    const std::vector<Alarm> alarms = LastAlarms(connection, kFollowedAlarms);
    LookAtAcknowledged(alarms, now);
    LookAtDelivered(connection, alarms, now);
    for (const Alarm& alarm : alarms) {
        rows.insert(alarm.row);
        LookAtAlarm(connection, alarm, now, until_recorded);
        if (alarm.acknowledged) {
            Acknowledged(alarm, now);
        }
    }
    for (auto one = ended_.begin(); one != ended_.end();) {
        one = rows.count(one->first) == 0 ? ended_.erase(one) : std::next(one);
    }
}

void News::LookAtAlarm(Connection& connection, const Alarm& alarm, std::time_t now,
                       std::time_t until_recorded) {
    if (IsOver(alarm)) {
        Ended& ended = ended_.try_emplace(alarm.row, Ended{now, first_, false}).first->second;
        if (!ended.looked_at && now >= ended.seen + until_recorded) {
            EndedIn(connection, alarm, ended, now);
        }
        return;
    }
    const auto known = ended_.find(alarm.row);
    if (known != ended_.end()) {
        if (known->second.unheard) {
            SayOfAlarm(alarm, true,
                       alarm.acknowledged ? "was acknowledged" : "is being paged again", now);
        }
        ended_.erase(known);
    }
}

void News::EndedIn(Connection& connection, const Alarm& alarm, Ended& ended, std::time_t now) {
    const std::vector<PageStory> pages = PagesOf(connection, alarm.number);
    ended.looked_at = true;
    ended.unheard = std::none_of(pages.begin(), pages.end(), HasReachedSomebody);
    if (ended.unheard) {
        SayOfAlarm(alarm, false,
                   pages.empty() ? "reached nobody: it led to no pager"
                                 : "reached nobody: no page of it got through",
                   now);
    }
}

void News::SayOfAlarm(const Alarm& alarm, bool over, const std::string& what, std::time_t now) {
    Notice notice = Made(NoticeKind::kAlarmUnheard, over,
                         "alarm " + Decode(alarm.number, encoding_) + " (" +
                             Decode(alarm.group, encoding_) + ") " + what);
    notice.alarm = Decode(alarm.number, encoding_);
    NameKey(notice, alarm);
    SayOfSite(notice, now);
}

void News::SayOfKey(NoticeKind kind, const Alarm& alarm, const std::string& what, std::time_t now) {
    if (!tells_answers_ || first_) {
        return;
    }
    Notice notice = Made(kind, false,
                         "alarm " + Decode(alarm.number, encoding_) + " (" +
                             Decode(alarm.group, encoding_) + ") " + what);
    notice.alarm = Decode(alarm.number, encoding_);
    NameKey(notice, alarm);
    SayOfSite(notice, now);
}

void News::LookAtAcknowledged(const std::vector<Alarm>& alarms, std::time_t now) {
    std::set<std::string> acknowledged;
    for (const Alarm& alarm : alarms) {
        if (alarm.key.empty() || !alarm.acknowledged || EndedByWithdrawal(alarm)) {
            continue;
        }
        if (acknowledged_.count(alarm.number) == 0) {
            const std::string by = Decode(alarm.acknowledged_by, encoding_);
            SayOfKey(NoticeKind::kAcknowledged, alarm,
                     "was acknowledged" + (by.empty() ? "" : " by " + by), now);
        }
        acknowledged.insert(alarm.number);
    }
    acknowledged_ = std::move(acknowledged);
}

void News::LookAtDelivered(Connection& connection, const std::vector<Alarm>& alarms,
                           std::time_t now) {
    const int64_t last = LastSend(connection);
    const int64_t first = first_ ? std::max<int64_t>(last - kFollowedSends, 0) : last_send_;
    std::map<std::string, std::string> sent;  // pagers, by the alarm's number
    for (const Send& send : SendsBetween(connection, first, last)) {
        if (send.outcome == TracedPage::Outcome::kSent ||
            send.outcome == TracedPage::Outcome::kDialled) {
            sent.try_emplace(send.alarm, send.pager);
        }
    }
    last_send_ = last;
    std::set<std::string> delivered;
    for (const Alarm& alarm : alarms) {
        const auto page = sent.find(alarm.number);
        const bool before = delivered_.count(alarm.number) != 0;
        if (alarm.key.empty() || (!before && page == sent.end())) {
            continue;
        }
        if (!before) {
            SayOfKey(NoticeKind::kDelivered, alarm,
                     "got through to \"" + Decode(page->second, encoding_) + "\"", now);
        }
        delivered.insert(alarm.number);
    }
    delivered_ = std::move(delivered);
}

void News::Acknowledged(const Alarm& alarm, std::time_t now) {
    const auto found = given_up_.find(Decode(alarm.number, encoding_));
    if (found == given_up_.end()) {
        return;
    }
    for (const std::string& pager : found->second) {
        Notice notice = Made(NoticeKind::kPageGivenUp, true,
                             "alarm " + found->first + ", whose page to \"" + pager +
                                 "\" was given up, was acknowledged");
        notice.alarm = found->first;
        notice.pager = pager;
        SayOfSite(notice, now);
    }
    given_up_.erase(found);
}

void News::LookAtWaitingPagers(Connection& connection, std::time_t now) {
    std::map<std::string, std::time_t> waiting;
    const std::vector<std::string> pagers = PagersWithPages(connection);
    const ReckonedSite site = pagers.empty() ? ReckonedSite{} : ReadReckonedSite(connection);
    for (const std::string& pager : pagers) {
        const auto known = site.pagers.find(pager);
        if (known != site.pagers.end() && known->second.rows == 1 && site.LinesFor(pager).empty()) {
            const auto before = waiting_.find(pager);
            waiting[pager] = before == waiting_.end() ? now : before->second;
        }
    }
    for (const auto& [pager, since] : waiting) {
        if (now >= since + kPassing && told_waiting_.insert(pager).second) {
            const std::string name = Decode(pager, encoding_);
            Notice notice = Made(NoticeKind::kPagerWithoutLine, false,
                                 "pages to \"" + name + "\" wait: no line can have them");
            notice.pager = name;
            SayOfSite(notice, now);
        }
    }
    for (auto told = told_waiting_.begin(); told != told_waiting_.end();) {
        if (waiting.count(*told) != 0) {
            ++told;
            continue;
        }
        const std::string name = Decode(*told, encoding_);
        Notice notice = Made(NoticeKind::kPagerWithoutLine, true,
                             "no page to \"" + name + "\" waits for want of a line any more");
        notice.pager = name;
        SayOfSite(notice, now);
        told = told_waiting_.erase(told);
    }
    waiting_ = std::move(waiting);
}

void News::SayOfSite(const Notice& notice, std::time_t now) {
    if (leads_) {
        notices_.Say(notice, now);
    }
}

// Said by whoever has taken its pages over, and so is its return.
void News::NodeIsGone(const std::string& node, const TakenOver& taken, bool asks, std::time_t now) {
    gone_.insert(node);
    const std::string pages = std::to_string(taken.pages) + " page(s) of its lines wait for others";
    Notice notice = Made(NoticeKind::kNodeGone, false,
                         "node \"" + Decode(node, encoding_) + "\" is gone; " + pages);
    notice.node = Decode(node, encoding_);
    notices_.Say(notice, now);
    for (const PageKey& page : taken.may_have_left) {
        if (asks) {
            unknown_.push_back(page);
            notices_.Say(OfUnknown(page, false), now);
        }
    }
}

Notice News::OfUnknown(const PageKey& page, bool over) const {
    const std::string pager = Decode(page.pager, encoding_);
    Notice notice = Made(NoticeKind::kOutcomeUnknown, over,
                         "page of alarm " + page.alarm + " to \"" + pager + "\": " +
                             (over ? "somebody has said what it came to"
                                   : "may have been sent when its node died; pagerfwd page resend, "
                                     "or done"));
    notice.alarm = page.alarm;
    notice.pager = pager;
    return notice;
}

void News::LookAtNodes(Connection& connection, std::time_t now) {
    for (auto one = gone_.begin(); one != gone_.end();) {
        const std::optional<NodeState> node = FindNode(connection, *one);
        if (node && !node->lives) {
            ++one;
            continue;
        }
        const std::string name = Decode(*one, encoding_);
        Notice notice = Made(NoticeKind::kNodeGone, true,
                             "node \"" + name + (node ? "\" is back" : "\" was removed"));
        notice.node = name;
        notices_.Say(notice, now);
        one = gone_.erase(one);
    }
    for (auto one = unknown_.begin(); one != unknown_.end();) {
        const std::optional<Delivery> delivery = FindDelivery(connection, *one);
        if (IsOpen(delivery) && delivery->unknown) {
            ++one;
        } else {
            notices_.Say(OfUnknown(*one, true), now);
            one = unknown_.erase(one);
        }
    }
}

void News::DatabaseWorked(const std::string& why_not, std::time_t now) {
    if (why_not.empty()) {
        failing_.reset();
        if (std::exchange(told_failing_, false)) {
            notices_.Say(Made(NoticeKind::kDatabaseAway, true, "the database works again"), now);
        }
        return;
    }
    failing_ = failing_.value_or(now);
    if (now >= *failing_ + kPassing && !std::exchange(told_failing_, true)) {
        notices_.Say(Made(NoticeKind::kDatabaseAway, false, "no page can leave: " + why_not), now);
    }
}

void News::DiskIs(bool full, const std::string& database, std::time_t now) {
    if (std::exchange(full_, full) != full) {
        notices_.Say(Made(NoticeKind::kDiskFull, !full,
                          "the disk of " + database + (full ? " is full" : " has room again")),
                     now);
    }
}

}  // namespace host
