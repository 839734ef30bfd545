// What the node does besides its work so that its people know how it goes: notices, where they come
// from, and the heartbeat.
//
// Threads    One.
#ifndef PAGERFWD_HOST_NODE_ALERTS_H
#define PAGERFWD_HOST_NODE_ALERTS_H

#include <ctime>
#include <string>

#include "host/node/heartbeat.h"
#include "host/node/news.h"
#include "host/node/notices.h"
#include "host/process/operator_log.h"
#include "host/store/connection.h"
#include "host/text/encoding.h"

namespace host {

class Alerts {
 public:
    Alerts(const std::string& database, Encoding encoding, OperatorLog& log);

    // Takes the commands that the site has now. Throws StoreError.
    void ReadCommands(Connection& connection);

    // Whether this node tells what concerns the whole site; its own troubles it always tells.
    void SetLeads(bool leads) { news_.SetLeads(leads); }

    // Before the node begins its work: takes note of how things stand. Throws StoreError.
    void Begin(Connection& connection, std::time_t now);

    // Looks at the tables, where these have changed or something is due. Throws StoreError.
    void Look(Connection& connection, std::time_t now);
    bool AreDue(std::time_t now) const { return news_.IsDue(now); }

    // The heartbeat, every minute. To be called about once a second; throws StoreError.
    void Beat(Connection& connection, std::time_t now) { heartbeat_.Look(connection, now); }

    void NodeIsGone(const std::string& node, const TakenOver& taken, bool asks, std::time_t now) {
        news_.NodeIsGone(node, taken, asks, now);
    }
    void PageEnded(const PageStory& page, std::time_t now) { news_.PageEnded(page, now); }
    void DiskIs(bool full, std::time_t now) { news_.DiskIs(full, database_, now); }
    void DatabaseWorked(const std::string& why_not, std::time_t now) {
        news_.DatabaseWorked(why_not, now);
    }

    // Lets the notices go out that wait. To be called about once a second, whatever else fails.
    void Tell(std::time_t now) { notices_.Look(now); }

    // When all lines have ended. Throws StoreError.
    void LookLast(Connection& connection, std::time_t now) { news_.LookLast(connection, now); }

    // Before the end: what can still be told. Waits, as long as one command may take.
    void Finish() { notices_.Finish(); }

    std::time_t LastBeat() const { return heartbeat_.LastBeat(); }

 private:
    const std::string database_;
    Notices notices_;
    News news_;
    SiteHeartbeat heartbeat_;
};

}  // namespace host

#endif
