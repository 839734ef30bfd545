// Two short questions. Tested by tests/unit/host/identify_modem_test.cpp.
#include "host/devices/identify_modem.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <vector>

#include "host/files/descriptor.h"

namespace host {
namespace {

constexpr int kLongestAnswer = 1000;  // ms; that of the second question may come in parts
constexpr int kStep = 100;            // ms
constexpr size_t kMostBytes = 4096;

struct Speed {
    int bits;
    speed_t code;
};
constexpr Speed kCodes[] = {{300, B300},       {1200, B1200},     {2400, B2400},    {4800, B4800},
                            {9600, B9600},     {19200, B19200},   {38400, B38400},  {57600, B57600},
                            {115200, B115200}, {230400, B230400}, {460800, B460800}};

speed_t CodeOf(int bits) {
    for (const Speed& speed : kCodes) {
        if (speed.bits == bits) {
            return speed.code;
        }
    }
    return B9600;
}

// The line's settings while it is asked.
class AskingSettings {
 public:
    AskingSettings(int line, int speed) : line_(line) {
        is_line_ = tcgetattr(line, &before_) == 0;
        termios asking = before_;
        cfmakeraw(&asking);
        asking.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | CRTSCTS);
        asking.c_cflag |= CLOCAL | CREAD;
        cfsetispeed(&asking, CodeOf(speed));
        cfsetospeed(&asking, CodeOf(speed));
        is_line_ = is_line_ && tcsetattr(line, TCSANOW, &asking) == 0;
        tcflush(line, TCIOFLUSH);
    }
    ~AskingSettings() {
        if (is_line_) {
            tcflush(line_, TCIOFLUSH);
            tcsetattr(line_, TCSANOW, &before_);
        }
    }
    AskingSettings(const AskingSettings&) = delete;
    AskingSettings& operator=(const AskingSettings&) = delete;

    bool IsLine() const { return is_line_; }

 private:
    const int line_;
    termios before_{};
    bool is_line_;
};

std::vector<std::string> LinesOf(const std::string& heard) {
    std::vector<std::string> lines;
    std::string line;
    for (const char c : heard + "\r") {
        if (c != '\r' && c != '\n') {
            line += c;
        } else if (!line.empty()) {
            lines.push_back(std::move(line));
            line.clear();
        }
    }
    return lines;
}

bool IsOver(const std::string& heard) {
    for (const std::string& line : LinesOf(heard)) {
        if (line == "OK" || line == "ERROR") {
            return true;
        }
    }
    return false;
}

// All that comes until OK or ERROR, or the time is over.
std::string Hear(int line) {
    std::string heard;
    for (int left = kLongestAnswer; left > 0 && !IsOver(heard) && heard.size() < kMostBytes;) {
        pollfd input{line, POLLIN, 0};
        if (poll(&input, 1, kStep) <= 0) {
            left -= kStep;
            continue;
        }
        std::array<char, 256> bytes{};
        const ssize_t count = read(line, bytes.data(), bytes.size());
        if (count <= 0 && errno != EAGAIN && errno != EINTR) {
            break;  // it has gone
        }
        heard.append(bytes.data(), count > 0 ? static_cast<size_t>(count) : 0);
    }
    return heard;
}

std::string Ask(int line, const std::string& question) {
    const std::string command = question + "\r";
    // A line that takes no byte has no answer either.
    return write(line, command.data(), command.size()) < 0 ? std::string() : Hear(line);
}

// What stands between the question, which a modem echoes, and its OK.
std::string SaidOf(const std::string& heard, const std::string& question) {
    std::string said;
    for (const std::string& line : LinesOf(heard)) {
        if (line != question && line != "OK" && line != "ERROR") {
            said += (said.empty() ? "" : ", ") + line;
        }
    }
    return said;
}

bool IsAnswered(const std::string& heard) {
    const std::vector<std::string> lines = LinesOf(heard);
    return !lines.empty() && lines.back() == "OK";
}

}  // namespace

ModemAnswer IdentifyModem(const std::string& device, int speed) {
    const Descriptor line(open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!line.IsOpen()) {
        return {false, std::string("can't be opened: ") + std::strerror(errno)};
    }
    const AskingSettings settings(line.Number(), speed);
    if (!settings.IsLine()) {
        return {false, "is no serial line"};
    }
    if (!IsAnswered(Ask(line.Number(), "AT")) && !IsAnswered(Ask(line.Number(), "AT"))) {
        return {false, "no answer"};
    }
    const std::string said = SaidOf(Ask(line.Number(), "ATI"), "ATI");
    return {true, said.empty() ? "OK" : said};
}

}  // namespace host
