// A line of commands to a Hayes modem, taken apart.
#ifndef PAGERFWD_SIM_PHONE_AT_LINE_H
#define PAGERFWD_SIM_PHONE_AT_LINE_H

#include <string>
#include <string_view>
#include <vector>

#include "sim/phone/dial_string.h"

namespace pagersim {

// One command: ATE0 is {"E", 0}, AT&F1 {"&F", 1}, ATS8=4 {"S8", 4}, ATS8? {"S8?", 0}. A missing
// number reads as 0.
struct AtCommand {
    std::string name;
    int value = 0;
    DialString dial = {};  // for "D"
};

struct AtLine {
    std::vector<AtCommand> commands;
    bool well_formed = true;  // false: something follows these commands that is none
};

// `body` is what stands between "AT" and the carriage return, in either case; blanks mean nothing.
AtLine ParseAtLine(std::string_view body, const DialTimes& times);

}  // namespace pagersim

#endif
