// The trace of the engine. Tested by tests/e2e/run_test.cpp.
#include "host/line/engine_trace.h"

#include <string>

#include "host/pages/sends.h"
#include "host/process/engine_locks.h"
#include "host/process/port_holder.h"

namespace host {
namespace {

constexpr const char* kTraceFile = "pageprot.txt";
constexpr off_t kLongestTrace = off_t{16} << 20;  // bytes
constexpr std::time_t kOldestTrace = 7 * 24 * 60 * 60;
constexpr int kMostPieces = 64;   // of 1 MiB, in one look
constexpr int kNoLineResult = 5;  // of the library

}  // namespace

EngineTrace::EngineTrace(Connection& connection, Encoding encoding, OperatorLog& log)
    : connection_(connection),
      encoding_(encoding),
      log_(log),
      file_(kTraceFile),
      follower_({[this](const TracedPage& page) { PageEnded(page); },
                 [this] { ++metrics_.given_up; },
                 [this](const TracedPage& page) {
                     log_.Error("the page to " + Named(page) +
                                " has been on the line for over ten minutes");
                 }}) {
    metrics_.started = std::time(nullptr);
    metrics_.last_success = LastSuccesses(connection_);
}

void EngineTrace::Begin() {
    file_.JoinAside(kLongestTrace, kOldestTrace);
    begun_ = std::time(nullptr);
    follower_.Restart();
}

void EngineTrace::Look() {
    const std::time_t now = std::time(nullptr);
    const bool was_taken = ports_.IsAnyTaken();
    for (int piece = 0; piece < kMostPieces; ++piece) {
        const std::string bytes = file_.Read();
        follower_.Read(bytes, now);
        if (bytes.empty()) {
            break;
        }
    }
    if (ports_.IsAnyTaken() && !was_taken) {
        log_.Error(
            "a port that could not be opened stays taken until the engine is made anew; that "
            "is done soon");
    }
    if (file_.Position() > kLongestTrace || now - begun_ > kOldestTrace) {
        file_.MoveAside();
        begun_ = now;
    }
}

void EngineTrace::PageEnded(const TracedPage& page) {
    ports_.PageEnded(page);
    const Send send = SendOf(connection_, page, std::time(nullptr));
    metrics_.Count(send);
    Tell(send);
    if (send.outcome == TracedPage::Outcome::kNotSent && page.result == kNoLineResult) {
        TellWhoHolds(page);
    }
    RecordSend(connection_, send);
}

void EngineTrace::Tell(const Send& send) {
    const std::string name =
        (send.alarm.empty() ? std::string("page") : "page of alarm " + send.alarm) + " to \"" +
        Decode(send.pager, encoding_) + "\": ";
    const std::string duration = " (" + std::to_string(send.seconds) + " s" +
                                 (send.port.empty() ? "" : ", " + Decode(send.port, encoding_)) +
                                 ")";
    if (send.outcome == TracedPage::Outcome::kSent) {
        log_.Info(name + "sent" + duration);
    } else if (send.outcome == TracedPage::Outcome::kDialled) {
        log_.Info(name + "dialled" + duration + "; the call is the page, and nothing confirms it");
    } else if (send.outcome == TracedPage::Outcome::kOutsideHours) {
        log_.Info(name + "not sent, since it is outside the pager's hours; counted as sent");
    } else {
        log_.Warning(name + WordOf(send.outcome) + duration + ": " + send.reason);
    }
}

void EngineTrace::TellWhoHolds(const TracedPage& page) {
    const std::string device = DeviceOf(page.Port());
    if (device.empty()) {
        return;
    }
    const std::string path = "/dev/" + device;
    const std::string holders = HoldersOf(path);
    log_.Error(page.Port() + ", " + path + ", could not be opened" +
               (holders.empty() ? "; does it exist, and may this user open it?"
                                : "; it is held by " + holders));
}

std::string EngineTrace::Named(const TracedPage& page) const {
    return '"' + Decode(page.pager, encoding_) + '"';
}

}  // namespace host
