// A node: takes alarms up, decides which line gets which page, and keeps the lines' processes
// alive. It opens no modem and loads no library, so that nothing a modem does can hold it up.
//
// The way of an alarm: the alarm log -> routes -> deliveries (intake.h) -> a line (dispatch.h);
// from then on the line has it (line/line.h). The database is all that the two have in common.
//
// Once a second it looks whether there is anything to do: whether the database has changed, whether
// a line's process or device has, and whether something is due. Only then the tables are read.
//
// Threads    One; its lease has another.
// Errors     InUse, NoSuchNode and StoreError at the start. Later a failure is told to the
// operator, and tried
//            again.
#ifndef PAGERFWD_HOST_NODE_NODE_H
#define PAGERFWD_HOST_NODE_NODE_H

#include <chrono>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "host/files/lock_file.h"
#include "host/intake/spool.h"
#include "host/node/alerts.h"
#include "host/node/dispatch.h"
#include "host/node/figures.h"
#include "host/node/intake.h"
#include "host/node/membership.h"
#include "host/node/named_file.h"
#include "host/node/new_sends.h"
#include "host/node/pace.h"
#include "host/node/page_ends.h"
#include "host/node/page_moves.h"
#include "host/node/room.h"
#include "host/node/served_lines.h"
#include "host/process/operator_log.h"
#include "host/process/stop_signal.h"
#include "host/process/systemd.h"
#include "host/process/trouble.h"
#include "host/store/changes.h"
#include "host/store/pool.h"

namespace host {

struct NodeOptions {
    std::string database;
    std::vector<std::string>
        line_program;           // this program, with its options, as its lines are started
    Membership::Wishes member;  // of the site
    std::string metrics;        // the file of figures; empty: none
    bool until_done = false;    // ends by itself when nothing is pending
    std::optional<std::chrono::seconds> discard_older;
    std::chrono::hours history{24 * 90};  // how long the history of ended pages is kept
};

class Node {
 public:
    // Takes the node's lock.
    Node(NodeOptions options, OperatorLog& log);

    enum class End { kAskedFor, kDatabaseReplaced };

    // Until the end is asked for, or the database's name leads to another file: whoever calls makes
    // a new node then. Pages on the lines are finished first.
    End Run(StopSignal& stop);

 private:
    // From the start on: node.cpp.
    bool WaitForLinesBefore(StopSignal& stop);
    bool Join(StopSignal& stop);
    void Serve(StopSignal& stop);
    void Begin();

    // Once a second: node_work.cpp.
    void StepOrReport();
    std::string StepOrReason();
    std::string Failed(const StoreError& failure);
    void Step();
    void WantAll();
    bool HasWorkDue(std::time_t now) const;
    void Work(std::time_t now);
    void ReadAnew();
    void LookAtSends(std::time_t now);
    void LookAtEnds(std::time_t now);
    void ForgetOldHistory(std::time_t now);

    // At the end: node_end.cpp.
    bool IsDone();
    void EndInOrder();
    void EndLines();
    void TellLastThings();
    void Leave();

    const NodeOptions options_;
    OperatorLog& log_;
    Trouble trouble_;
    Lease lease_;
    const Encoding encoding_;
    const LockFile lock_;
    const Spool spool_;
    LockFile engine_;  // which the lines inherit
    Membership member_;
    NamedFile file_;
    std::string why_idle_;  // of the lines
    ServedLines lines_;
    Intake intake_;
    Dispatch dispatch_;
    PageMoves moves_;
    NewSends sends_;
    PageEnds ends_;
    Figures figures_;
    Room room_;
    Alerts alerts_;
    Heartbeat heartbeat_;
    Changes changes_;
    bool told_ends_ = false;  // by this node, as of its last look
    Pace ends_pace_{3};       // a line records its sending a moment behind the end of the page
    Pace alarms_pace_{60};
    Pace history_pace_{24 * 60 * 60};
};

}  // namespace host

#endif
