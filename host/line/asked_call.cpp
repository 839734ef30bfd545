// Calls asked for. Tested by tests/e2e/run_line_call_test.cpp.
#include "host/line/asked_call.h"

#include <ctime>

#include "host/line/test_call.h"
#include "host/process/stop_signal.h"
#include "host/site/site_tables.h"
#include "host/store/tables/lines.h"

namespace host {
namespace {

LineExit ExitFor(TestCallResult result) {
    switch (result) {
        case kLineNotOpened:
            return LineExit::kNoDevice;
        case kModemFails:
            return LineExit::kSilent;
        case kConnected:
        case kNotConnected:
            break;
    }
    return LineExit::kDone;
}

}  // namespace

LineExit MakeAskedCall(Connection& connection, const SiteLine& line, const std::string& device,
                       const AskedTestPage& asked, OperatorLog& log) {
    SetDoing(connection, line.name, "test call to " + asked.number, std::time(nullptr));
    const TestCall call = MakeTestCall(device, line, asked.number, StopSignal::Descriptor());
    const Encoding encoding = EncodingOf(connection);
    log.Info("test call to " + Decode(asked.number, encoding) + ": " + Decode(call.said, encoding) +
             " (result " + std::to_string(call.result) + ")");
    AnswerTestPage(connection, asked.asked, {call.result, call.said});
    return ExitFor(call.result);
}

LineExit MakeFirstAskedCall(const std::string& database, const SiteLine& line, OperatorLog& log) {
    Lease lease(database);
    for (const AskedTestPage& asked : AskedTestPages(lease.Database(), lease.Owners())) {
        if (asked.line == line.name && !asked.number.empty()) {
            return MakeAskedCall(lease.Database(), line, line.device, asked, log);
        }
    }
    return LineExit::kDone;  // whoever asked has gone
}

}  // namespace host
