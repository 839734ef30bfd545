#include "bench/real_line.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace bench {
namespace {

constexpr std::string_view kEscape = "+++";
constexpr int kLookForEndMs = 20;
constexpr int kSpeed = 100;  // of the far end's time

}  // namespace

Pty::Pty() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    char name[64];
    if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0 ||
        ptsname_r(master_, name, sizeof name) != 0) {
        throw std::runtime_error("the system has no pseudo-terminal to give");
    }
    device_ = name;
    slave_ = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios raw{};
    tcgetattr(slave_, &raw);
    cfmakeraw(&raw);
    tcsetattr(slave_, TCSANOW, &raw);
}

Pty::~Pty() {
    close(slave_);
    close(master_);
}

RealLine::~RealLine() {
    ends_ = true;
    if (thread_.joinable()) {
        thread_.join();
    }
}

void RealLine::Run(pagersim::FarEnd& farEnd) {
    far_end_ = &farEnd;
    thread_ = std::thread([this] { Serve(); });
}

void RealLine::Serve() {
    far_end_->Opened(*this);
    while (!ends_) {
        pollfd readable{pty_.Master(), POLLIN, 0};
        if (poll(&readable, 1, MillisecondsToNext()) > 0) {
            char bytes[512];
            const ssize_t count = read(pty_.Master(), bytes, sizeof bytes);
            if (count > 0) {
                Hear({bytes, static_cast<size_t>(count)});
            }
        }
        RunDue();
    }
    far_end_->Closed();
}

void RealLine::Hear(std::string_view bytes) {
    unanswered_ += escaped_ ? 1 : 0;
    escaped_ = bytes.substr(0, kEscape.size()) == kEscape;
    far_end_->Heard(bytes);
}

// The echo of an escape is no answer to it.
void RealLine::Send(std::string_view bytes) {
    escaped_ = escaped_ && bytes.find_first_not_of('+') == std::string_view::npos;
    for (size_t sent = 0; sent < bytes.size();) {
        const ssize_t count = write(pty_.Master(), bytes.data() + sent, bytes.size() - sent);
        if (count <= 0) {
            return;
        }
        sent += static_cast<size_t>(count);
    }
}

void RealLine::At(pagersim::Milliseconds after, std::function<void()> what) {
    calls_.emplace(Clock::now() + std::chrono::duration_cast<Clock::duration>(after) / kSpeed,
                   std::move(what));
}

pagersim::Milliseconds RealLine::Now() const {
    return std::chrono::duration_cast<pagersim::Milliseconds>((Clock::now() - begun_) * kSpeed);
}

void RealLine::RunDue() {
    while (!calls_.empty() && calls_.begin()->first <= Clock::now()) {
        const auto what = std::move(calls_.begin()->second);
        calls_.erase(calls_.begin());
        what();
    }
}

int RealLine::MillisecondsToNext() const {
    if (calls_.empty()) {
        return kLookForEndMs;
    }
    const auto left =
        std::chrono::ceil<pagersim::Milliseconds>(calls_.begin()->first - Clock::now());
    return static_cast<int>(std::clamp<long long>(left.count(), 0, kLookForEndMs));
}

}  // namespace bench
