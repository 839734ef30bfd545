// The two-touch code of pagers: every character is two telephone digits, row and column.
#ifndef PAGERFWD_SIM_CENTRES_TWO_TOUCH_H
#define PAGERFWD_SIM_CENTRES_TWO_TOUCH_H

#include <string>
#include <string_view>

namespace pagersim {

// What a pager shows for these digits, in UTF-8: katakana in half width, as its display has them.
// Code 69 is one stroke with two readings: the long mark behind katakana, else a hyphen. A code
// that means nothing, and a single digit left over, show as U+FFFD.
std::string DecodeTwoTouch(std::string_view digits);

}  // namespace pagersim

#endif
