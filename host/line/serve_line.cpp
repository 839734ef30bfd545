// A line's process. Tested by tests/e2e/run_lines_test.cpp.
#include "host/line/serve_line.h"

#include <poll.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <thread>

#include "host/library/library.h"
#include "host/line/ask_modem.h"
#include "host/line/asked_call.h"
#include "host/line/line.h"
#include "host/line/page_on_line.h"
#include "host/line/take_device.h"
#include "host/line/trace_switch.h"
#include "host/lines/site_lines.h"
#include "host/pages/sends.h"
#include "host/platform/fence.h"
#include "host/platform/own_device.h"
#include "host/platform/trace_file.h"
#include "host/process/database_locks.h"
#include "host/process/fault_log.h"
#include "host/process/lease_deadline.h"
#include "host/process/signals_held.h"
#include "host/site/site_tables.h"
#include "host/store/line_view.h"
#include "host/store/tables/lines.h"

namespace host {
namespace {

SiteLine FindLine(const std::string& database, const std::string& name) {
    Lease lease(database);
    const std::optional<SiteLine> line = FindSiteLine(lease.Database(), name);
    if (!line || line->device.empty()) {
        throw StoreError("the site has no such port, or it has no device");
    }
    return *line;
}

std::string ShownName(const ServeLineOptions& options) {
    Lease lease(options.database);
    return Decode(options.line, EncodingOf(lease.Database()));
}

// The node ends its lines itself, and reads anew itself.
void LeaveTerminalSignalsToTheNode() {
    std::signal(SIGINT, SIG_IGN);
    std::signal(SIGHUP, SIG_IGN);
}

PageOnLine PageIn(Connection& connection, const TracedPage& page) {
    return {SendOf(connection, page, std::time(nullptr)).alarm, page.alarm, page.pager};
}

// Where others may take its pages over, it touches its modem only as long as they don't, and its
// tables only as long as they haven't.
class Fenced {
 public:
    explicit Fenced(const ServeLineOptions& options) : deadline_(Descriptor(options.deadline)) {
        Tenure tenure = options.tenure;
        tenure.line = options.line;
        WriteAs(options.database, tenure);
        SetFence({[this] { EndIfOver(); }, {}});
        before_ = SetFaultListener([this](FaultNews news, std::string_view message) {
            before_(news, message);
            if (news == FaultNews::kEnd) {
                _exit(static_cast<int>(LineExit::kNotOurs));
            }
        });
        const SignalsHeld held;
        std::thread([this] { Watch(); }).detach();
    }

    // From now on the page that is about to be on the line is noted.
    void NotePages(const ServeLineOptions& options) {
        notes_ = std::make_unique<PageOnLineNotes>(
            [options](const TracedPage* page) {
                try {
                    Lease lease(options.database);
                    SetPageOnLine(lease.Database(), options.line,
                                  page == nullptr ? PageOnLine() : PageIn(lease.Database(), *page));
                } catch (const NotOurs& end) {
                    ReportEnd(end.what());
                }
            },
            [] { sleep(1); });
        SetTraceListener([this](std::string_view entry) { notes_->Read(entry); });
        SetFence({[this] { EndIfOver(); }, [this] { notes_->BeforeOpening(); }});
    }
    PageOnLineNotes* Notes() { return notes_.get(); }

 private:
    void EndIfOver() const {
        if (deadline_.IsOver()) {
            _exit(static_cast<int>(LineExit::kLeaseOver));
        }
    }

    // Also while nobody touches anything: whoever waits for a modem holds it.
    [[noreturn]] void Watch() const {
        for (;;) {
            EndIfOver();
            poll(nullptr, 0, static_cast<int>(std::max<int64_t>(1, deadline_.Left().count())));
        }
    }

    const LeaseDeadline deadline_;
    FaultListener before_;
    std::unique_ptr<PageOnLineNotes> notes_;
};

LineExit Serve(const ServeLineOptions& options, OperatorLog& log) {
    prctl(PR_SET_NAME, "pagerfwd");  // it was started by another name
    // To the very end of the process, as its threads.
    static Fenced* const fenced =
        options.deadline < 0 ? nullptr : std::make_unique<Fenced>(options).release();
    StopSignal stop;
    LeaveTerminalSignalsToTheNode();
    const SiteLine line = FindLine(options.database, options.line);
    const LockFile device = TakeDevice({options.database, options.locks}, line, "run");
    if (options.ask) {
        const Library needed(options.library);  // without it the line is as sick as without a modem
        return AskModem(line.device, options.dial_tone);
    }
    if (options.call) {
        return MakeFirstAskedCall(options.database, line, log);
    }
    SetOwnDevice(line.device);
    SetLineView(LineView{line.name});
    TurnTraceOn();
    if (fenced != nullptr) {
        fenced->NotePages(options);
    }
    const Library library(options.library);
    const LineExit end =
        Line(options.database, line, library, log, fenced == nullptr ? nullptr : fenced->Notes())
            .Run(stop, BellSocket(Descriptor(options.bell)));
    if (end != LineExit::kDone) {
        _exit(static_cast<int>(end));  // what is stuck can't be taken down
    }
    return end;
}

}  // namespace

LineExit ServeLine(const ServeLineOptions& options) {
    const bool journal = std::getenv("JOURNAL_STREAM") != nullptr;
    OperatorLog log(std::cerr, journal, "line \"" + ShownName(options) + "\": ");
    const FaultLog faults(log);
    try {
        return Serve(options, log);
    } catch (const InUse& taken) {
        log.Error(taken.what());
        return LineExit::kTaken;
    } catch (const std::exception& failure) {
        log.Error(failure.what());
        return LineExit::kCannot;
    }
}

}  // namespace host
