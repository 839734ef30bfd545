// New sendings. Tested by tests/unit/host/line_loads_test.cpp.
#include "host/node/new_sends.h"

namespace host {

NewSends::NewSends(Connection& connection) : connection_(connection), seen_(LastSend(connection)) {}

std::vector<Send> NewSends::Take() {
    const int64_t last = LastSend(connection_);
    std::vector<Send> sends = SendsBetween(connection_, seen_, last);
    seen_ = last;
    return sends;
}

void Tell(OperatorLog& log, const Send& send, Encoding encoding) {
    const std::string name =
        (send.alarm.empty() ? std::string("page") : "page of alarm " + send.alarm) + " to \"" +
        Decode(send.pager, encoding) + "\": ";
    const std::string duration =
        " (" + std::to_string(send.seconds) + " s, " + Decode(send.port, encoding) + ")";
    if (send.outcome == TracedPage::Outcome::kSent) {
        log.Info(name + "sent" + duration);
    } else if (send.outcome == TracedPage::Outcome::kDialled) {
        log.Info(name + "dialled" + duration + "; the call is the page, and nothing confirms it");
    } else if (send.outcome == TracedPage::Outcome::kOutsideHours) {
        log.Info(name + "not sent, since it is outside the pager's hours; counted as sent");
    } else {
        log.Warning(name + WordOf(send.outcome) + duration + ": " + send.reason);
    }
}

}  // namespace host
