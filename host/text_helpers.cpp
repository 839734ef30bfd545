// The text functions that the library asks of its process, for single-byte texts. They are written
// out rather than handed on to the C library where that would look at the process's locale.
// Tested by tests/unit/linux/text_helpers_test.cpp.

#include "host/text_helpers.h"

#include <pagerfwd/text_helpers.h>

#include <algorithm>
#include <atomic>
#include <cstring>

namespace {

std::atomic<bool> isShiftJis{false};

bool IsShiftJisLead(unsigned char byte) {
    return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}

// The C functions work on char, the platform's on unsigned char.
const char* Plain(const unsigned char* text) {
    return reinterpret_cast<const char*>(text);
}
unsigned char* Bytes(const char* text) {
    return reinterpret_cast<unsigned char*>(const_cast<char*>(text));
}

// Digits from the last to the first, then turned round.
char* WriteDigits(unsigned long long value, bool is_negative, char* buffer, unsigned radix) {
    char* end = buffer;
    do {
        *end++ = "0123456789abcdefghijklmnopqrstuvwxyz"[value % radix];
        value /= radix;
    } while (value != 0);
    if (is_negative) {
        *end++ = '-';
    }
    std::reverse(buffer, end);
    *end = '\0';
    return buffer;
}

// Only decimal texts have a sign; other radices show the bits of a negative number.
template <class Signed, class Unsigned>
char* NumberToText(Signed value, char* buffer, int radix) {
    if (radix < 2 || radix > 36) {
        *buffer = '\0';
        return buffer;
    }
    const bool is_negative = value < 0 && radix == 10;
    const auto bits = static_cast<Unsigned>(value);
    const auto magnitude = is_negative ? static_cast<Unsigned>(0U - bits) : bits;
    return WriteDigits(magnitude, is_negative, buffer, static_cast<unsigned>(radix));
}

}  // namespace

void host::UseShiftJis(bool use) {
    isShiftJis = use;
}

extern "C" {

char* _itoa(int value, char* buffer, int radix) {
    return NumberToText<int, unsigned int>(value, buffer, radix);
}

char* _ltoa(long value, char* buffer, int radix) {
    return NumberToText<long, unsigned long>(value, buffer, radix);
}

unsigned char* _mbsinc(const unsigned char* text) {
    return const_cast<unsigned char*>(text) + 1;
}

size_t _mbclen(const unsigned char* text) {
    return isShiftJis && IsShiftJisLead(text[0]) && text[1] != '\0' ? 2 : 1;
}

unsigned char* _mbschr(const unsigned char* text, unsigned int character) {
    return Bytes(std::strchr(Plain(text), static_cast<int>(character)));
}

unsigned char* _mbsrchr(const unsigned char* text, unsigned int character) {
    return Bytes(std::strrchr(Plain(text), static_cast<int>(character)));
}

unsigned char* _mbsstr(const unsigned char* text, const unsigned char* wanted) {
    return Bytes(std::strstr(Plain(text), Plain(wanted)));
}

int _mbscmp(const unsigned char* left, const unsigned char* right) {
    return std::strcmp(Plain(left), Plain(right));
}

size_t _mbslen(const unsigned char* text) {
    return std::strlen(Plain(text));
}

unsigned int _mbctoupper(unsigned int character) {
    return character >= 'a' && character <= 'z' ? character - 'a' + 'A' : character;
}

int _ismbcspace(unsigned int character) {
    return character == ' ' || (character >= '\t' && character <= '\r') ? 1 : 0;
}

int _ismbcdigit(unsigned int character) {
    return character >= '0' && character <= '9' ? 1 : 0;
}
}
