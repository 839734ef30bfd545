// What a line's process takes from the trace of its library: the record of every sending, which
// page is under way, and whether the library goes on at all.
//
// The file is kept within bounds: moved aside when it has grown to 16 MiB, or after a week. The
// start of an engine would empty it: what it holds is then added to what was moved aside last.
//
// Threads    One.
// Errors     StoreError, where a sending can't be recorded: the next look goes on behind it. Behind
//            StoreAway the next look records it.
#ifndef PAGERFWD_HOST_LINE_LINE_TRACE_H
#define PAGERFWD_HOST_LINE_LINE_TRACE_H

#include <ctime>
#include <deque>
#include <functional>
#include <string>

#include "host/files/growing_file.h"
#include "host/line/trace_follower.h"
#include "host/lines/site_lines.h"
#include "host/pages/sends.h"
#include "host/process/clock_jumps.h"
#include "host/process/operator_log.h"
#include "host/store/connection.h"
#include "host/store/once.h"
#include "host/text/encoding.h"

namespace host {

class LineTrace {
 public:
    // seen: is told of a page as it goes on, at each look, and of its end.
    using Seen = std::function<void(const TracedPage& page)>;

    // In the process's folder.
    LineTrace(Connection& connection, SiteLine line, Encoding encoding, OperatorLog& log,
              Seen seen);

    // Before an engine is made, and its start noted. Records what the process before has left
    // unrecorded: it may have been ended at any moment, a page on the line. Throws StoreError.
    void RecordLeft();

    // Before an engine is made.
    void Begin();

    // Reads what has come.
    void Look();

    // The page on the line; null between pages. Until the next look.
    const TracedPage* UnderWay() const { return follower_.UnderWay(); }

    // The page on the line has been there longer than any can take.
    bool IsStuck() const { return stuck_; }

    // What is missing in the trace wasn't the library's fault: it gets its time again.
    void Excuse();

    // The library has no page now, and so nothing to write.
    void HasNoPages();

    // It has had pages for over ten minutes, and has written nothing.
    bool IsSilent() const;

 private:
    struct Ended {
        TracedPage page;
        std::time_t read;  // when its end was
    };

    void PageEnded(const TracedPage& page);
    void RecordEnded();
    Send SendOf(const Ended& ended) const;
    void TellWhoHolds();

    Connection& connection_;
    const SiteLine line_;
    const Encoding encoding_;
    OperatorLog& log_;
    const Seen seen_;
    GrowingFile file_;
    TraceFollower follower_;
    std::time_t begun_ = 0;  // the file
    std::time_t news_ = 0;   // when the library wrote last, or had nothing to write
    ClockJumps jumps_;
    bool stuck_ = false;
    std::deque<Ended> ended_;  // to be recorded
    Once recording_;           // the first of them
};

}  // namespace host

#endif
