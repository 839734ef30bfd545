// CString: printing into a text.
//
// The buffer is reserved before anything is printed, by an upper bound that the format and its
// arguments give. For "%5.2s|%d" with "abc" and 7 that is max(min(3, 2), 5) + 1 + 32 = 38; the text
// then takes 7 of them. Where the bound is short (-DBL_MAX as "%f", a long double), the buffer
// grows. Tested by tests/unit/linux/string_format_test.cpp.

#include <pagerfwd/text_helpers.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cwchar>

#include "linux/XString.h"
#include "linux/XStringChars.h"

using namespace string_chars;

namespace {

// Walks a format once, taking the arguments as printf would, and adds up what they may need.
class FormatWalk {
 public:
    FormatWalk(const char* format, va_list& args) : m_at(BytesOf(format)), m_args(args) {}

    int64_t LengthBound() {
        while (*m_at != '\0') {
            if (*m_at == '%' && *(m_at = _mbsinc(m_at)) != '%') {
                WalkConversion();
            } else {
                m_bound += static_cast<int64_t>(_mbclen(m_at));
                m_at = _mbsinc(m_at);
            }
        }
        return m_bound;
    }

 private:
    static constexpr int64_t kNullText = 6;  // "(null)"
    static constexpr int64_t kInteger = 32;
    static constexpr int64_t kFloat = 128;
    static constexpr int64_t kFixedDigits = 312;  // the greatest double has 309 before the point

    enum class Size { Plain, Long, LongLong };  // a short argument is passed as an int

    void WalkConversion();
    void SkipFlags();
    int64_t TakeNumber();
    void TakeWidth();
    void TakePrecision();
    void TakeSize();

    int64_t TextBound();
    int64_t LengthOfText(bool isWide, int64_t atMost);
    template <class Value>
    Value Take() {
        return va_arg(m_args, Value);
    }
    void PassInteger();
    void PassFloat();

    const unsigned char* m_at;
    va_list& m_args;
    int64_t m_bound = 0;

    // The conversion walked.
    int64_t m_width = 0;
    int64_t m_precision = 0;
    bool m_hasPrecision = false;
    Size m_size = Size::Plain;
};

void FormatWalk::WalkConversion() {
    SkipFlags();
    TakeWidth();
    TakePrecision();
    TakeSize();
    switch (*m_at) {
        case 'c':
        case 'C':
        case 's':
        case 'S':
            m_bound += TextBound();
            break;
        case 'd':
        case 'i':
        case 'u':
        case 'x':
        case 'X':
        case 'o':
            PassInteger();
            m_bound += std::max(kInteger, m_width + m_precision);
            break;
        case 'p':
            Take<void*>();
            m_bound += std::max(kInteger, m_width + m_precision);
            break;
        case 'e':
        case 'g':
        case 'G':
            PassFloat();
            m_bound += std::max(kFloat, m_width + m_precision);
            break;
        case 'f':
            PassFloat();
            m_bound += std::max(kFloat, m_precision + kFixedDigits);
            break;
        case 'n':
            Take<void*>();
            break;
        default:
            XASSERT(kUnit, 0);
    }
    m_at = _mbsinc(m_at);
}

void FormatWalk::SkipFlags() {
    for (;; m_at = _mbsinc(m_at)) {
        switch (*m_at) {
            case '-':
            case '+':
            case '0':
            case ' ':
                break;
            case '#':
                m_bound += 2;  // "0x"
                break;
            default:
                return;
        }
    }
}

// Digits, as far as they make an int; or '*' for an argument.
int64_t FormatWalk::TakeNumber() {
    if (*m_at == '*') {
        m_at = _mbsinc(m_at);
        return Take<int>();
    }
    int64_t number = 0;
    for (; _ismbcdigit(*m_at) != 0; m_at = _mbsinc(m_at)) {
        number = std::min<int64_t>(number * 10 + (*m_at - '0'), INT_MAX);
    }
    return number;
}

void FormatWalk::TakeWidth() {
    const int64_t nWidth = TakeNumber();
    XASSERT(kUnit, nWidth >= 0);
    m_width = nWidth;
}

void FormatWalk::TakePrecision() {
    int64_t nPrecision = 0;
    m_hasPrecision = *m_at == '.';
    if (m_hasPrecision) {
        m_at = _mbsinc(m_at);
        nPrecision = TakeNumber();
    }
    XASSERT(kUnit, nPrecision >= 0);
    m_precision = nPrecision;
}

void FormatWalk::TakeSize() {
    m_size = Size::Plain;
    for (;; m_at = _mbsinc(m_at)) {
        switch (*m_at) {
            case 'F':
            case 'N':
            case 'h':
                break;
            case 'l':
                m_size = m_size == Size::Long ? Size::LongLong : Size::Long;
                break;
            case 'L':
                m_size = Size::LongLong;
                break;
            default:
                return;
        }
    }
}

int64_t FormatWalk::TextBound() {
    const bool isCharacter = *m_at == 'c' || *m_at == 'C';
    const bool isWide = *m_at == 'S' || m_size == Size::Long || m_size == Size::LongLong;
    int64_t length = 2;
    if (isCharacter) {
        Take<int>();
    } else {
        length = LengthOfText(isWide, m_hasPrecision ? m_precision : INT_MAX);
    }
    if (m_hasPrecision) {
        length = std::min(length, m_precision);
    }
    return std::max(length, m_width);
}

// A text that a precision cuts needs no terminator, so no more of it is looked at.
int64_t FormatWalk::LengthOfText(bool isWide, int64_t atMost) {
    const void* text = Take<const void*>();
    const auto limit = static_cast<size_t>(atMost);
    if (text == nullptr) {
        return kNullText;
    }
    size_t length = 0;
    if (isWide) {
        length = wcsnlen(static_cast<const wchar_t*>(text), limit);
    } else {
        length = m_hasPrecision ? strnlen(static_cast<const char*>(text), limit)
                                : _mbslen(static_cast<const unsigned char*>(text));
    }
    return std::max<int64_t>(static_cast<int64_t>(length), 1);
}

void FormatWalk::PassInteger() {
    switch (m_size) {
        case Size::Plain:
            Take<int>();
            break;
        case Size::Long:
            Take<long>();
            break;
        case Size::LongLong:
            Take<long long>();
            break;
    }
}

void FormatWalk::PassFloat() {
    if (m_size == Size::LongLong) {
        Take<long double>();
    } else {
        Take<double>();
    }
}

int64_t LengthBound(const char* format, va_list args) {
    va_list walked;
    va_copy(walked, args);
    const int64_t bound = FormatWalk(format, walked).LengthBound();
    va_end(walked);
    return bound;
}

}  // namespace

void CString::Format(const char* pszFormat, ...) {
    va_list args;
    va_start(args, pszFormat);
    FormatV(pszFormat, args);
    va_end(args);
}

void CString::FormatV(const char* pszFormat, va_list args) {
    const char* format = TextOf(pszFormat);
    CString printed;  // apart: arguments may point into this text
    printed.AllocBuffer(ToLength(LengthBound(format, args)));
    const int nNeeded = printed.Print(format, args);
    if (nNeeded > printed.GetAllocLength()) {
        printed.GetBuffer(nNeeded);
        printed.Print(format, args);
    }
    if (nNeeded < 0) {
        printed.Empty();
    }
    printed.ReleaseBuffer();
    Swap(printed);
}

int CString::Print(const char* format, va_list args) {
    va_list once;
    va_copy(once, args);
    // For no characters the buffer is the shared empty text, where not even a NUL may be written.
    const size_t size = GetAllocLength() > 0 ? static_cast<size_t>(GetAllocLength()) + 1 : 0;
    const int nNeeded = std::vsnprintf(m_pchData, size, format, once);
    va_end(once);
    return nNeeded;
}
