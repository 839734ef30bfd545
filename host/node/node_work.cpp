// What a node does once a second. Tested by tests/e2e/run_test.cpp and run_lines_test.cpp.
#include <utility>

#include "host/alarms/raising.h"
#include "host/node/node.h"
#include "host/node/pending_pages.h"
#include "host/node/spooled_alarms.h"
#include "host/node/test_rounds.h"
#include "host/pages/backlog.h"
#include "host/store/tables/history.h"

namespace host {

void Node::StepOrReport() {
    const std::string why_not = StepOrReason();
    const std::time_t now = std::time(nullptr);
    alerts_.DatabaseWorked(file_.IsGone() ? file_.Name() + ": the file has gone" : why_not, now);
    alerts_.DiskIs(room_.IsFull(), now);
    alerts_.Tell(now);
}

// Why the database doesn't work; empty: it does. The service manager hears nothing of a node whose
// file doesn't; one whose server is away goes on, and nothing is mended by its end. What the disk
// refuses is kept until it takes it again, and is no failure here: to be ended would lose it.
std::string Node::StepOrReason() {
    try {
        try {
            Step();
        } catch (const RowTooLarge&) {
            EmptyCells(lease_.Database(), log_);
            Step();
        }
        heartbeat_.Beat();
        trouble_.Is("", std::time(nullptr));
    } catch (const NotOurs& end) {
        member_.WasFoundLost();
        return end.what();
    } catch (const StoreAway& away) {
        trouble_.IsAway(away, std::time(nullptr));
        if (!away.Outage().empty()) {
            heartbeat_.Beat();
        }
        return Failed(away);
    } catch (const StoreError& failure) {
        trouble_.Is(failure.what(), std::time(nullptr));
        return Failed(failure);
    }
    return {};
}

std::string Node::Failed(const StoreError& failure) {
    changes_.Forget();
    return failure.what();
}

void Node::Step() {
    const std::time_t now = std::time(nullptr);
    if (StopSignal::TakeHangUp()) {
        ReadAnew();
    }
    Connection& connection = lease_.Database();
    TakeUpSpooled(spool_, connection, log_);
    member_.Look(connection);
    alerts_.SetLeads(member_.Leads());
    const std::string why_idle = member_.WhyIdle();
    const bool has_changed =
        std::exchange(why_idle_, why_idle) != why_idle || changes_.AreThere(connection);
    if (has_changed || lines_.HaveNews(now)) {
        WantAll();
        Work(now);
    } else if (HasWorkDue(now)) {
        Work(now);
    }
    if (has_changed || alerts_.AreDue(now)) {
        alerts_.Look(connection, now);
    }
    if (member_.Leads()) {
        alerts_.Beat(connection, now);
    }
    figures_.NoteBeat(alerts_.LastBeat());
    figures_.Show(ends_, now);
    room_.Look(now);
    if (member_.Leads()) {
        ForgetOldHistory(now);
    }
}

// What follows a change at a pace of its own. What the node's own work has changed is new, too; so
// where nothing happens, nothing of this is done.
void Node::WantAll() {
    ends_pace_.Want();
    alarms_pace_.Want();
    moves_.Want();
}

bool Node::HasWorkDue(std::time_t now) const {
    const bool has_to_tell = ends_pace_.IsDue(now) || alarms_pace_.IsDue(now);
    return (member_.Leads() && has_to_tell) || moves_.IsDue(now) || dispatch_.IsWaiting();
}

void Node::Work(std::time_t now) {
    Connection& connection = lease_.Database();
    alerts_.ReadCommands(connection);
    if (member_.Leads()) {
        intake_.Run(connection);
    }
    LookAtSends(now);
    LookAtEnds(now);
    moves_.HoldLines();
    lines_.SetIdle(why_idle_);
    lines_.Look(connection, now);
    moves_.Move(now);
    dispatch_.Run(connection, {member_.Leads(), !member_.HasLivingOthers()}, now);
    GiveTestPages(lease_, lines_, dispatch_);
}

void Node::ReadAnew() {
    changes_.Forget();
    log_.Info(std::string("reading anew, as asked: the ports ") +
              (lines_.Read(lease_.Database()) ? "have changed" : "are the same"));
}

void Node::LookAtSends(std::time_t now) {
    for (const Send& send : sends_.Take()) {
        if (!member_.Name().empty() && lines_.Find(send.port) == nullptr) {
            continue;  // the node of that line tells it
        }
        Tell(log_, send, encoding_);
        figures_.Count(send);
        lines_.Sent(send, now);
        if (send.outcome != TracedPage::Outcome::kNotSent) {
            EndLastWords(lease_.Database(), now);
        }
    }
}

// Told by the node that leads, and what its forerunner hadn't told.
void Node::LookAtEnds(std::time_t now) {
    Connection& connection = lease_.Database();
    if (!member_.Leads()) {
        ends_.Skip();
        told_ends_ = false;
        return;
    }
    if (!std::exchange(told_ends_, true)) {
        ends_.GoOnBehind(member_.ToldUpTo(connection));
    }
    if (ends_pace_.Take(now)) {
        if (ends_.Look()) {
            member_.NoteTold(connection, ends_.Seen());
        }
        ends_.Mark();
    }
    if (ends_.HaveMark()) {
        ends_pace_.Want();
    }
    if (alarms_pace_.Take(now)) {
        EndFinishedAlarms(connection);
    }
}

void Node::ForgetOldHistory(std::time_t now) {
    if (!history_pace_.Take(now)) {
        return;
    }
    history_pace_.Want();
    const std::chrono::seconds kept = options_.history;
    ForgetHistory(lease_.Database(), now - static_cast<std::time_t>(kept.count()));
}

}  // namespace host
