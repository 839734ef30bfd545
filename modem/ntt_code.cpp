// The two-digit character code of NTT pagers: digits, upper-case letters, some signs, and the
// half-width katakana of JIS X 0201. Whatever else, the blank included, reaches the pager as a
// question mark.
// Tested by tests/unit/modem/ntt_code_test.cpp.

#include "modem/ntt_code.h"

#include <pagerfwd/text_helpers.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "modem/COMHdl.h"

namespace {

constexpr int kMaxMessageBytes = 14;
constexpr std::string_view kUnlisted = "67";

// Consecutive bytes and their codes: two digits each, one blank between.
struct Run {
    unsigned char first;
    std::string_view codes;
};

constexpr Run kRuns[] = {
    {'0', "00 96 97 98 99 90 06 07 08 09"},           // 0 to 9
    {'A', "16 17 18 19 10 26 27 28 29 20 36 37 38"},  // A to M
    {'N', "39 30 46 47 48 49 40 56 57 58 59 50 66"},  // N to Z
    {'!', "68"},
    {'#', "87"},
    {'&', "77"},
    {'(', "82 84"},  // ( )
    {'*', "86"},
    {'-', "69"},
    {'/', "60"},
    {'\\', "76"},              // the yen sign of JIS X 0201
    {0xA6, "02"},              // wo
    {0xB1, "11 12 13 14 15"},  // a i u e o
    {0xB6, "21 22 23 24 25"},  // ka ki ku ke ko
    {0xBB, "31 32 33 34 35"},  // sa shi su se so
    {0xC0, "41 42 43 44 45"},  // ta chi tsu te to
    {0xC5, "51 52 53 54 55"},  // na ni nu ne no
    {0xCA, "61 62 63 64 65"},  // ha hi fu he ho
    {0xCF, "71 72 73 74 75"},  // ma mi mu me mo
    {0xD4, "81 83 85"},        // ya yu yo
    {0xD7, "91 92 93 94 95"},  // ra ri ru re ro
    {0xDC, "01 03"},           // wa n
    {0xDE, "04 05"},           // the voiced and the semi-voiced mark
};

constexpr std::array<std::string_view, 256> Expand() {
    std::array<std::string_view, 256> table{};
    for (std::string_view& code : table) {
        code = kUnlisted;
    }
    for (const Run& run : kRuns) {
        size_t byte = run.first;
        for (size_t at = 0; at < run.codes.size(); at += 3) {
            table[byte++] = run.codes.substr(at, 2);
        }
    }
    return table;
}

constexpr std::array<std::string_view, 256> kTable = Expand();

std::string_view CodeOf(unsigned char byte) {
    const bool isLowerCase = byte >= 'a' && byte <= 'z';
    return kTable[isLowerCase ? _mbctoupper(byte) & 0xFFU : byte];
}

CString TextOf(std::string_view digits) {
    return {digits.data(), static_cast<int>(digits.size())};
}

}  // namespace

CString CCOMHdl::NTTChar(char c) {
    return TextOf(CodeOf(static_cast<unsigned char>(c)));
}

CString CCOMHdl::FormatNTT(CString text) {
    std::string digits;  // not a CString, which has no spare room and moves with each code
    const auto* bytes = reinterpret_cast<const unsigned char*>(static_cast<const char*>(text));
    const int length = text.GetLength();
    digits.reserve(2 * static_cast<size_t>(length));
    for (int at = 0; at < length;) {
        const int size = static_cast<int>(_mbclen(bytes + at));
        digits += size > 1 ? kUnlisted : CodeOf(bytes[at]);
        at += std::max(size, 1);
    }
    return TextOf(digits);
}

CString NTTDialCommand(const CString& message) {
    return "ATDT*2*2" + CCOMHdl::FormatNTT(message.Left(kMaxMessageBytes)) + "##;";
}
