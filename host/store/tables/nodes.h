// Host_Nodes: the nodes of a site, and the lease that each has of its name.
//
//   place        of its part in the site file; -1: it has none
//   term         counts up whenever the lease is taken, or taken away: all that was written for an
//                earlier one is over then
//   holder       the process that has the lease, in words; empty: none
//   valid_until  by the database's clock: until then nobody else may take it
//   leads        whether it does what is done once a site
//   drained      an operator has taken it out of service
//   renewals     how often its lease was renewed
//   told         of how pages ended, up to this row of the history
//   speaks       the newest version of the tables that it knows (NewestTables of schema.h)
//
// A lease is renewed by a single statement, which waits for nobody who writes something else. It is
// taken, and taken away, in a transaction: at its end no write of an earlier term can come any
// more, since every one of these begins with RequireTenure.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_TABLES_NODES_H
#define PAGERFWD_HOST_STORE_TABLES_NODES_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/store/connection.h"

namespace host {

// The node of a site whose file names none.
inline constexpr const char* kOnlyNode = "main";

struct NodeState {
    std::string node;
    bool of_site = false;  // the site file names it
    int64_t term = 0;
    std::string holder;
    bool lives = false;                 // its lease is held and valid
    int64_t valid_until = 0;            // by the database's clock
    std::chrono::milliseconds left{0};  // until then; negative: since then
    bool leads = false;
    bool drained = false;
    bool owns = false;  // lines are its own
    int64_t speaks = 0;

    // Whether somebody may take its pages over, as far as there is anything.
    bool IsOver() const { return left.count() <= 0 && (!holder.empty() || leads || owns); }
};
// Those of the site in its order, then the others.
std::vector<NodeState> ReadNodes(Connection& connection);
std::optional<NodeState> FindNode(Connection& connection, const std::string& node);
std::vector<std::string> NodesOfSite(Connection& connection);

// Requires a write transaction: the nodes that the site file names, in order.
void StoreNodes(Connection& connection, const std::vector<std::string>& nodes);

// --- The lease.

// Takes it where nobody has it, or it is over, and the tables are such as this program knows. dead:
// a holder that is known to be no more. None: somebody has it.
std::optional<Tenure> TakeLease(Connection& connection, const std::string& node,
                                const std::string& holder, std::chrono::milliseconds validity,
                                const std::string& dead = {});
// False: it was taken away.
bool RenewLease(Connection& connection, const Tenure& tenure, std::chrono::milliseconds validity);
// At an orderly end, when the node's lines have ended. What it had stays its own for as long as the
// lease would have been valid: it may be back before.
void EndLease(Connection& connection, const Tenure& tenure);

// Requires a write transaction. Takes away one that is over: its term has ended when this commits.
// False: it isn't over, or another was faster. Of a node that ended in order, too.
bool TakeLeaseAway(Connection& connection, const std::string& node, int64_t term);
// Within a write transaction: throws NotOurs unless the tenure holds.
void RequireTenure(Connection& connection, const Tenure& tenure);

// --- What is done once a site.

// Whether this node does it; it does from now on where nobody does.
bool TakeLead(Connection& connection, const Tenure& tenure);
// Up to which row of the history the operator knows how pages ended, whoever told it; 0: none ever
// did. Who leads notes what it has told: the next goes on behind that.
int64_t ToldUpTo(Connection& connection);
void NoteTold(Connection& connection, const Tenure& tenure, int64_t row);

// --- By hand.

// Whether any holds its lease.
bool AnyNodeLives(Connection& connection);

// --- For who changes the tables: nodes by name and holder, "\"north\" (a host, process 7)".

// Those that hold their leases, in whatever version the table is.
std::vector<std::string> LivingHolders(Connection& connection);
// Those that don't know this version of the tables, and may write to them still: whose leases were
// neither given back nor taken away.
std::vector<std::string> NodesThatDontKnow(Connection& connection, int64_t version);
// False: there is no such node.
bool SetDrained(Connection& connection, const std::string& node, bool drained);
// Requires a write transaction.
void ForgetNode(Connection& connection, const std::string& node);

}  // namespace host

#endif
