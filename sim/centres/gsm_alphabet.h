// The default alphabet of GSM 03.38: what a telephone shows for the bytes of a short message.
#ifndef PAGERFWD_SIM_CENTRES_GSM_ALPHABET_H
#define PAGERFWD_SIM_CENTRES_GSM_ALPHABET_H

#include <string>
#include <string_view>

namespace pagersim {

// In UTF-8. 0x1b and the next byte stand for one character of the extension table; what that lacks,
// and a byte from 128 up, shows as U+FFFD.
std::string DecodeGsm(std::string_view septets);

}  // namespace pagersim

#endif
