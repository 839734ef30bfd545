// A lease, kept. Tested by tests/unit/host/membership_test.cpp.
#include "host/node/node_lease.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "host/process/database_locks.h"
#include "host/process/lease_record.h"
#include "host/process/signals_held.h"

namespace host {
namespace {

constexpr int kPeriodsValid = 5;
constexpr int kPeriodsOfLines = 3;

std::string ThisProcess() {
    std::array<char, HOST_NAME_MAX + 1> name{};
    gethostname(name.data(), name.size() - 1);
    return std::string(name.data()) + ", process " + std::to_string(getpid());
}

// Of this host, whose lock we have by now: neither it nor its lines are there any more.
std::string DeadHolder(const NodeLease::Terms& terms, const NodeState& node) {
    return WasOfThisHost(terms.database, {terms.node, node.term, node.holder}) ? node.holder : "";
}

// The same holder has renewed it: he lives.
bool WasRenewed(const NodeState& before, const NodeState& now) {
    return now.term != before.term || now.valid_until != before.valid_until;
}

struct Held {
    Tenure tenure;
    LeaseDeadline::Instant asked;  // for it
};

std::optional<Held> AwaitLease(Connection& connection, const NodeLease::Terms& terms,
                               const std::function<bool(std::chrono::milliseconds)>& wait) {
    const std::string me = ThisProcess();
    std::optional<NodeState> before;
    for (;;) {
        const std::optional<NodeState> now = FindNode(connection, terms.node);
        const std::string dead = now ? DeadHolder(terms, *now) : "";
        const LeaseDeadline::Instant asked = LeaseDeadline::Now();
        if (auto tenure =
                TakeLease(connection, terms.node, me, terms.period * kPeriodsValid, dead)) {
            RecordLease(terms.database, {terms.node, tenure->term, me});
            return Held{*std::move(tenure), asked};
        }
        if (before && now && WasRenewed(*before, *now)) {
            throw InUse("node \"" + terms.node + "\" runs already: " + now->holder +
                        ". Each host needs a name of its own: [[node]] in the site file, and run "
                        "--node");
        }
        before = now;
        if (!wait(terms.period)) {
            return std::nullopt;
        }
    }
}

}  // namespace

NodeLease::NodeLease(Terms terms, const std::function<bool(std::chrono::milliseconds)>& wait)
    : terms_(std::move(terms)) {
    Connection connection(terms_.database);
    std::optional<Held> held_lease = AwaitLease(connection, terms_, wait);
    if (!held_lease) {
        return;
    }
    tenure_ = std::move(held_lease->tenure);
    MoveDeadline(held_lease->asked);
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "the lease of a node");
    }
    awaited_ = Descriptor(ends[0]);
    end_ = Descriptor(ends[1]);
    const SignalsHeld held;  // they are the node's
    keeper_ = std::thread([this] { Keep(); });
}

NodeLease::~NodeLease() {
    StopKeeping();
}

std::chrono::milliseconds NodeLease::Validity() const {
    return terms_.period * kPeriodsValid;
}

void NodeLease::MoveDeadline(LeaseDeadline::Instant asked) {
    deadline_.MoveTo(asked + terms_.period * kPeriodsOfLines);
}

void NodeLease::StopKeeping() {
    if (keeper_.joinable()) {
        end_ = Descriptor();
        keeper_.join();
    }
}

// A wait that something interrupts isn't the end: without renewals no line would work any more.
void NodeLease::Keep() {
    std::unique_ptr<Connection> connection;
    pollfd end{awaited_.Number(), POLLIN, 0};
    do {
        Renew(connection);
    } while (!lost_ && poll(&end, 1, static_cast<int>(terms_.period.count())) <= 0);
}

// Where it fails, the next may work; the node itself tells that the database doesn't.
void NodeLease::Renew(std::unique_ptr<Connection>& connection) {
    const LeaseDeadline::Instant asked = LeaseDeadline::Now();
    try {
        if (connection == nullptr) {
            connection = std::make_unique<Connection>(terms_.database);
        }
        if (RenewLease(*connection, tenure_, Validity())) {
            MoveDeadline(asked);
        } else {
            lost_ = true;
        }
    } catch (const StoreError&) {
        connection.reset();
    }
}

void NodeLease::End(Connection& connection) {
    StopKeeping();
    deadline_.MoveTo(LeaseDeadline::Instant(0));
    EndLease(connection, tenure_);
}

}  // namespace host
