// Commands and answers. Tested by tests/unit/host/at_dialogue_test.cpp.
#include "host/devices/at_dialogue.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

namespace host {
namespace {

constexpr std::chrono::milliseconds kStep{100};
constexpr std::chrono::milliseconds kBetweenCommands{100};  // V.250, chapter 5.2.2
constexpr std::chrono::milliseconds kGuard{1200};  // S12 is a second, and modems' clocks are coarse
constexpr std::chrono::milliseconds kEscapeAnswer{3000};  // the guard time behind it, too
constexpr std::chrono::milliseconds kDtrDropped{1000};
constexpr std::chrono::milliseconds kForSlowAnswers{10000};
constexpr size_t kMostBytes = 4096;

struct Speed {
    int bits;
    speed_t code;
};
constexpr Speed kCodes[] = {{300, B300},       {1200, B1200},     {2400, B2400},    {4800, B4800},
                            {9600, B9600},     {19200, B19200},   {38400, B38400},  {57600, B57600},
                            {115200, B115200}, {230400, B230400}, {460800, B460800}};

// V.250, chapter 6.3 and Table 1, and what modems say besides.
constexpr std::string_view kResults[] = {"OK",          "ERROR",     "BUSY",        "NO CARRIER",
                                         "NO DIALTONE", "NO ANSWER", "NO DIAL TONE"};

speed_t CodeOf(int bits) {
    for (const Speed& speed : kCodes) {
        if (speed.bits == bits) {
            return speed.code;
        }
    }
    return B9600;
}

void Pause(AtDialogue::Milliseconds length) {
    poll(nullptr, 0, static_cast<int>(length.count()));
}

bool IsResult(const std::string& line) {
    return std::find(std::begin(kResults), std::end(kResults), line) != std::end(kResults) ||
           line.rfind("CONNECT", 0) == 0;
}

// Those that have ended.
std::vector<std::string> LinesOf(const std::string& heard) {
    std::vector<std::string> lines;
    std::string line;
    for (const char c : heard) {
        if (c != '\r' && c != '\n') {
            line += c;
        } else if (!line.empty()) {
            lines.push_back(std::move(line));
            line.clear();
        }
    }
    return lines;
}

AtAnswer AnswerIn(const std::string& heard, const std::string& echo) {
    AtAnswer answer;
    for (std::string& line : LinesOf(heard)) {
        if (IsResult(line)) {
            answer.result = std::move(line);
            break;
        }
        if (line != echo) {
            answer.said.push_back(std::move(line));
        }
    }
    return answer;
}

// Adds what has come. False: the device has gone.
bool Read(int line, std::string& heard) {
    std::array<char, 256> bytes{};
    const ssize_t count = read(line, bytes.data(), bytes.size());
    heard.append(bytes.data(), count > 0 ? static_cast<size_t>(count) : 0);
    return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
}

}  // namespace

AtDialogue::AtDialogue(const std::string& device, int speed)
    : line_(open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
    if (!line_.IsOpen()) {
        why_not_ = std::string("can't be opened: ") + std::strerror(errno);
    } else if (tcgetattr(line_.Number(), &before_) != 0) {
        why_not_ = "is no serial line";
    } else {
        SetUp(speed);
    }
}

AtDialogue::~AtDialogue() {
    if (why_not_.empty()) {
        tcflush(line_.Number(), TCIOFLUSH);
        tcsetattr(line_.Number(), TCSANOW, &before_);
    }
}

void AtDialogue::SetUp(int speed) {
    asking_ = before_;
    cfmakeraw(&asking_);
    asking_.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | CRTSCTS);
    asking_.c_cflag |= CLOCAL | CREAD | HUPCL;
    cfsetspeed(&asking_, CodeOf(speed));
    if (tcsetattr(line_.Number(), TCSANOW, &asking_) != 0) {
        why_not_ = std::string("can't be set: ") + std::strerror(errno);
    }
}

AtAnswer AtDialogue::Ask(const std::string& command, Milliseconds longest, int until) {
    return Say(command + "\r", command, longest, until);
}

AtAnswer AtDialogue::Escape() {
    Pause(kGuard);
    return Say("+++", "+++", kEscapeAnswer);
}

void AtDialogue::DropDtr() {
    termios dropped = asking_;
    cfsetspeed(&dropped, B0);
    tcsetattr(line_.Number(), TCSANOW, &dropped);
    Pause(kDtrDropped);
    tcsetattr(line_.Number(), TCSANOW, &asking_);
}

AtAnswer AtDialogue::Say(const std::string& bytes, const std::string& echo, Milliseconds longest,
                         int until) {
    Pause(kBetweenCommands);
    tcflush(line_.Number(), TCIFLUSH);
    const ssize_t size = static_cast<ssize_t>(bytes.size());
    return write(line_.Number(), bytes.data(), bytes.size()) == size
               ? AnswerIn(Hear(longest, until), echo)
               : AtAnswer();
}

std::string AtDialogue::Hear(Milliseconds longest, int until) const {
    using Clock = std::chrono::system_clock;
    const auto latest = Clock::now() + longest + kForSlowAnswers;
    std::string heard;
    Milliseconds left = longest;
    std::array<pollfd, 2> awaited{{{line_.Number(), POLLIN, 0}, {until, POLLIN, 0}}};
    while (left.count() > 0 && Clock::now() < latest && heard.size() < kMostBytes &&
           AnswerIn(heard, "").result.empty()) {
        if (poll(awaited.data(), awaited.size(), static_cast<int>(kStep.count())) <= 0) {
            left -= kStep;
        } else if (awaited[1].revents != 0 || !Read(line_.Number(), heard)) {
            break;
        }
    }
    return heard;
}

}  // namespace host
