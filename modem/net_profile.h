// Per-installation settings below the registry root that the vendor profile KQVENDOR.INI names.
//
// Nothing in the system reads one at present; this is the way to them for whatever will. On this
// platform the registry is never found, so each setting reads as its default.
//
// Errors     None: whatever fails, the result is the default.
#ifndef PAGERFWD_MODEM_NET_PROFILE_H
#define PAGERFWD_MODEM_NET_PROFILE_H

#include "linux/XString.h"

// The text called `value` of the key below the root.
CString SmGetNetProfileString(CString key, CString value, CString defaultText);

// The same as a number; a text that is none counts as 0.
int SmGetNetProfileInt(CString key, CString value, int defaultNumber);

#endif
