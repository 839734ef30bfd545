// How a node ends: its lines first, then what is still to be told and written. Tested by
// tests/e2e/run_service_test.cpp and run_lines_test.cpp.
#include <chrono>
#include <thread>

#include "host/node/node.h"
#include "host/process/last_writes.h"
#include "host/store/tables/events.h"

namespace host {
namespace {

constexpr std::chrono::milliseconds kWhileEnding{100};

}  // namespace

void Node::EndInOrder() {
    if (!file_.IsReplaced()) {
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

// Lines are killed where they take longer than any page can.
void Node::EndLines() {
    lines_.AskToEnd();
    while (lines_.AnyLeft()) {
        std::this_thread::sleep_for(kWhileEnding);
        try {
            lines_.Look(lease_.Database(), std::time(nullptr));
            LookAtSends(std::time(nullptr));
            trouble_.Is("", std::time(nullptr));
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
        ends_.Mark();
        if (ends_.LookAtAll()) {
            member_.NoteTold(lease_.Database(), ends_.Seen());
        }
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

}  // namespace host
