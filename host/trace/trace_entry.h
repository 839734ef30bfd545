// One call of the library's trace: a time of day and a text, as the trace file has them.
//
// An entry begins on a line that begins with " 7: 5: 9" and a tab, and lasts until the next such
// line: texts are written as they are, line breaks in them too. Those of the tables have none (see
// host/text/controls.h), and what a far end says begins no entry in a trace that this program has
// written (see host/platform/trace_file.h). In one of another host of the library, a far end that
// says such a line can't be told from the library. Such a trace is only shown, by `pagerfwd trace`;
// no engine, figure or record of ours believes it.
#ifndef PAGERFWD_HOST_TRACE_TRACE_ENTRY_H
#define PAGERFWD_HOST_TRACE_TRACE_ENTRY_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace host {

struct TraceEntry {
    static constexpr int kNoTime = -1;

    uint64_t line = 0;      // of the file, from 1
    int second = kNoTime;   // of the day, local time; none for what stands before the first entry
    std::string_view text;  // without its time and the line feed that ends it
    size_t left_out = 0;    // bytes that were too many to be kept, in front of its last kEndKept
};

// Takes the bytes of a trace in pieces of any size, and gives its entries, each once.
//
// Ownership  An entry's text is valid until the call that gave it returns.
// Memory     Bounded: of each entry, kKept bytes at most, the last kEndKept among them, which say
//            what the rest was.
class EntrySplitter {
 public:
    static constexpr size_t kKept = size_t{64} << 10;
    static constexpr size_t kEndKept = 1024;

    explicit EntrySplitter(std::function<void(const TraceEntry&)> give) : give_(std::move(give)) {}

    void Feed(std::string_view bytes);

    // Nothing more is there for now: gives what is there, if its line is whole. The library writes
    // an entry by one call, so that the end of a file is the end of an entry.
    void Pause();

    // Nothing more will come: gives what is there. The next line is line 1 again.
    void Finish();

 private:
    void TakePiece(std::string_view piece);
    void Decide();
    void Begin(int second);
    void Keep(std::string_view bytes);
    void Give();

    std::function<void(const TraceEntry&)> give_;
    uint64_t lines_ = 0;      // that have begun
    bool in_line_ = false;    // the last of them has not ended
    bool decided_ = true;     // what it begins
    std::string line_begin_;  // of it, until that is decided
    bool open_ = false;       // an entry is at hand
    TraceEntry entry_;
    std::string text_;  // its beginning
    std::string end_;   // of what there is no room for in text_
    size_t size_ = 0;   // of the entry's text, kept or not
    bool ends_line_ = false;
};

}  // namespace host

#endif
