// Line settings in words. Tested by tests/unit/sim/modem_test.cpp.
#include "sim/phone/line_settings.h"

#include <array>
#include <utility>

namespace pagersim {
namespace {

constexpr std::array<std::pair<speed_t, unsigned>, 13> kSpeeds = {{{B300, 300},
                                                                   {B600, 600},
                                                                   {B1200, 1200},
                                                                   {B1800, 1800},
                                                                   {B2400, 2400},
                                                                   {B4800, 4800},
                                                                   {B9600, 9600},
                                                                   {B19200, 19200},
                                                                   {B38400, 38400},
                                                                   {B57600, 57600},
                                                                   {B115200, 115200},
                                                                   {B230400, 230400},
                                                                   {B460800, 460800}}};

char ParityLetter(tcflag_t flags) {
    if ((flags & PARENB) == 0) {
        return 'n';
    }
    return (flags & PARODD) != 0 ? 'o' : 'e';
}

std::string Flow(const termios& settings) {
    std::string flow;
    if ((settings.c_cflag & CRTSCTS) != 0) {
        flow += " rts/cts";
    }
    if ((settings.c_iflag & (IXON | IXOFF)) != 0) {
        flow += " xon/xoff";
    }
    return flow;
}

}  // namespace

unsigned SpeedOf(const termios& settings) {
    for (const auto& [constant, rate] : kSpeeds) {
        if (constant == cfgetospeed(&settings)) {
            return rate;
        }
    }
    return 0;
}

int DataBitsOf(const termios& settings) {
    switch (settings.c_cflag & CSIZE) {
        case CS5:
            return 5;
        case CS6:
            return 6;
        case CS7:
            return 7;
        default:
            return 8;
    }
}

std::string DescribeLine(const termios& settings) {
    const tcflag_t flags = settings.c_cflag;
    return std::to_string(SpeedOf(settings)) + "," + ParityLetter(flags) + "," +
           std::to_string(DataBitsOf(settings)) + "," + ((flags & CSTOPB) != 0 ? "2" : "1") +
           Flow(settings);
}

}  // namespace pagersim
