// The message block of TAP. Example: the bytes of STX 123 CR ABC CR ETX add up to 379 = 0x17B, so
// the checksum is "17;", where ';' stands for the digit 11.
// Tested by tests/unit/modem/tap_block_test.cpp.

#include "modem/tap_block.h"

#include <array>
#include <cstdint>
#include <string>

namespace {

constexpr char kSTX[] = "\x02";
constexpr char kETX[] = "\x03";
constexpr char kCR[] = "\r";

// The lowest four bits: 0 to 9, then ':' ';' '<' '=' '>' '?'.
char Digit(uint32_t value) {
    return static_cast<char>('0' + (value & 0xFU));
}

size_t Size(const CString& text) {
    return static_cast<size_t>(text.GetLength());
}

CString TextOf(const std::string& bytes) {
    return {bytes.data(), static_cast<int>(bytes.size())};
}

}  // namespace

CString CheckSum(CString text) {
    uint32_t sum = 0;
    for (int i = 0; i < text.GetLength(); ++i) {
        sum += static_cast<unsigned char>(text[i]) & 0x7FU;
    }
    const std::array<char, 3> digits = {Digit(sum >> 8U), Digit(sum >> 4U), Digit(sum)};
    return {digits.data(), static_cast<int>(digits.size())};
}

CString CreateD1Block(CString number, CString message) {
    std::string block = kSTX;  // not a CString, which has no spare room and moves with each part
    block.append(number, Size(number)).append(kCR).append(message, Size(message));
    block.append(kCR).append(kETX);
    const CString sum = CheckSum(TextOf(block));
    block.append(sum, Size(sum)).append(kCR);
    return TextOf(block);
}
