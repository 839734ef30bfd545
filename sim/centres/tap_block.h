// The block of the Telocator Alphanumeric Protocol, taken apart and checked (TAP 1.8, chapter 5).
#ifndef PAGERFWD_SIM_CENTRES_TAP_BLOCK_H
#define PAGERFWD_SIM_CENTRES_TAP_BLOCK_H

#include <string>
#include <string_view>
#include <vector>

namespace pagersim {

// A block: STX, fields that each end with CR, a mark, three characters of checksum, CR. The mark
// says what follows: ETX nothing, the message is whole; ETB further fields in another block; US the
// rest of the last field, which then needs no CR here, and further fields. Some callers say US for
// ETB.
inline constexpr std::size_t kTapLongestBlock = 256;  // all of it

// The checksum of STX to the mark: the sum of the low seven bits of each byte, its low twelve bits
// as three characters, each 0x30 plus four bits. <STX>123<CR>ABC<CR><ETX> sums to 379 = 0x17b,
// "17;".
std::string TapChecksum(std::string_view stx_to_mark);

struct TapBlock {
    // An answer code of TAP 1.8 (513 too long, 514 checksum, 515 format), 0 when the block is good.
    int code = 0;
    std::string fault = {};  // in words, for the transcript
    std::vector<std::string> fields = {};
    bool is_last = true;  // of its message
    bool field_goes_on =
        false;  // the last field is a part, and the next block begins with the rest
};

// `block` begins with STX and ends with the carriage return behind the checksum. In the fields SUB
// and the next character stand for a control, which is decoded. A bare control is a fault; when
// lenient, NUL and LF count in the checksum and are otherwise ignored.
TapBlock ReadTapBlock(std::string_view block, bool strict);

// Is `heard`, which begins with STX, a whole block? Its end is the first CR with a mark four
// before.
bool IsWholeTapBlock(std::string_view heard);

}  // namespace pagersim

#endif
