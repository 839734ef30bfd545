// The node's loop. Tested by tests/e2e/run_test.cpp and run_lines_test.cpp.
#include "host/node/node.h"
#include "host/alarms/raising.h"
#include "host/store/tables/history.h"
#include "host/store/tables/pagers.h"

#include <thread>
#include <utility>

#include "host/node/test_rounds.h"
#include "host/pages/backlog.h"
#include "host/pages/history.h"
#include "host/pages/page_owner.h"
#include "host/pages/page_requests.h"
#include "host/process/database_locks.h"
#include "host/process/last_writes.h"
#include "host/site/site_tables.h"
#include "host/store/commit_risks.h"
#include "host/store/database_name.h"
#include "host/store/large_cells.h"
#include "host/store/schema.h"
#include "host/store/tables/events.h"
#include "host/store/tables/lines.h"
#include "host/text/age.h"

namespace host {
namespace {

constexpr std::chrono::milliseconds kBetweenLooks{1000};
constexpr std::chrono::milliseconds kWhileEnding{100};
constexpr std::time_t kDay = 24 * 60 * 60;

// A line records its sending a moment behind the end of the page.
constexpr std::time_t kBetweenEnds = 3;
constexpr std::time_t kBetweenMoves = 5;
constexpr std::time_t kBetweenAlarms = 60;

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
      lines_(encoding_, log_),
      intake_(encoding_, log_),
      dispatch_(lines_, encoding_, log_),
      sends_(lease_.Database()),
      ends_(lease_.Database(), encoding_, log_),
      figures_(lease_.Database(), options_.metrics, encoding_, log_),
      room_(options_.database, log_),
      alerts_(options_.database, encoding_, log_),
      ends_pace_(kBetweenEnds),
      moves_pace_(kBetweenMoves),
      alarms_pace_(kBetweenAlarms),
      history_pace_(kDay) {
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
    return replaced_ ? End::kDatabaseReplaced : End::kAskedFor;
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
            trouble_.Is(away.what());
        }
        if (stop.WaitFor(kBetweenLooks)) {
            return false;
        }
    }
}

void Node::Serve(StopSignal& stop) {
    lines_.ServeWith(CommandOf(options_, engine_, member_));
    lines_.ServeFor(member_.Name());
    room_.Look(std::time(nullptr));
    if (!member_.HasLivingOthers()) {
        LookAtPendingPages();
    }
    lines_.Read(lease_.Database());
    if (member_.Leads()) {
        AdoptPages();
    }
    alerts_.Begin(lease_.Database(), std::time(nullptr));
    log_.Info("serving " + ShownName(options_.database));
    for (const std::string& risk : CommitRisks(lease_.Database())) {
        log_.Warning(risk);
    }
    do {
        LookAtFile();
        StepOrReport();
    } while (!replaced_ && !member_.IsLost() && !IsDone() && !stop.WaitFor(kBetweenLooks));
    if (member_.IsLost()) {
        log_.Error(
            "others have taken the pages of this node over, since its lease was over; it "
            "begins anew");
        lines_.Kill();
        return;
    }
    if (!replaced_) {
        NotifyManager("STOPPING=1");
    }
    log_.Info("ending; a page on the line is finished first");
    EndLines();
    TellLastThings();
    Leave();
    log_.Info("ended");
}

// What is not given back is over soon.
void Node::Leave() {
    try {
        member_.Leave(lease_.Database());
    } catch (const StoreError& failure) {
        log_.Error(failure.what());
    }
}

// A database that was put in the place of the one served, as from a backup, is served from now on.
// While there is none of this name, the one that is open goes on.
void Node::LookAtFile() {
    const FileNamed named = lease_.Named();
    replaced_ = named == FileNamed::kReplaced;
    if (replaced_) {
        log_.Warning(options_.database + ": replaced by another file, which is served from now on");
    } else if (named == FileNamed::kGone && !gone_) {
        log_.Error(options_.database + ": the file has gone; no page can leave until it is back");
    }
    gone_ = named == FileNamed::kGone;
}

// Nobody else's page waits for such a row.
void Node::EmptyCells() {
    for (const std::string& row : EmptyLargeCells(lease_.Database())) {
        log_.Error(row + " is off limit: it had a text of more than 1 MiB, which was emptied");
    }
}

void Node::LookAtPendingPages() {
    Connection& connection = lease_.Database();
    EmptyCells();
    MendTexts(connection);
    MendAlarmStates(connection);
    if (options_.discard_older) {
        const std::time_t before =
            std::time(nullptr) - static_cast<std::time_t>(options_.discard_older->count());
        log_.Info("pages of older alarms that are given up: " +
                  std::to_string(DiscardPages(connection, before)));
    }
    const Backlog backlog = LookAtBacklog(connection);
    if (backlog.pages > 0) {
        log_.Warning(std::to_string(backlog.pages) +
                     " page(s) are pending from before, the oldest of an alarm " +
                     AgeInWords(std::chrono::seconds(std::time(nullptr) - backlog.oldest)) +
                     " old; all are due now. To give up old ones: run --discard-older-than");
    }
}

void Node::StepOrReport() {
    const std::string why_not = StepOrReason();
    const std::time_t now = std::time(nullptr);
    alerts_.DatabaseWorked(gone_ ? options_.database + ": the file has gone" : why_not, now);
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
            EmptyCells();
            Step();
        }
        heartbeat_.Beat();
        trouble_.Is("");
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
        trouble_.Is(failure.what());
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
    LookAtSpool();
    member_.Look(connection);
    alerts_.SetLeads(member_.Leads());
    const std::string why_idle = member_.WhyIdle();
    const bool has_changed =
        std::exchange(why_idle_, why_idle) != why_idle || changes_.AreThere(connection);
    if (has_changed || HasWorkDue(now)) {
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

// What commands were asked for while the database was away.
void Node::LookAtSpool() {
    const TakenUp taken = spool_.TakeUp(lease_.Database());
    if (taken.alarms > 0) {
        log_.Info(std::to_string(taken.alarms) + " alarm(s) taken up that had waited");
    }
    for (const std::string& why : taken.refused) {
        log_.Error("an alarm that waited can't be taken up: " + why);
    }
}

// Where the database tells nothing new. What the node's own work has changed is new, too.
bool Node::HasWorkDue(std::time_t now) const {
    return lines_.HaveNews(now) || ends_pace_.IsDue(now) || moves_pace_.IsDue(now);
}

void Node::Work(std::time_t now) {
    Connection& connection = lease_.Database();
    alerts_.ReadCommands(connection);
    if (member_.Leads()) {
        intake_.Run(connection);
    }
    LookAtSends(now);
    LookAtEnds(now);
    HoldLines();
    lines_.SetIdle(why_idle_);
    lines_.Look(connection, now);
    MovePages(now);
    dispatch_.Run(connection, {member_.Leads(), !member_.HasLivingOthers()});
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

// Told by the node that leads.
void Node::LookAtEnds(std::time_t now) {
    if (!member_.Leads()) {
        ends_.Skip();
        return;
    }
    ends_pace_.Want();
    if (ends_pace_.Take(now)) {
        ends_.Look();
        ends_.Mark();
    }
    if (ends_.HaveMark()) {
        ends_pace_.Want();
    }
    if (alarms_pace_.Take(now)) {
        alarms_pace_.Want();
        EndFinishedAlarms(lease_.Database());
    }
}

// From lines that don't serve them, and from ports that the site knows no more.
void Node::MovePages(std::time_t now) {
    moves_pace_.Want();
    if (!moves_pace_.Take(now)) {
        return;
    }
    for (const auto& [name, count] : CountByLine(lease_.Database())) {
        const ServedLine* const line = lines_.Find(name);
        if (line == nullptr) {
            if (member_.Leads() && IsNobodys(name)) {
                MovePagesOf(name, "the site has no such port any more");
            }
        } else if (line->IsClaimed() && !line->IsWanted() && line->IsAtRest()) {
            MovePagesOf(name, line->WhyNotWanted());
        }
    }
}

// Of a name that is no port of the site any more. While a node still serves it, it is that one's.
bool Node::IsNobodys(const std::string& line) {
    Connection& connection = lease_.Database();
    return !FindLine(connection, line) && NodeOfLine(connection, line).empty();
}

// Whether it is this node that does something with pages of a line; empty: of none.
bool Node::IsInCharge(const std::string& line) {
    if (member_.Name().empty() || lines_.Find(line) != nullptr) {
        return true;
    }
    return member_.Leads() && NodeOfLine(lease_.Database(), line).empty();
}

void Node::MovePagesOf(const std::string& line, const std::string& why) {
    const TakenPages taken = TakeUnboundPages(lease_.Database(), line, why);
    const std::string from = " from line \"" + Decode(line, encoding_) + "\"";
    if (taken.free > 0) {
        log_.Warning(std::to_string(taken.free) + " page(s) taken" + from + ", to go by another");
    }
    if (taken.given_up > 0) {
        log_.Error(
            std::to_string(taken.given_up) + " page(s)" + from +
            " given up: over all lines they were tried twice as often as their pagers allow");
    }
}

// What is to be done with pages that only a line at rest lets go of: what an operator asks, and
// pages that were tried too often over all lines.
void Node::HoldLines() {
    std::set<std::string> held;
    CarryOutRequests(held);
    GiveUpOverspent(held);
    for (const std::unique_ptr<ServedLine>& line : lines_.All()) {
        line->SetHeld(held.count(line->Line().name) != 0);
    }
}

void Node::CarryOutRequests(std::set<std::string>& held) {
    Connection& connection = lease_.Database();
    for (const PageRequest& request : OpenRequests(connection)) {
        const std::string line = LineOf(connection, request.page);
        if (!IsInCharge(line)) {
            continue;
        }
        if (IsAtRest(line)) {
            CarryOut(connection, request);
            Ring(request.to);
        } else {
            held.insert(line);
        }
    }
}

// A line that has been given something, if there is one of this name.
void Node::Ring(const std::string& name) const {
    if (const ServedLine* const line = lines_.Find(name)) {
        line->Ring();
    }
}

void Node::GiveUpOverspent(std::set<std::string>& held) {
    Connection& connection = lease_.Database();
    for (const std::unique_ptr<ServedLine>& line : lines_.All()) {
        const std::string& name = line->Line().name;
        for (const PageKey& page : OverspentPages(connection, name)) {
            if (!IsAtRest(name)) {
                held.insert(name);
                break;
            }
            GiveUpPage(connection, page, kChanged, "tried twice as often as its pager allows");
        }
    }
}

bool Node::IsAtRest(const std::string& name) const {
    const ServedLine* const line = lines_.Find(name);
    return line == nullptr || line->IsAtRest();
}

// A page that belongs to no line, as a node of an older make has left it, goes on with the tries
// that it has.
void Node::AdoptPages() {
    Connection& connection = lease_.Database();
    for (const PageKey& page : OwnerlessPages(connection)) {
        const std::vector<PagerRow> pagers = FindPagers(connection, page.pager);
        const ServedLine* const line =
            pagers.size() == 1 ? dispatch_.LineOfSite(pagers.front()) : nullptr;
        if (line != nullptr) {
            AdoptPage(connection, page, line->Line().name);
        }
    }
}

// Lines are killed where they take longer than any page can.
void Node::EndLines() {
    lines_.AskToEnd();
    while (lines_.AnyLeft()) {
        std::this_thread::sleep_for(kWhileEnding);
        try {
            lines_.Look(lease_.Database(), std::time(nullptr));
            LookAtSends(std::time(nullptr));
            trouble_.Is("");
        } catch (const NotOurs& end) {
            log_.Error(end.what());
            lines_.Kill();
        } catch (const StoreAway& away) {
            trouble_.IsAway(away, std::time(nullptr));
            lines_.LookAtProcesses(std::time(nullptr));
        } catch (const StoreError& failure) {
            log_.Error(failure.what());
        }
        alerts_.Tell(std::time(nullptr));
        heartbeat_.Beat();
    }
}

void Node::TellLastThings() {
    try {
        LookAtSends(std::time(nullptr));
        ends_.Look();
        ends_.Mark();
        ends_.Look();
        figures_.ShowNow(ends_);
        alerts_.LookLast(lease_.Database(), std::time(nullptr));
    } catch (const StoreError& failure) {
        log_.Error(failure.what());
    }
    alerts_.Finish();
    WriteLast(lease_, options_.database, log_);
}

// What is kept, since the disk refuses it, is still to be written.
bool Node::IsDone() {
    if (!options_.until_done) {
        return false;
    }
    try {
        Connection& connection = lease_.Database();
        return intake_.IsDone(connection) && dispatch_.IsDone(connection) &&
               !HasPagesInHand(connection) && lease_.CountHeld() == 0;
    } catch (const StoreError&) {
        return false;
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
