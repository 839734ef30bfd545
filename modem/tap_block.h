// The message block of TAP (Telocator Alphanumeric Protocol 1.8, chapter 5).
#ifndef PAGERFWD_MODEM_TAP_BLOCK_H
#define PAGERFWD_MODEM_TAP_BLOCK_H

#include "linux/XString.h"

// Three characters, each '0' plus four bits of the sum of the text's low seven bits, the most
// significant first.
CString CheckSum(CString text);

// STX number CR message CR ETX checksum CR. Number and message go in as they are: nothing is
// escaped, split or shortened.
CString CreateD1Block(CString number, CString message);

#endif
