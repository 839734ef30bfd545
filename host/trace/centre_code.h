// What a paging centre itself says of the page that it doesn't take.
#ifndef PAGERFWD_HOST_TRACE_CENTRE_CODE_H
#define PAGERFWD_HOST_TRACE_CENTRE_CODE_H

#include <string>
#include <string_view>

namespace host {

// The latest refusal in what was heard, control characters named as in traced_page.h: a line of TAP
// with a code from 500 on (TAP 1.8, appendix A), "515 Message format error", or the error of a
// negative result of UCP (EMI-UCP 4.0), "error 24 (message too long)". Empty: there is none.
std::string CentreCodeIn(std::string_view heard);

}  // namespace host

#endif
