// Mode texts: what is accepted is within the limits of a line, and reads the same once written in
// the usual form; what is refused leaves the block alone.
#include <cstring>
#include <string>

#include "linux/win_serial.h"
#include "tests/fuzz/input.h"

namespace {

using fuzz::Expect;

bool IsSame(const DCB& left, const DCB& right) {
    return left.BaudRate == right.BaudRate && left.ByteSize == right.ByteSize &&
           left.Parity == right.Parity && left.fParity == right.fParity &&
           left.StopBits == right.StopBits;
}

std::string UsualForm(const DCB& block) {
    return "COM1:" + std::to_string(block.BaudRate) + "," + abbr_parity[block.Parity] + "," +
           std::to_string(block.ByteSize) + "," + (block.StopBits == ONESTOPBIT ? "1" : "2");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string mode(fuzz::View(data, size));
    DCB untouched;
    std::memset(&untouched, 0x5A, sizeof untouched);
    DCB block = untouched;
    if (BuildCommDCB(mode.c_str(), &block) == 0) {
        Expect(std::memcmp(&block, &untouched, sizeof block) == 0,
               "a refused text changes nothing");
        return 0;
    }
    Expect(block.BaudRate >= 300 && block.BaudRate <= INT32_MAX, "no slower than 300 bit/s");
    Expect(block.ByteSize >= 5 && block.ByteSize <= 8, "5 to 8 data bits");
    Expect(block.Parity < std::strlen(abbr_parity), "one of the parities");
    Expect(block.fParity == (block.Parity != NOPARITY ? 1U : 0U), "parity is on when there is one");
    Expect(block.StopBits == ONESTOPBIT || block.StopBits == TWOSTOPBITS, "1 or 2 stop bits");

    DCB again{};
    Expect(BuildCommDCB(UsualForm(block).c_str(), &again) == 1 && IsSame(block, again),
           "the usual form of what was read reads the same");
    return 0;
}
