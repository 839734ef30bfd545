// A look at the buffer of a text, through what is known of its layout: the header lies right in
// front of the first character.
#ifndef PAGERFWD_TESTS_UNIT_LINUX_STRING_HEADER_H
#define PAGERFWD_TESTS_UNIT_LINUX_STRING_HEADER_H

#include "linux/XString.h"

inline const char* Characters(const CString& text) {
    return text;
}

inline const CStringData& HeaderOf(const CString& text) {
    return *(reinterpret_cast<const CStringData*>(Characters(text)) - 1);
}

inline bool Share(const CString& left, const CString& right) {
    return Characters(left) == Characters(right);
}

inline bool IsSharedEmptyText(const CString& text) {
    return Characters(text) == _afxPchNil;
}

// A text that isn't there.
inline constexpr const char* kNoText = nullptr;

#endif
