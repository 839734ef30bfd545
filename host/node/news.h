// Finds what somebody should hear of, and says it to the notices: each trouble once, and its
// all-clear. It reads the tables as everybody may; only of the database, the disk and a page that
// has ended it is told.
//
// What was so before the node started isn't told again.
//
// Threads    One.
// Errors     StoreError; the next look tells what this one couldn't.
#ifndef PAGERFWD_HOST_NODE_NEWS_H
#define PAGERFWD_HOST_NODE_NEWS_H

#include <ctime>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/node/notices.h"
#include "host/node/pace.h"
#include "host/pages/history.h"
#include "host/pages/takeover.h"
#include "host/store/connection.h"
#include "host/store/tables/alarm_log.h"
#include "host/text/encoding.h"

namespace host {

class News {
 public:
    News(Encoding encoding, Notices& notices);

    // Whether what concerns the whole site is said here; what there is, is known all the same.
    void SetLeads(bool leads) { leads_ = leads; }

    // Whether it is told that alarms with a key are acknowledged, and that a page of one got
    // through.
    void TellAnswers(bool tell) { tells_answers_ = tell; }

    // When the tables have changed, or it is due; first before the node begins its work. Looks
    // every five seconds at most.
    void Look(Connection& connection, std::time_t now);
    bool IsDue(std::time_t now) const { return pace_.IsDue(now); }
    // At the end, when all sendings are recorded.
    void LookLast(Connection& connection, std::time_t now);

    // A page has ended, however it did.
    void PageEnded(const PageStory& page, std::time_t now);

    // A node's pages have been taken over. asks: an operator is to say what those have come to that
    // may have left.
    void NodeIsGone(const std::string& node, const TakenOver& taken, bool asks, std::time_t now);

    // What the last work with the database came to; why is empty where it went well.
    void DatabaseWorked(const std::string& why_not, std::time_t now);

    void DiskIs(bool full, const std::string& database, std::time_t now);

    // Seconds that a trouble of the database, or a pager without a line, has to last.
    static constexpr std::time_t kPassing = 30;

 private:
    // Alarms whose pages have all ended, by their rows.
    struct Ended {
        std::time_t seen = 0;
        bool looked_at = false;
        bool unheard = false;
    };
    void LookAtNodes(Connection& connection, std::time_t now);
    Notice OfUnknown(const PageKey& page, bool over) const;
    void LookAtLines(Connection& connection, std::time_t now);
    void LookAtAlarms(Connection& connection, std::time_t now, std::time_t until_recorded);
    void LookAtAlarm(Connection& connection, const Alarm& alarm, std::time_t now,
                     std::time_t until_recorded);
    void EndedIn(Connection& connection, const Alarm& alarm, Ended& ended, std::time_t now);
    void Acknowledged(const Alarm& alarm, std::time_t now);
    void LookAtAcknowledged(const std::vector<Alarm>& alarms, std::time_t now);
    void LookAtDelivered(Connection& connection, const std::vector<Alarm>& alarms, std::time_t now);
    void SayOfKey(NoticeKind kind, const Alarm& alarm, const std::string& what, std::time_t now);
    void LookAtWaitingPagers(Connection& connection, std::time_t now);
    void SayOfSite(const Notice& notice, std::time_t now);
    bool WaitForTime() const;
    Notice Made(NoticeKind kind, bool over, const std::string& text) const;
    void SayOfAlarm(const Alarm& alarm, bool over, const std::string& what, std::time_t now);

    const Encoding encoding_;
    Notices& notices_;
    Pace pace_;
    bool leads_ = true;
    bool tells_answers_ = false;
    bool first_ = true;
    std::set<std::string> sick_;                             // lines
    std::map<int64_t, Ended> ended_;                         // alarms
    std::set<std::string> acknowledged_;                     // alarms with a key, by their numbers
    std::set<std::string> delivered_;                        // ... of which a page got through
    int64_t last_send_ = 0;                                  // the row of the record
    std::map<std::string, std::set<std::string>> given_up_;  // pagers, by the alarm's number
    std::map<std::string, std::time_t> waiting_;             // pagers without a line, since when
    std::set<std::string> told_waiting_;
    std::set<std::string> gone_;          // nodes
    std::vector<PageKey> unknown_;        // pages of which an operator is asked
    std::optional<std::time_t> failing_;  // the database, since when
    bool told_failing_ = false;
    bool full_ = false;
};

}  // namespace host

#endif
