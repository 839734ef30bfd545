// A traced page as JSON, for programs.
#ifndef PAGERFWD_HOST_TRACE_VIEW_PAGE_JSON_H
#define PAGERFWD_HOST_TRACE_VIEW_PAGE_JSON_H

#include <string>

#include "host/text/encoding.h"
#include "host/trace/traced_page.h"

namespace host {

// One object, without a line feed at its end.
std::string PageAsJson(const TracedPage& page, Encoding encoding);

}  // namespace host

#endif
