// A traced page, and what stands between pages, for a terminal.
//
// Texts are decoded from the site's encoding, and fit for any terminal.
#ifndef PAGERFWD_HOST_TRACE_VIEW_PAGE_TEXT_H
#define PAGERFWD_HOST_TRACE_VIEW_PAGE_TEXT_H

#include <string>
#include <string_view>

#include "host/text/colours.h"
#include "host/text/encoding.h"
#include "host/trace/read_trace.h"
#include "host/trace/traced_page.h"

namespace host {

// "sent", "not sent", "outside its hours", "cut off"
std::string_view NameOf(TracedPage::Outcome outcome);

// "2001-01-08 10:00:00"; "10:00:00" where the day isn't known.
std::string WhenBegun(const TracedPage& page);

// "0:05", "2:00:05"
std::string Duration(int seconds);

class PageText {
 public:
    PageText(Encoding encoding, Colours colours) : encoding_(encoding), colours_(colours) {}

    // One line: which page, when, to whom, how long, what became of it.
    std::string Summary(const TracedPage& page) const;

    // The summary, and the dialogue: who said what, who waited, for how long.
    std::string Dialogue(const TracedPage& page) const;

    // One line for news of the engine, or for a line that isn't the library's.
    std::string Event(const TraceEvent& event) const;

 private:
    std::string Shown(std::string_view text) const;
    std::string Header(const TracedPage& page) const;
    std::string PhaseLine(const TracedPage& page, PagePhase phase) const;
    std::string TurnLine(const Turn& turn) const;
    std::string WaitText(const Turn& turn) const;
    std::string Painted(TracedPage::Outcome outcome, std::string_view text) const;

    Encoding encoding_;
    Colours colours_;
};

}  // namespace host

#endif
