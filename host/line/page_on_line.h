// Which page is about to be on this line, noted before the modem is opened for it: whoever takes
// the line's pages over knows then which of them may have left.
//
// It sees the trace as the library writes it, so that it knows the page before anybody has read the
// file.
//
// Threads    Any.
#ifndef PAGERFWD_HOST_LINE_PAGE_ON_LINE_H
#define PAGERFWD_HOST_LINE_PAGE_ON_LINE_H

#include <functional>
#include <mutex>
#include <string_view>
#include <utility>

#include "host/trace/read_trace.h"

namespace host {

class PageOnLineNotes : private TraceSink {
 public:
    // note: writes the page down, null: none; throws StoreError. pause: before the next try, while
    // it can't be.
    using Note = std::function<void(const TracedPage*)>;
    PageOnLineNotes(Note note, std::function<void()> pause)
        : note_(std::move(note)), pause_(std::move(pause)), reader_(*this) {}

    // An entry of the trace.
    void Read(std::string_view entry);

    // Before the modem is opened. Returns when it is noted, and not before.
    void BeforeOpening();

    // Between two pages: forgets the last one, if the trace has its end. Throws StoreError.
    void Settle();

 private:
    void OnPage(const TracedPage& /*page*/) override {}
    void OnEvent(const TraceEvent& /*event*/) override {}
    const TracedPage* UnderWay();

    const Note note_;
    const std::function<void()> pause_;
    std::mutex mutex_;
    TraceReader reader_;  // guarded by mutex_, like noted_
    bool noted_ = true;   // by this process, or the one before
};

}  // namespace host

#endif
