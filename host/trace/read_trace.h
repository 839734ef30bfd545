// Reading a trace of the library, pageprot.txt: page by page.
//
//   host::ReadTrace(file, sink);       a whole one
//
//   host::TraceReader reader(sink);    one that grows
//   reader.Feed(bytes);                as often as there are any
//   reader.Pause();                    when there are no more for now
//   reader.Finish();                   when it was emptied or replaced: it begins anew
//
// Any bytes are a trace: what isn't understood is given as it is.
//
// Memory     Bounded, whatever the length of the file: the page at hand, and of that no more than
//            kMostTurns turns of a few KiB.
// Threads    One at a time.
// Errors     None of its own; what the sink throws passes through, and the reader is of no use
// then.
#ifndef PAGERFWD_HOST_TRACE_READ_TRACE_H
#define PAGERFWD_HOST_TRACE_READ_TRACE_H

#include <iosfwd>
#include <memory>
#include <optional>
#include <string_view>

#include "host/trace/trace_entry.h"
#include "host/trace/trace_texts.h"
#include "host/trace/traced_page.h"

namespace host {

inline constexpr size_t kMostTurns = 2000;

// An entry that belongs to no page.
struct TraceEvent {
    const TraceEntry& entry;
    TraceMeaning meaning;
    std::optional<int64_t> day;  // since 1970
    std::string_view line = {};  // whose trace it is, where several are read as one
};

// What is handed in is valid during the call.
class TraceSink {
 public:
    virtual ~TraceSink() = default;

    // A page that has ended, or that was cut off.
    virtual void OnPage(const TracedPage& page) = 0;

    // Also of other threads while a page is under way: these come before the page.
    virtual void OnEvent(const TraceEvent& event) = 0;
};

class TraceReader {
 public:
    explicit TraceReader(TraceSink& sink);
    ~TraceReader();
    TraceReader(const TraceReader&) = delete;
    TraceReader& operator=(const TraceReader&) = delete;

    void Feed(std::string_view bytes);
    void Pause();
    void Finish();

    // The page under way, as far as it has come; null between pages. Valid until the next call.
    const TracedPage* Current() const;

 private:
    struct State;
    std::unique_ptr<State> state_;
};

// From where the stream stands to its end.
void ReadTrace(std::istream& trace, TraceSink& sink);

}  // namespace host

#endif
