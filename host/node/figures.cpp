// Figures, shown. Tested by tests/e2e/run_service_test.cpp.
#include "host/node/figures.h"

#include <utility>

#include "host/files/whole_file.h"
#include "host/process/systemd.h"
#include "host/store/tables/events.h"

namespace host {
namespace {

constexpr std::time_t kBetweenShows = 15;

}  // namespace

Figures::Figures(Connection& connection, std::string file, Encoding encoding, OperatorLog& log)
    : connection_(connection),
      file_(std::move(file)),
      encoding_(encoding),
      log_(log),
      shown_(!file_.empty() || HasManager()),
      pace_(kBetweenShows) {
    metrics_.started = std::time(nullptr);
    metrics_.last_success = LastSuccesses(connection_);
}

void Figures::Show(const PageEnds& ends, std::time_t now) {
    if (shown_ && pace_.Take(now)) {
        pace_.Want();
        ShowNow(ends);
    }
}

void Figures::ShowNow(const PageEnds& ends) {
    metrics_.ended = ends.Counts();
    metrics_.given_up = ends.GivenUp();
    metrics_.pending = static_cast<uint64_t>(CountPendingPages(connection_));
    NotifyManager("STATUS=" + std::to_string(metrics_.pending) + " page(s) pending, " +
                  std::to_string(metrics_.Total(kResultSent)) + " sent, " +
                  std::to_string(metrics_.Total(kResultDialled)) + " dialled, " +
                  std::to_string(metrics_.Total(kResultFailed)) + " failed");
    if (file_.empty()) {
        return;
    }
    try {
        // Anyone may read it: it names no person.
        WriteWhole(file_, AsText(metrics_, encoding_), kForEveryone);
    } catch (const std::runtime_error& failure) {
        log_.Error(failure.what());
    }
}

}  // namespace host
