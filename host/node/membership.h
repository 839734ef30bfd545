// A node among the others of its site: its name and its lease, what it takes over of those that
// died, and whether it is the one that does what is done once a site: alarms taken up, notices, the
// heartbeat.
//
// Where no other host can have the database, the node is the only one: it has no lease, and leads.
//
// Threads    One.
// Errors     StoreError, unless said otherwise.
#ifndef PAGERFWD_HOST_NODE_MEMBERSHIP_H
#define PAGERFWD_HOST_NODE_MEMBERSHIP_H

#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/node/node_lease.h"
#include "host/pages/takeover.h"
#include "host/process/operator_log.h"
#include "host/store/connection.h"
#include "host/text/encoding.h"

namespace host {

// The site has no node of the name that was asked for, or several, and none is called as the host.
class NoSuchNode : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

class Membership {
 public:
    struct Wishes {
        std::string node;               // its name; empty: as the site and the host have it
        std::chrono::seconds lease{0};  // 0: as it is usual
    };

    Membership(std::string database, Wishes wishes, Encoding encoding, OperatorLog& log);

    // Who hears of each node that is gone. asks: an operator is asked about pages that may have
    // left.
    using Listener =
        std::function<void(const std::string& node, const TakenOver& taken, bool asks)>;
    void SetListener(Listener listener) { listener_ = std::move(listener); }

    // Takes the lease, and what the connection writes from then on is written for its term. wait:
    // as in node_lease.h. False: the end was asked for meanwhile. Throws InUse and NoSuchNode.
    bool Join(Connection& connection, const std::function<bool(std::chrono::milliseconds)>& wait);
    // At an orderly end.
    void Leave(Connection& connection);

    // Once a second: takes over what others have left behind.
    void Look(Connection& connection);

    // Of a site of several hosts; empty: it is the only one.
    const std::string& Name() const { return name_; }
    bool Leads() const { return leads_; }
    // Up to which row of the history anybody has told how pages ended, for who leads next; 0:
    // nobody ever did, or the node is the only one of a file.
    int64_t ToldUpTo(Connection& connection) const;
    void NoteTold(Connection& connection, int64_t row) const;
    // Whether another has taken its lease away: everything is to begin anew, by Join.
    bool IsLost() const { return lease_ != nullptr && lease_->IsLost(); }
    // A write was refused for that.
    void WasFoundLost();
    // Why none of its lines has any work; empty: they have.
    std::string WhyIdle() const;
    // Whether any of the others lives, as of the last look.
    bool HasLivingOthers() const { return others_live_; }

    // What its lines are started with besides.
    std::vector<std::string> LineOptions() const;
    std::vector<int> LineDescriptors() const;

 private:
    std::string NameIn(Connection& connection) const;
    std::chrono::seconds LeaseIn(Connection& connection) const;
    void TakeOverFrom(Connection& connection, const NodeState& node);
    void BringUpToDate(Connection& connection);
    std::string Shown(const std::string& name) const;

    const std::string database_;
    const Wishes wishes_;
    const Encoding encoding_;
    OperatorLog& log_;
    std::string name_;
    Listener listener_ = [](const std::string&, const TakenOver&, bool) {};
    std::unique_ptr<NodeLease> lease_;
    bool leads_ = true;
    bool drained_ = false;
    bool others_live_ = false;
    bool is_outdated_ = false;  // the database: its tables may be brought up to date
};

}  // namespace host

#endif
