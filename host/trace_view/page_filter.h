// Which pages of a trace are wanted.
#ifndef PAGERFWD_HOST_TRACE_VIEW_PAGE_FILTER_H
#define PAGERFWD_HOST_TRACE_VIEW_PAGE_FILTER_H

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "host/trace/traced_page.h"

namespace host {

// Seconds since 1970, in local time: what a page's day and time of day come to.
using LocalSeconds = int64_t;

class NoInstant : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

// "2001-01-08", "2001-01-08 17:30" or "2001-01-08 17:30:05"; a T may stand for the blank. Throws
// NoInstant, whose text says what is wrong.
LocalSeconds ParseInstant(std::string_view text);

struct PageFilter {
    std::string pager;  // as the trace has it; empty: any
    bool failed = false;
    std::optional<uint64_t> number;
    std::optional<LocalSeconds> since;
    std::optional<LocalSeconds> until;

    bool TakesAll() const;

    // A page whose day the trace doesn't say is taken, whatever since and until are.
    bool Takes(const TracedPage& page) const;
};

// Whether it came to nothing: not sent, or cut off.
bool Failed(const TracedPage& page);

}  // namespace host

#endif
