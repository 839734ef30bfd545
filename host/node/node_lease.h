// A node's lease of its name, taken and kept: by a thread and a connection of its own, so that
// nothing else that the node does can hold a renewal up.
//
// It is renewed five times while it is valid, and every 3 s at least. The node's lines end
// themselves when three fifths of it have gone since the last renewal, long before the others may
// take their pages: that is the deadline.
//
//   nodes of the site   validity   renewed every   lines end behind the last renewal
//        several           5 s          1 s          3 s
//          one            60 s          3 s         36 s: nobody else takes its pages
//
// A renewal counts from when it was asked for: nobody knows when the database has written it.
//
// Threads    The node's, and its own.
// Errors     As each says. That it can't be renewed is told, but for outages.
#ifndef PAGERFWD_HOST_NODE_NODE_LEASE_H
#define PAGERFWD_HOST_NODE_NODE_LEASE_H

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "host/files/descriptor.h"
#include "host/process/lease_deadline.h"
#include "host/process/operator_log.h"
#include "host/process/trouble.h"
#include "host/store/tables/nodes.h"

namespace host {

class NodeLease {
 public:
    struct Terms {
        std::string database;
        std::string node;
        std::chrono::milliseconds validity;
    };

    // Takes the lease. One whose holder has died is waited for; of one whose holder lives, who is
    // seen to renew it, it throws InUse. wait: between two looks; false: the end is asked for, and
    // the lease isn't held then.
    NodeLease(Terms terms, OperatorLog& log,
              const std::function<bool(std::chrono::milliseconds)>& wait);
    ~NodeLease();
    NodeLease(const NodeLease&) = delete;
    NodeLease& operator=(const NodeLease&) = delete;

    // Lines may work from then on: what the first renewal would move is where it belongs already.
    bool WasTaken() const { return tenure_.term != 0; }
    const Tenure& Term() const { return tenure_; }
    const LeaseDeadline& Deadline() const { return deadline_; }

    // Whether lines may work.
    bool IsValid() const { return !deadline_.IsOver(); }
    // Whether another has taken it away: this object is of no use then.
    bool IsLost() const { return lost_; }
    void WasFoundLost() { lost_ = true; }

    // At an orderly end: it is renewed no more, and given back. Throws StoreError.
    void End(Connection& connection);

 private:
    void MoveDeadline(LeaseDeadline::Instant asked);
    void Keep();
    void Renew(std::unique_ptr<Connection>& connection);
    void Tell(const std::string& why_not);
    void StopKeeping();

    const Terms terms_;
    Trouble trouble_;  // the keeper's
    Tenure tenure_;
    LeaseDeadline deadline_;
    std::atomic<bool> lost_{false};
    Descriptor awaited_;  // readable when it is to end
    Descriptor end_;
    std::thread keeper_;
};

}  // namespace host

#endif
