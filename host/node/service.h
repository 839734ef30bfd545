// An engine that runs: the library, brought up for one database, and what it needs around it.
//
// The way of an alarm: the alarm log -> routes -> deliveries (intake.h) -> AlarmFwdPager; from then
// on the library's worker has it. All calls of the library are made by one thread, as it asks for.
//
// Threads    Run's own, and the library's worker.
// Errors     StoreError at the start. Later a failure is told to the operator, and tried again.
#ifndef PAGERFWD_HOST_NODE_SERVICE_H
#define PAGERFWD_HOST_NODE_SERVICE_H

#include <chrono>
#include <ctime>
#include <optional>
#include <string>

#include "host/library/library.h"
#include "host/line/engine_trace.h"
#include "host/node/intake.h"
#include "host/node/page_ends.h"
#include "host/node/room.h"
#include "host/process/engine_locks.h"
#include "host/process/operator_log.h"
#include "host/process/stop_signal.h"
#include "host/process/systemd.h"
#include "host/store/pool.h"

namespace host {

struct ServiceOptions {
    std::string database;
    std::string locks;        // the folder of the devices' locks
    std::string metrics;      // the file of figures; empty: none
    bool until_done = false;  // ends by itself when nothing is pending
    std::optional<std::chrono::seconds> discard_older;
    std::chrono::hours history{24 * 90};  // how long the history of ended pages is kept
};

class Service {
 public:
    // Takes the locks.
    Service(ServiceOptions options, const Library& library, OperatorLog& log);

    enum class End { kAskedFor, kDatabaseReplaced };

    // Until the end is asked for, or the database's name leads to another file: whoever calls makes
    // a new service then. A page on the line is finished first.
    End Run(StopSignal& stop);

 private:
    void Start();
    void BringUpEngine();
    void Stop();
    void EmptyCells();
    void LookAtPendingPages();
    void LookAtFile();
    void ReadAnew();
    void LookAtTrace();
    void Step();
    void StepOrReport();
    bool HasChanged();
    bool IsDone();
    void TakeDevices();
    int32_t Forward(const Alarm& alarm, const Delivery& delivery);
    void SendTestPages();
    void WriteMetrics();
    void TellLastFigures();
    void TellWhatIsLost();
    void RenewEngine();
    void ForgetOldHistory();

    const ServiceOptions options_;
    const Library& library_;
    OperatorLog& log_;
    Lease lease_;
    const Encoding encoding_;
    EngineLocks locks_;
    Intake intake_;
    EngineTrace trace_;
    PageEnds ends_;
    Room room_;
    int64_t seen_ = -1;  // the version of the database at the last look
    std::time_t metrics_at_ = 0;
    Heartbeat heartbeat_;
    std::time_t forget_at_ = 0;  // when old history is looked for again
    bool done_ = false;
    bool gone_ = false;      // the database has no name
    bool replaced_ = false;  // its name leads to another file
    std::string ports_;      // as the engine has them
};

}  // namespace host

#endif
