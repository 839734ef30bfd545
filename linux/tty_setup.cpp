// The line driver: speed, character size, parity, stop bits, raw or cooked. Tested by
// tests/unit/linux/tty_setup_test.cpp.
#include <algorithm>
#include <iterator>

#include "linux/tty_line.h"

namespace {

struct Speed {
    int32_t rate;  // bit/s
    speed_t constant;
};

constexpr Speed stab[] = {
    {300, B300},       {1200, B1200},     {2400, B2400},     {4800, B4800},
    {9600, B9600},     {19200, B19200},   {38400, B38400},   {57600, B57600},
    {115200, B115200}, {230400, B230400}, {460800, B460800},
};

constexpr tcflag_t kEditing = ISIG | ICANON | ECHO | ECHOE | ECHOK | ECHONL;

const Speed* FindSpeed(int32_t rate) {
    const Speed* const found =
        std::find_if(std::begin(stab), std::end(stab),
                     [rate](const Speed& speed) { return speed.rate == rate; });
    return found == std::end(stab) ? nullptr : found;
}

void Set(tcflag_t* flags, tcflag_t mask, bool on) {
    *flags = on ? *flags | mask : *flags & ~mask;
}

void MakeRaw(termios* settings) {
    Set(&settings->c_iflag, IXON | IXOFF | ICRNL | IGNCR | INLCR | ISTRIP, false);
    Set(&settings->c_iflag, IGNBRK, true);
    settings->c_oflag = 0;
    Set(&settings->c_lflag, kEditing, false);
    Set(&settings->c_cflag, CRTSCTS, true);
    settings->c_cc[VMIN] = 0;
    settings->c_cc[VTIME] = 0;
}

void SetCharacter(termios* settings, int32_t dataBits, int32_t stopBits, char parity) {
    constexpr tcflag_t kSizes[] = {CS5, CS6, CS7, CS8};
    Set(&settings->c_cflag, CSIZE, false);
    Set(&settings->c_cflag, kSizes[dataBits - 5], true);
    Set(&settings->c_cflag, CSTOPB, stopBits == 2);
    Set(&settings->c_cflag, CMSPAR, false);  // else even and odd would mean space and mark
    Set(&settings->c_cflag, PARENB, parity != 'n');
    Set(&settings->c_cflag, PARODD, parity == 'o');
}

}  // namespace

int32_t tty_setup(TtyLine* line, bool raw, bool hangUpOnClose, int32_t rate, int32_t dataBits,
                  int32_t stopBits, char parity) {
    CHECK_MAGIC(line);
    const Speed* const speed = FindSpeed(rate);
    if (line == nullptr || line->fd < 0 || dataBits < 5 || dataBits > 8 || stopBits < 1 ||
        stopBits > 2 || (parity != 'n' && parity != 'e' && parity != 'o') || speed == nullptr) {
        return -1;
    }
    termios* const settings = &line->settings;
    if (raw) {
        MakeRaw(settings);
    } else {
        *settings = line->original;
        Set(&settings->c_lflag, kEditing, true);
    }
    Set(&settings->c_cflag, CLOCAL, true);
    Set(&settings->c_cflag, HUPCL, hangUpOnClose);
    cfsetspeed(settings, speed->constant);  // of both directions
    Set(&settings->c_cflag, CREAD, true);
    SetCharacter(settings, dataBits, stopBits, parity);
    // 0 = applied.
    return tcsetattr(line->fd, TCSANOW, settings) == 0 ? 0 : -1;
}
