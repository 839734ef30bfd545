// A node from its start on: its lock, its lease, its service. Tested by tests/e2e/run_test.cpp and
// run_lines_test.cpp. Its work is in node_work.cpp, its end in node_end.cpp.
#include "host/node/node.h"

#include <utility>

#include "host/node/pending_pages.h"
#include "host/process/database_locks.h"
#include "host/site/site_tables.h"
#include "host/store/commit_risks.h"
#include "host/store/database_name.h"

namespace host {
namespace {

constexpr std::chrono::milliseconds kBetweenLooks{1000};

LineCommand CommandOf(const NodeOptions& options, const LockFile& lock, const Membership& member) {
    std::vector<int> inherited = member.LineDescriptors();
    inherited.push_back(lock.Number());
    return {options.line_program, options.database, std::move(inherited), member.LineOptions()};
}

}  // namespace

Node::Node(NodeOptions options, OperatorLog& log)
    : options_(std::move(options)),
      log_(log),
      trouble_(log, ShownName(options_.database) + ": works again"),
      lease_(options_.database, Refusals::kKept),
      encoding_(EncodingOf(lease_.Database())),
      lock_(TakeNodeLock(options_.database, "run")),
      spool_(options_.database),
      engine_(EngineLock(options_.database)),
      member_(options_.database, options_.member, encoding_, log_),
      file_(options_.database, log_),
      lines_(encoding_, log_),
      intake_(encoding_, log_),
      dispatch_(lines_, encoding_, log_),
      moves_(lease_.Database(), lines_, member_, encoding_, log_),
      sends_(lease_.Database()),
      ends_(lease_.Database(), encoding_, log_),
      figures_(lease_.Database(), options_.metrics, encoding_, log_),
      room_(options_.database, log_),
      alerts_(options_.database, encoding_, log_) {
    ends_.SetListener(
        [this](const PageStory& page) { alerts_.PageEnded(page, std::time(nullptr)); });
    member_.SetListener([this](const std::string& node, const TakenOver& taken, bool asks) {
        alerts_.NodeIsGone(node, taken, asks, std::time(nullptr));
    });
}

Node::End Node::Run(StopSignal& stop) {
    NotifyManager("READY=1");
    if (WaitForLinesBefore(stop)) {
        while (Join(stop)) {
            Serve(stop);
            if (!member_.IsLost()) {
                break;
            }
        }
    }
    return file_.IsReplaced() ? End::kDatabaseReplaced : End::kAskedFor;
}

// Of a node that died, each finishes the page on its line. False: the end was asked for meanwhile.
bool Node::WaitForLinesBefore(StopSignal& stop) {
    bool told = false;
    while (!engine_.TryTake("run")) {
        if (!std::exchange(told, true)) {
            log_.Info("waiting for the lines of the run before, which finish their pages");
        }
        if (stop.WaitFor(kBetweenLooks)) {
            return false;
        }
        heartbeat_.Beat();
    }
    return true;
}

// False: the end was asked for meanwhile.
bool Node::Join(StopSignal& stop) {
    for (;;) {
        try {
            return member_.Join(lease_.Database(), [&](std::chrono::milliseconds pause) {
                heartbeat_.Beat();
                return !stop.WaitFor(pause);
            });
        } catch (const StoreAway& away) {
            trouble_.Is(away.what(), std::time(nullptr));
        }
        if (stop.WaitFor(kBetweenLooks)) {
            return false;
        }
    }
}

void Node::Serve(StopSignal& stop) {
    Begin();
    do {
        file_.Look(lease_);
        StepOrReport();
    } while (!file_.IsReplaced() && !member_.IsLost() && !IsDone() && !stop.WaitFor(kBetweenLooks));
    if (member_.IsLost()) {
        log_.Error(
            "others have taken the pages of this node over, since its lease was over; it "
            "begins anew");
        lines_.Kill();
    } else {
        EndInOrder();
    }
}

void Node::Begin() {
    lines_.ServeWith(CommandOf(options_, engine_, member_));
    lines_.ServeFor(member_.Name());
    room_.Look(std::time(nullptr));
    if (!member_.HasLivingOthers()) {
        LookAtPendingPages(lease_.Database(), options_.discard_older, log_);
    }
    lines_.Read(lease_.Database());
    if (member_.Leads()) {
        moves_.Adopt(dispatch_);
    }
    alerts_.Begin(lease_.Database(), std::time(nullptr));
    log_.Info("serving " + ShownName(options_.database));
    for (const std::string& risk : CommitRisks(lease_.Database())) {
        log_.Warning(risk);
    }
}

}  // namespace host
