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
#include <set>
#include <string>
#include <vector>

#include "host/files/lock_file.h"
#include "host/intake/spool.h"
#include "host/node/alerts.h"
#include "host/node/dispatch.h"
#include "host/node/figures.h"
#include "host/node/intake.h"
#include "host/node/membership.h"
#include "host/node/new_sends.h"
#include "host/node/pace.h"
#include "host/node/page_ends.h"
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
    bool Join(StopSignal& stop);
    void Leave();
    void Serve(StopSignal& stop);
    bool WaitForLinesBefore(StopSignal& stop);
    void EmptyCells();
    void LookAtPendingPages();
    void LookAtFile();
    void StepOrReport();
    std::string StepOrReason();
    std::string Failed(const StoreError& failure);
    void Step();
    bool HasWorkDue(std::time_t now) const;
    void Work(std::time_t now);
    void ReadAnew();
    void LookAtSpool();
    void LookAtSends(std::time_t now);
    void LookAtEnds(std::time_t now);
    void AdoptPages();
    void MovePages(std::time_t now);
    bool IsNobodys(const std::string& line);
    bool IsInCharge(const std::string& line);
    void MovePagesOf(const std::string& line, const std::string& why);
    void HoldLines();
    void CarryOutRequests(std::set<std::string>& held);
    void Ring(const std::string& name) const;
    void GiveUpOverspent(std::set<std::string>& held);
    bool IsAtRest(const std::string& name) const;
    void EndLines();
    void TellLastThings();
    bool IsDone();
    void ForgetOldHistory(std::time_t now);

    const NodeOptions options_;
    OperatorLog& log_;
    Trouble trouble_;
    Lease lease_;
    const Encoding encoding_;
    const LockFile lock_;
    const Spool spool_;
    LockFile engine_;  // which the lines inherit
    Membership member_;
    std::string why_idle_;  // of the lines
    ServedLines lines_;
    Intake intake_;
    Dispatch dispatch_;
    NewSends sends_;
    PageEnds ends_;
    Figures figures_;
    Room room_;
    Alerts alerts_;
    Heartbeat heartbeat_;
    Changes changes_;
    Pace ends_pace_;
    Pace moves_pace_;
    Pace alarms_pace_;
    Pace history_pace_;
    bool gone_ = false;      // the database has no name
    bool replaced_ = false;  // its name leads to another file
};

}  // namespace host

#endif
