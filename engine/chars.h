// The characters of a text.
#ifndef PAGERFWD_ENGINE_CHARS_H
#define PAGERFWD_ENGINE_CHARS_H

#include "linux/XString.h"

// For an argument of a trace format; and wherever a text that another thread may be reading is
// copied, since copying the CString itself would change the count in the original's buffer.
inline const char* Chars(const CString& text) {
    return text;
}

#endif
