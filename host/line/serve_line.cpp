// A line's process. Tested by tests/e2e/run_lines_test.cpp.
#include "host/line/serve_line.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>

#include "host/library/library.h"
#include "host/line/ask_modem.h"
#include "host/line/asked_call.h"
#include "host/line/line.h"
#include "host/line/take_device.h"
#include "host/line/trace_switch.h"
#include "host/lines/site_lines.h"
#include "host/platform/own_device.h"
#include "host/process/database_locks.h"
#include "host/process/fault_log.h"
#include "host/site/site_tables.h"
#include "host/store/line_view.h"

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

LineExit Serve(const ServeLineOptions& options, OperatorLog& log) {
    prctl(PR_SET_NAME, "pagerfwd");  // it was started by another name
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
    const Library library(options.library);
    const LineExit end =
        Line(options.database, line, library, log).Run(stop, BellSocket(Descriptor(options.bell)));
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
