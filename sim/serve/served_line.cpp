// Lines in real time. Tested by tests/unit/sim/serve_test.cpp.
#include "sim/serve/served_line.h"

#include <algorithm>
#include <utility>

namespace pagersim {
namespace {

// What a program leaves unread beyond it is lost, as on a real line.
constexpr std::size_t kMostUnread = 65'536;

bool AreSame(const termios& one, const termios& other) {
    return one.c_cflag == other.c_cflag && one.c_iflag == other.c_iflag &&
           cfgetospeed(&one) == cfgetospeed(&other);
}

}  // namespace

ServedLine::ServedLine(const std::string& name, const ModemOptions& options, Exchange& exchange,
                       Recorder& recorder, RealTime& time,
                       std::function<void(const std::string& path)> moved)
    : time_(time), moved_(std::move(moved)), modem_(name, options, exchange, recorder) {
    MakePty();
}

void ServedLine::MakePty() {
    auto fresh = std::make_unique<ServedPty>();
    moved_(fresh->Path());
    pty_ = std::move(fresh);  // who has the old one open sees its end only now
}

void ServedLine::PlugOut() {
    End();
    pty_.reset();
    moved_({});
}

void ServedLine::PlugIn() {
    if (pty_ == nullptr) {
        MakePty();
    }
}

void ServedLine::End() {
    to_program_.clear();
    vanished_ = false;
    if (std::exchange(holders_, 0) > 0) {
        modem_.Closed();
    }
}

void ServedLine::AddTo(std::vector<pollfd>& waiting) const {
    if (pty_ == nullptr) {
        return;
    }
    waiting.push_back({pty_->Watch(), POLLIN, 0});
    if (IsOpen()) {
        const auto output = static_cast<short>(to_program_.empty() ? 0 : POLLOUT);
        waiting.push_back({pty_->Master(), static_cast<short>(POLLIN | output), 0});
    }
}

void ServedLine::Look() {
    if (pty_ == nullptr) {
        return;
    }
    for (const char change : pty_->TakeOpenings()) {
        change == '+' ? Opened() : Closed();
    }
    if (IsOpen()) {
        NoteSettings();
        ReadAll();
        WriteWaiting();
    }
    if (vanished_) {
        End();
        MakePty();
    }
}

void ServedLine::Opened() {
    if (++holders_ == 1) {
        settings_ = {};
        modem_.Opened(*this);
        NoteSettings();
    }
}

void ServedLine::Closed() {
    if (holders_ == 1) {
        ReadAll();
        to_program_.clear();
        pty_->DropUnread();
        modem_.Closed();
    }
    holders_ = std::max(holders_ - 1, 0);
}

// The latest settings hold for what was sent before they were noticed, too: a pty doesn't say when.
void ServedLine::NoteSettings() {
    const termios settings = pty_->Settings();
    if (!AreSame(settings, settings_)) {
        settings_ = settings;
        modem_.SettingsChanged(settings);
    }
}

void ServedLine::ReadAll() {
    for (std::string bytes = pty_->Read(); !bytes.empty() && !vanished_; bytes = pty_->Read()) {
        NoteSettings();
        modem_.Heard(bytes);
    }
}

void ServedLine::Send(std::string_view bytes) {
    if (IsOpen() && to_program_.size() + bytes.size() <= kMostUnread) {
        to_program_ += bytes;
        WriteWaiting();
    }
}

void ServedLine::WriteWaiting() {
    if (!to_program_.empty()) {
        to_program_.erase(0, pty_->Write(to_program_));
    }
}

}  // namespace pagersim
