// A lease, kept. Tested by tests/unit/host/membership_test.cpp.
#include "host/node/node_lease.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <ctime>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "host/process/database_locks.h"
#include "host/process/lease_record.h"
#include "host/process/signals_held.h"

namespace host {
namespace {

// A server that was away for 20 s is back before the lines of a node that is alone end: the renewal
// before it is 3 s old at most, the pause before it is tried again 8 s (store/retry_pause.h).
std::chrono::milliseconds BetweenRenewals(const NodeLease::Terms& terms) {
    constexpr std::chrono::milliseconds kLongest{3000};
    return std::min(terms.validity / 5, kLongest);
}

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
        if (auto tenure = TakeLease(connection, terms.node, me, terms.validity, dead)) {
            RecordLease(terms.database, {terms.node, tenure->term, me});
            return Held{*std::move(tenure), asked};
        }
        if (before && now && WasRenewed(*before, *now)) {
            throw InUse("node \"" + terms.node + "\" runs already: " + now->holder +
                        ". Each host needs a name of its own: [[node]] in the site file, and run "
                        "--node");
        }
        before = now;
        if (!wait(BetweenRenewals(terms))) {
            return std::nullopt;
        }
    }
}

}  // namespace

NodeLease::NodeLease(Terms terms, OperatorLog& log,
                     const std::function<bool(std::chrono::milliseconds)>& wait)
    : terms_(std::move(terms)), trouble_(log, "the node's lease is renewed again") {
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

void NodeLease::MoveDeadline(LeaseDeadline::Instant asked) {
    deadline_.MoveTo(asked + terms_.validity * 3 / 5);
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
    const int pause = static_cast<int>(BetweenRenewals(terms_).count());
    do {
        Renew(connection);
    } while (!lost_ && poll(&end, 1, pause) <= 0);
}

// Where it fails, the next may work. Of an outage the node itself tells.
void NodeLease::Renew(std::unique_ptr<Connection>& connection) {
    const LeaseDeadline::Instant asked = LeaseDeadline::Now();
    try {
        if (connection == nullptr) {
            connection = std::make_unique<Connection>(terms_.database);
        }
        if (RenewLease(*connection, tenure_, terms_.validity)) {
            MoveDeadline(asked);
        } else {
            lost_ = true;
        }
        Tell("");
    } catch (const StoreAway& away) {
        connection.reset();
        if (away.Outage().empty()) {
            Tell(away.what());
        }
    } catch (const StoreError& failure) {
        connection.reset();
        Tell(failure.what());
    }
}

void NodeLease::Tell(const std::string& why_not) {
    trouble_.Is(why_not.empty() ? "" : "the node's lease can't be renewed: " + why_not,
                std::time(nullptr));
}

void NodeLease::End(Connection& connection) {
    StopKeeping();
    deadline_.MoveTo(LeaseDeadline::Instant(0));
    EndLease(connection, tenure_);
}

}  // namespace host
