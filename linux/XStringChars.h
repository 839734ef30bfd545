// What the files of CString share in handling plain characters. Not for anyone else.
#ifndef PAGERFWD_LINUX_XSTRINGCHARS_H
#define PAGERFWD_LINUX_XSTRINGCHARS_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "linux/xassert.h"

namespace string_chars {

// The unit that assertions of the text class name, whichever of its files they stand in.
constexpr const char* kUnit = "./XString";

// With its terminator, the length of a text fits a positive int.
constexpr int kMostCharacters = std::numeric_limits<int>::max() - 1;

inline const char* TextOf(const char* psz) {
    return psz != nullptr ? psz : "";
}

inline int ToLength(int64_t nLength) {
    XASSERT(kUnit, nLength >= 0);
    XASSERT(kUnit, nLength <= kMostCharacters);
    return static_cast<int>(nLength);
}

inline int LengthOf(const char* psz) {
    return ToLength(static_cast<int64_t>(std::strlen(TextOf(psz))));
}

// The platform's functions take unsigned bytes.
inline const unsigned char* BytesOf(const char* psz) {
    return reinterpret_cast<const unsigned char*>(psz);
}
inline unsigned int ByteOf(char ch) {
    return static_cast<unsigned char>(ch);
}

}  // namespace string_chars

#endif
