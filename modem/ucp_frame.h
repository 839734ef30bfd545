// The one frame that a message travels in by UCP (EMI-UCP 4.0, operation 51, submit short message).
#ifndef PAGERFWD_MODEM_UCP_FRAME_H
#define PAGERFWD_MODEM_UCP_FRAME_H

#include "linux/XString.h"

// The whole frame, from STX to ETX. The number goes in as it is, of each character of the message
// the low seven bits.
CString CreateUCPFrame(const CString& number, const CString& message);

#endif
