// A text as standard functions take it.
#ifndef PAGERFWD_LINUX_XSTRINGVIEW_H
#define PAGERFWD_LINUX_XSTRINGVIEW_H

#include <string_view>

#include "linux/XString.h"

// By length, so that a NUL from a noisy line hides nothing. Good until the text is next changed.
inline std::string_view View(const CString& text) {
    return {text, static_cast<size_t>(text.GetLength())};
}

#endif
