// What only the trace tells of a running engine, as it happens.
//
// Threads    One.
// Errors     What the listener throws passes through.
#ifndef PAGERFWD_HOST_LINE_TRACE_FOLLOWER_H
#define PAGERFWD_HOST_LINE_TRACE_FOLLOWER_H

#include <ctime>
#include <functional>
#include <optional>
#include <string_view>

#include "host/trace/read_trace.h"

namespace host {

class TraceFollower : private TraceSink {
 public:
    struct Listener {
        std::function<void(const TracedPage&)> page_ended;
        std::function<void(const TracedPage&)> page_lasts_long;  // told once a page
    };

    explicit TraceFollower(Listener listener) : listener_(std::move(listener)), reader_(*this) {}

    // More of the trace. Nothing: there is no more for now.
    void Read(std::string_view bytes, std::time_t now);

    // The trace was begun anew.
    void Restart();

    // The page on the line gets its time again.
    void Excuse(std::time_t now);

    // The page on the line, as far as it has come; null between pages. Until the next call.
    const TracedPage* UnderWay() const { return reader_.Current(); }

    // No page lasts longer than this without something being wrong, in seconds.
    static constexpr std::time_t kLong = 10 * 60;

 private:
    void OnPage(const TracedPage& page) override;
    void OnEvent(const TraceEvent& /*event*/) override {}
    void LookAtPageUnderWay(std::time_t now);

    const Listener listener_;
    TraceReader reader_;
    uint64_t under_way_ = 0;  // the page's number; 0: none
    std::time_t since_ = 0;
    bool told_ = false;
};

}  // namespace host

#endif
