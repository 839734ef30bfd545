// From the entries of a page to the page. The reader's inside.
#ifndef PAGERFWD_HOST_TRACE_PAGE_BUILDER_H
#define PAGERFWD_HOST_TRACE_PAGE_BUILDER_H

#include <cstdint>
#include <string>
#include <string_view>

#include "host/trace/trace_clock.h"
#include "host/trace/trace_entry.h"
#include "host/trace/trace_texts.h"
#include "host/trace/traced_page.h"

namespace host {

class PageBuilder {
 public:
    PageBuilder(uint64_t number, uint64_t line, TraceClock& clock);

    // An entry of the page, between its start and its end.
    void Take(const TraceEntry& entry, const TraceMeaning& meaning);

    // The next entry is what is sent, raw: no text of the library. It stands also in the line that
    // says that it went out.
    bool BytesFollow() const { return bytes_follow_; }
    void TakeBytes() { bytes_follow_ = false; }

    // The page has ended, or was cut off.
    const TracedPage& End(bool cutOff);

    const TracedPage& Page() const { return page_; }

 private:
    void NoteTime();
    bool IsOutOfPlace(const TraceMeaning& meaning) const;
    void NoteHeader(const TraceMeaning& meaning);
    void NotePager(std::string_view field);
    void NoteStep(const TraceMeaning& meaning);
    void EnterPhase(PagePhase phase);
    void Add(Turn turn);
    void Add(Turn::Kind kind, std::string text);
    void AddHeard(std::string_view bytes);
    void BeginWait(std::string_view field);
    void HearSoFar(std::string_view bytes);
    void HearAll(std::string_view bytes);
    void EndWait(bool found);
    void NotePause();
    void Fail(std::string_view text);
    std::string WhyItFailed() const;
    int Now() const { return static_cast<int>(clock_.Elapsed() - begin_); }

    TraceClock& clock_;
    int64_t begin_;  // on the clock
    TracedPage page_;
    PagePhase phase_ = PagePhase::kOpen;
    int phase_began_ = 0;
    int last_ = 0;  // when the last entry was

    bool bytes_follow_ = false;
    bool waiting_ = false;
    Turn wait_;
    std::string heard_;       // since the wait began, raw, as far as the trace shows it
    std::string said_;        // the same, for the reason
    std::string failure_;     // what the library said went wrong in this phase
    std::string modem_said_;  // the modem's own failure answer
    bool missed_ = false;     // the last wait was in vain
};

}  // namespace host

#endif
