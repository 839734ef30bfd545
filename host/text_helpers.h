// The host's side of <pagerfwd/text_helpers.h>: which texts the library is told to see.
#ifndef PAGERFWD_HOST_TEXT_HELPERS_H
#define PAGERFWD_HOST_TEXT_HELPERS_H

namespace host {

// Whether texts are Shift_JIS: _mbclen then answers 2 for a lead byte (0x81 to 0x9F, 0xE0 to 0xFC)
// that a further byte follows. Everything else stays as it is for single bytes, and so does
// _mbclen unless this is called. Set it before the library sends pages.
//
// Threads    Any; later calls of _mbclen see it.
void UseShiftJis(bool use);

}  // namespace host

#endif
