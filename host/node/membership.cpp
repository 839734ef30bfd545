// A node among others. Tested by tests/unit/host/membership_test.cpp, and with real processes by
// tests/proof/hosts_test.cpp.
#include "host/node/membership.h"

#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "host/pages/takeover.h"
#include "host/site/site_tables.h"
#include "host/store/pool.h"
#include "host/store/schema.h"

namespace host {
namespace {

std::string ThisHost() {
    std::array<char, HOST_NAME_MAX + 1> name{};
    gethostname(name.data(), name.size() - 1);
    return name.data();
}

bool Has(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

Membership::Membership(std::string database, Wishes wishes, Encoding encoding, OperatorLog& log)
    : database_(std::move(database)), wishes_(std::move(wishes)), encoding_(encoding), log_(log) {}

std::string Membership::Shown(const std::string& name) const {
    return "node \"" + Decode(name, encoding_) + "\"";
}

// The one that was asked for, the one that is called as the host, the only one.
std::string Membership::NameIn(Connection& connection) const {
    const std::vector<std::string> nodes = NodesOfSite(connection);
    std::string asked = Encode(wishes_.node, encoding_);
    if (!asked.empty()) {
        if (!nodes.empty() && !Has(nodes, asked)) {
            throw NoSuchNode("the site has no node \"" + wishes_.node +
                             "\"; its nodes are in pagerfwd node list");
        }
        if (nodes.empty() && asked != kOnlyNode) {
            throw NoSuchNode("the site names no nodes, so there is no \"" + wishes_.node + "\"");
        }
        return asked;
    }
    if (Has(nodes, ThisHost())) {
        return ThisHost();
    }
    if (nodes.size() > 1) {
        throw NoSuchNode("the site has several nodes, and none is called \"" + ThisHost() +
                         "\" as this host is; say which one this is: run --node");
    }
    return nodes.empty() ? kOnlyNode : nodes.front();
}

// Where no other node is there to take its pages, one may be out of touch for longer.
std::chrono::seconds Membership::LeaseIn(Connection& connection) const {
    constexpr std::chrono::seconds kAmongOthers{5};
    constexpr std::chrono::seconds kAlone{60};
    if (wishes_.lease.count() > 0) {
        return wishes_.lease;
    }
    return NodesOfSite(connection).size() > 1 ? kAmongOthers : kAlone;
}

bool Membership::Join(Connection& connection,
                      const std::function<bool(std::chrono::milliseconds)>& wait) {
    const std::string name = NameIn(connection);
    is_outdated_ = IsOutdated(connection);
    if (!connection.Can().spans_hosts) {
        if (NodesOfSite(connection).size() > 1) {
            throw NoSuchNode(connection.Name() +
                             ": a site of several nodes needs a database on a server; this is a "
                             "file, which only programs of one host can have open");
        }
        BringUpToDate(connection);
        return true;
    }
    name_ = name;
    lease_ = std::make_unique<NodeLease>(NodeLease::Terms{database_, name_, LeaseIn(connection)},
                                         log_, wait);
    if (!lease_->WasTaken()) {
        return false;
    }
    connection.WriteAs(lease_->Term());
    WriteAs(database_, lease_->Term());
    log_.Info(Shown(name_) + ", term " + std::to_string(lease_->Term().term));
    Look(connection);
    return true;
}

void Membership::Leave(Connection& connection) {
    if (lease_ != nullptr && lease_->WasTaken() && !lease_->IsLost()) {
        lease_->End(connection);
    }
}

void Membership::Look(Connection& connection) {
    if (lease_ == nullptr) {
        return;
    }
    others_live_ = false;
    bool somebody_leads = false;
    bool all_know_newest = true;
    for (const NodeState& node : ReadNodes(connection)) {
        somebody_leads = somebody_leads || node.leads;
        all_know_newest = all_know_newest && (node.holder.empty() || node.speaks >= NewestTables());
        if (node.node == name_) {
            leads_ = node.leads;
            drained_ = node.drained;
        } else if (node.IsOver()) {
            TakeOverFrom(connection, node);
            somebody_leads = somebody_leads && !node.leads;
        } else {
            others_live_ = others_live_ || node.lives;
        }
    }
    if (!somebody_leads && TakeLead(connection, lease_->Term())) {
        leads_ = true;
        log_.Info("this node takes alarms up and tells the site's notices from now on");
    }
    if (leads_ && all_know_newest) {
        BringUpToDate(connection);
    }
}

// When the last node has gone that doesn't know the newer tables. Where the server lets no node
// change them, an administrator does.
void Membership::BringUpToDate(Connection& connection) {
    if (!std::exchange(is_outdated_, false)) {
        return;
    }
    try {
        const Made made = CreateTables(connection);
        is_outdated_ = made == Made::kLater;
        if (made == Made::kNewerParts) {
            log_.Info("the database is brought up to date: no node of an older pagerfwd is left");
        }
    } catch (const StoreAway&) {
        is_outdated_ = true;
        throw;
    } catch (const NotOurs&) {
        throw;
    } catch (const StoreError& failure) {
        log_.Warning("the database can be brought up to date now, by: pagerfwd init (" +
                     std::string(failure.what()) + ")");
    }
}

void Membership::TakeOverFrom(Connection& connection, const NodeState& node) {
    const std::optional<TakenOver> taken = TakeOver(connection, node.node, node.term);
    if (!taken) {
        return;
    }
    log_.Warning(Shown(node.node) + " is gone" +
                 (node.holder.empty() ? "" : " (" + node.holder + ")") + "; " +
                 std::to_string(taken->pages) + " page(s) of its lines wait for others");
    for (const PageKey& page : taken->may_have_left) {
        log_.Warning("page of alarm " + page.alarm + " to \"" + Decode(page.pager, encoding_) +
                     "\" was on its line, and may have been sent");
    }
    if (taken->given_up > 0) {
        log_.Error(
            std::to_string(taken->given_up) +
            " page(s) given up: over all lines they were tried twice as often as their pagers "
            "allow");
    }
    listener_(node.node, *taken, AsksForUnknownOutcomes(connection));
}

int64_t Membership::ToldUpTo(Connection& connection) const {
    return lease_ == nullptr ? 0 : host::ToldUpTo(connection);
}

void Membership::NoteTold(Connection& connection, int64_t row) const {
    if (lease_ != nullptr) {
        host::NoteTold(connection, lease_->Term(), row);
    }
}

void Membership::WasFoundLost() {
    if (lease_ != nullptr) {
        lease_->WasFoundLost();
    }
}

std::string Membership::WhyIdle() const {
    if (lease_ == nullptr) {
        return {};
    }
    if (!lease_->IsValid()) {
        return "its node's lease is over";
    }
    return drained_ ? "its node is drained" : "";
}

std::vector<std::string> Membership::LineOptions() const {
    if (lease_ == nullptr) {
        return {};
    }
    // A name in one word with its option: it may begin with a dash.
    const Tenure& tenure = lease_->Term();
    return {"--node=" + name_, "--term=" + std::to_string(tenure.term),
            "--deadline=" + std::to_string(lease_->Deadline().Number())};
}

std::vector<int> Membership::LineDescriptors() const {
    return lease_ == nullptr ? std::vector<int>() : std::vector<int>{lease_->Deadline().Number()};
}

}  // namespace host
