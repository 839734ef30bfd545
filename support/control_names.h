// The names that ASCII (ANSI X3.4) gives to the control characters.
#ifndef PAGERFWD_SUPPORT_CONTROL_NAMES_H
#define PAGERFWD_SUPPORT_CONTROL_NAMES_H

#include <array>
#include <string_view>

namespace support {

// Of 0x00 to 0x1F.
inline constexpr std::array<std::string_view, 32> kControlNames = {
    "nul", "soh", "stx", "etx", "eot", "enq", "ack", "bel", "bs",  "ht",  "lf",
    "vt",  "ff",  "cr",  "so",  "si",  "dle", "dc1", "dc2", "dc3", "dc4", "nak",
    "syn", "etb", "can", "em",  "sub", "esc", "fs",  "gs",  "rs",  "us"};

inline constexpr unsigned char kDelete = 0x7F;
inline constexpr std::string_view kDeleteName = "del";

}  // namespace support

#endif
