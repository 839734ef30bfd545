// The two-digit character code of NTT pagers, which are paged by dialling tones.
#ifndef PAGERFWD_MODEM_NTT_CODE_H
#define PAGERFWD_MODEM_NTT_CODE_H

#include "linux/XString.h"

// The modem command that dials the first 14 bytes of the message, without its carriage return. It
// ends in ';', so that the modem stays in command mode.
CString NTTDialCommand(const CString& message);

#endif
