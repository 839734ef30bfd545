// A serial line's settings in words.
#ifndef PAGERFWD_SIM_PHONE_LINE_SETTINGS_H
#define PAGERFWD_SIM_PHONE_LINE_SETTINGS_H

#include <termios.h>

#include <string>

namespace pagersim {

// Bits per second; 0 for a hung-up line or an unknown rate.
unsigned SpeedOf(const termios& settings);

// Of each character, 5 to 8.
int DataBitsOf(const termios& settings);

// Speed, parity letter, data bits, stop bits and flow control: "2400,e,7,1 rts/cts".
std::string DescribeLine(const termios& settings);

}  // namespace pagersim

#endif
