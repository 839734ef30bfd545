// The trace of a line. Tested by tests/unit/host/line_trace_test.cpp.
#include "host/line/line_trace.h"

#include <utility>

#include "host/lines/line_folder.h"
#include "host/process/port_holder.h"

namespace host {
namespace {

constexpr off_t kLongestTrace = off_t{16} << 20;  // bytes
constexpr std::time_t kOldestTrace = 7 * 24 * 60 * 60;
constexpr int kMostPieces = 64;   // of 1 MiB, in one look
constexpr int kNoLineResult = 5;  // of the library

// The library's worker writes a line about each of its pages once a minute.
constexpr std::time_t kLongestSilence = 10 * 60;

// What became of a page is read within these seconds of its end, and is nothing later than now.
constexpr std::time_t kRecordedWithin = 2;

class Pages final : public TraceSink {
 public:
    explicit Pages(std::function<void(const TracedPage&)> on_page) : on_page_(std::move(on_page)) {}

 private:
    void OnPage(const TracedPage& page) override { on_page_(page); }
    void OnEvent(const TraceEvent& /*event*/) override {}

    const std::function<void(const TracedPage&)> on_page_;
};

}  // namespace

LineTrace::LineTrace(Connection& connection, SiteLine line, Encoding encoding, OperatorLog& log,
                     Seen seen)
    : connection_(connection),
      line_(std::move(line)),
      encoding_(encoding),
      log_(log),
      seen_(std::move(seen)),
      file_(kTraceFile),
      follower_({[this](const TracedPage& page) { PageEnded(page); },
                 [this](const TracedPage& page) {
                     stuck_ = true;
                     log_.Error("the page to \"" + Decode(page.pager, encoding_) +
                                "\" has been on the line for over ten minutes");
                 }}) {}

void LineTrace::RecordLeft() {
    const std::optional<std::time_t> until = RecordedUntil(connection_, line_.name);
    if (!until) {
        return;
    }
    Pages unrecorded([&](const TracedPage& page) {
        const Send send = SendOf({page, std::time(nullptr)});
        if (send.at > *until + kRecordedWithin) {
            RecordSend(connection_, send);
        }
    });
    TraceReader reader(unrecorded);
    GrowingFile left(kTraceFile);
    for (int piece = 0; piece < kMostPieces; ++piece) {
        const std::string bytes = left.Read();
        if (bytes.empty()) {
            break;
        }
        reader.Feed(bytes);
    }
    reader.Finish();
}

void LineTrace::Begin() {
    file_.JoinAside(kLongestTrace, kOldestTrace);
    begun_ = std::time(nullptr);
    news_ = begun_;
    follower_.Restart();
}

void LineTrace::Look() {
    const std::time_t now = std::time(nullptr);
    if (jumps_.Look(now) != 0) {
        Excuse();
    }
    for (int piece = 0; piece < kMostPieces; ++piece) {
        const std::string bytes = file_.Read();
        follower_.Read(bytes, now);
        if (bytes.empty()) {
            break;
        }
        news_ = now;
    }
    if (const TracedPage* const page = UnderWay()) {
        seen_(*page);
    }
    RecordEnded();
    if (file_.Position() > kLongestTrace || now - begun_ > kOldestTrace) {
        file_.MoveAside();
        begun_ = now;
    }
}

void LineTrace::Excuse() {
    news_ = std::time(nullptr);
    stuck_ = false;
    follower_.Excuse(news_);
}

void LineTrace::HasNoPages() {
    news_ = std::time(nullptr);
}

bool LineTrace::IsSilent() const {
    return std::time(nullptr) > news_ + kLongestSilence;
}

// The library calls the line by another name.
Send LineTrace::SendOf(const Ended& ended) const {
    Send send = host::SendOf(connection_, ended.page, ended.read);
    send.port = line_.name;
    return send;
}

void LineTrace::PageEnded(const TracedPage& page) {
    seen_(page);
    if (page.outcome == TracedPage::Outcome::kNotSent && page.result == kNoLineResult) {
        TellWhoHolds();
    }
    ended_.push_back({page, std::time(nullptr)});
}

void LineTrace::RecordEnded() {
    while (!ended_.empty()) {
        try {
            recording_.Run(connection_,
                           [this] { RecordSend(connection_, SendOf(ended_.front())); });
        } catch (const StoreAway&) {
            throw;
        } catch (const StoreError&) {
            ended_.pop_front();
            throw;
        }
        ended_.pop_front();
    }
}

void LineTrace::TellWhoHolds() {
    const std::string holders = HoldersOf(line_.device);
    log_.Error(line_.device + " could not be opened" +
               (holders.empty() ? "; does it exist, is it a serial line, and may this user open it?"
                                : "; it is held by " + holders));
}

}  // namespace host
