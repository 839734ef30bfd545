// A line: the library, loaded for one modem, and the pages that its node gives it.
//
// All calls of the library are made by one thread, as it asks for. Signals are kept from the
// library's own: they would end its pauses in a way that nobody answers.
//
// It looks what there is to do when the node rings, and once a second while its library has
// anything to do; while the library pauses between two passes, behind the pause.
//
// Threads    Run's own, and the library's worker.
// Errors     StoreError at the start. Later a failure is told to the operator, and tried again.
#ifndef PAGERFWD_HOST_LINE_LINE_H
#define PAGERFWD_HOST_LINE_LINE_H

#include <atomic>
#include <chrono>
#include <optional>
#include <string>

#include "host/library/library.h"
#include "host/line/hand_over.h"
#include "host/line/line_trace.h"
#include "host/line/page_on_line.h"
#include "host/lines/line_exit.h"
#include "host/process/bell_socket.h"
#include "host/process/open_files.h"
#include "host/process/operator_log.h"
#include "host/process/stop_signal.h"
#include "host/process/trouble.h"
#include "host/store/pool.h"
#include "host/store/tables/test_pages.h"

namespace host {

class Line {
 public:
    // The process is set up for it: its folder, its device, its view of the tables.
    // notes: of the page that may be on the line; null where nobody else needs them.
    Line(const std::string& database, const SiteLine& line, const Library& library,
         OperatorLog& log, PageOnLineNotes* notes);

    // Until it is asked to end, or its node has died; a page on the line is finished first. kStuck:
    // the library doesn't go on, and the process is to end without it; so it is with kCannot.
    LineExit Run(StopSignal& stop, const BellSocket& node);

 private:
    void Start();
    void BringUpEngine();
    void End();
    void StepOrReport();
    void Step();
    std::chrono::seconds Quiet(std::optional<int> pause_left);
    void WaitForTablesWith(const BellSocket& node);
    bool IsStuck();
    bool IsSilent();
    bool CanGoOn();
    bool AnswerTests();
    void SendTestPageFor(const AskedTestPage& asked);
    void CallFor(const AskedTestPage& asked);
    int32_t SendTestPageTo(const std::string& pager);
    void NoteDoing(const std::string& doing);
    std::string Doing() const;
    int32_t Forward(const Alarm& alarm, const Delivery& delivery);

    const std::string database_;
    const SiteLine line_;
    const Library& library_;
    OperatorLog& log_;
    PageOnLineNotes* const notes_;
    Lease lease_;
    const Encoding encoding_;
    HandOver hand_over_;
    LineTrace trace_;
    Trouble trouble_;
    std::string doing_;
    std::chrono::seconds wait_{0};  // for the node's bell, until the next look
    OpenFiles files_;
    std::atomic<bool> waited_{false};  // the library has waited for the store since the last look
};

}  // namespace host

#endif
