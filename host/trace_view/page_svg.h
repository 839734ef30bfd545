// A timeline of one traced page, as a picture: who spoke, who waited, for how long.
//
// Above, to scale: the steps of the page, and beneath them when we spoke, when the far end did, and
// when we waited. Below, line by line: what was said.
#ifndef PAGERFWD_HOST_TRACE_VIEW_PAGE_SVG_H
#define PAGERFWD_HOST_TRACE_VIEW_PAGE_SVG_H

#include <string>

#include "host/text/encoding.h"
#include "host/trace/traced_page.h"

namespace host {

// An SVG document, UTF-8.
std::string PageAsSvg(const TracedPage& page, Encoding encoding);

}  // namespace host

#endif
