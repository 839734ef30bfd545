// What stands behind ATD.
#ifndef PAGERFWD_SIM_PHONE_DIAL_STRING_H
#define PAGERFWD_SIM_PHONE_DIAL_STRING_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sim/far_end.h"

namespace pagersim {

// How long the parts of dialling take.
struct DialTimes {
    Milliseconds digit{100};
    Milliseconds comma{2000};  // S8
};

struct DialString {
    std::vector<std::string> segments;  // the digits, cut at each pause: "0,5550101" has two
    bool stays_in_command = false;      // a ';' at the end
    Milliseconds duration{0};

    std::string Digits() const;  // all of them
};

// Reads the dial string at the head of `text` and takes it off: up to its ';' or the end. Modifiers
// of V.250, 6.3.1: T and P (tone, pulse), ',' 'W' '@' (pauses), '!' (flash); blanks, dashes, dots
// and parentheses mean nothing. Anything else is an error: no result.
std::optional<DialString> TakeDialString(std::string_view& text, const DialTimes& times);

}  // namespace pagersim

#endif
