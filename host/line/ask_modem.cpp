// Asking a modem. Tested by tests/e2e/run_lines_test.cpp.
#include "host/line/ask_modem.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <ctime>
#include <string_view>

#include "host/files/descriptor.h"

namespace host {
namespace {

constexpr int kTimesAsked = 3;  // the first letters after a pause may be lost
constexpr int kAnswerSeconds = 2;
constexpr int kToneSeconds = 10;

// Modems take their speed from the letters "AT".
void SetUp(int line) {
    termios settings{};
    tcgetattr(line, &settings);
    cfmakeraw(&settings);
    settings.c_cflag |= CLOCAL | CREAD | HUPCL;
    cfsetspeed(&settings, B9600);
    tcsetattr(line, TCSANOW, &settings);
    tcflush(line, TCIOFLUSH);
}

// Whether the answer comes that is hoped for, before one of the others or the end of the time.
bool Answers(int line, std::string_view command, int seconds) {
    if (write(line, command.data(), command.size()) != static_cast<ssize_t>(command.size())) {
        return false;
    }
    std::string heard;
    const std::time_t end = std::time(nullptr) + seconds;
    pollfd answer{line, POLLIN, 0};
    constexpr int kLookMs = 200;
    while (std::time(nullptr) <= end) {
        std::array<char, 256> bytes{};
        const ssize_t size =
            poll(&answer, 1, kLookMs) > 0 ? read(line, bytes.data(), bytes.size()) : 0;
        heard.append(bytes.data(), size > 0 ? static_cast<size_t>(size) : 0);
        if (heard.find("OK") != std::string::npos) {
            return true;
        }
        if (heard.find("ERROR") != std::string::npos || heard.find("NO ") != std::string::npos) {
            return false;
        }
    }
    return false;
}

}  // namespace

LineExit AskModem(const std::string& device, bool dial_tone) {
    const Descriptor line(open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!line.IsOpen() || isatty(line.Number()) == 0) {
        return LineExit::kNoDevice;
    }
    SetUp(line.Number());
    int asked = 0;
    while (!Answers(line.Number(), "ATV1\r", kAnswerSeconds)) {
        if (++asked == kTimesAsked) {
            return LineExit::kSilent;
        }
    }
    if (!dial_tone) {
        return LineExit::kDone;
    }
    const bool tone = Answers(line.Number(), "ATX4DT;\r", kToneSeconds);
    Answers(line.Number(), "ATH\r", kAnswerSeconds);
    return tone ? LineExit::kDone : LineExit::kNoTone;
}

}  // namespace host
