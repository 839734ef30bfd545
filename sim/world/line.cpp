// One simulated serial line. Tested by tests/unit/sim/line_test.cpp.
#include "sim/world/line.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "sim/preload/real_calls.h"
#include "sim/world/own_descriptors.h"

namespace pagersim {
namespace {

termios FreshSettings() {
    termios settings{};
    cfmakeraw(&settings);
    settings.c_cflag |= CS8 | CREAD | CLOCAL;
    settings.c_cc[VMIN] = 1;
    cfsetspeed(&settings, B9600);
    return settings;
}

// Rising through the life of the process: a descriptor kept from a line that is gone is not taken
// for one of the port's next line.
uint32_t NextConnection() {
    static uint32_t latest = 0;
    return ++latest;
}

}  // namespace

Pty::Pty() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    char name[64];
    if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0 ||
        ptsname_r(master_, name, sizeof name) != 0) {
        return;
    }
    slave_name_ = name;
    const int high = fcntl(master_, F_DUPFD_CLOEXEC, kFirstOfOurs);
    if (high >= 0) {
        Real().close(master_);
        master_ = high;
    }
}

Pty::~Pty() {
    if (master_ >= 0) {
        Real().close(master_);
    }
}

Line::Line(Timeline& timeline, int com, std::unique_ptr<FarEnd> far_end)
    : timeline_(timeline),
      com_(com),
      settings_(FreshSettings()),
      born_(NextConnection()),
      far_end_(std::move(far_end)) {}

Line::~Line() {
    timeline_.Events().Drop(this);
    connection_ = 0;
    timeline_.WakeForInput(Bit());
}

void Line::Send(std::string_view bytes) {
    if (connection_ == 0 || bytes.empty()) {
        return;  // Nobody has it open: lost, as on a real line.
    }
    if (taken_ == input_.size()) {
        input_.clear();
        taken_ = 0;
    }
    input_.append(bytes);
    latest_input_ = timeline_.Now();
    timeline_.WakeForInput(Bit());
}

void Line::At(Milliseconds after, std::function<void()> what) {
    timeline_.Events().Add(timeline_.Now() + after, this, std::move(what));
}

Milliseconds Line::Now() const {
    return std::chrono::duration_cast<Milliseconds>(timeline_.Now());
}

void Line::Vanish() {
    connection_ = 0;
    pty_.reset();
    DropInput();
    timeline_.WakeForInput(Bit());
}

const std::string* Line::Terminal() {
    if (!plugged_in_) {
        errno = ENOENT;
        return nullptr;
    }
    if (pty_ == nullptr || !pty_->IsOpen()) {
        pty_ = std::make_unique<Pty>();
    }
    return pty_->IsOpen() ? &pty_->SlaveName() : nullptr;
}

uint32_t Line::Connect() {
    ++opens_;
    if (connection_ == 0) {
        EndConnection();  // of a vanished device that is still held open
        connection_ = latest_connection_ = NextConnection();
        holders_ = 1;
        connected_ = true;
        far_end_->Opened(*this);
    } else {
        ++holders_;
    }
    return latest_connection_;
}

int Line::Open(int flags, uint32_t& connection) {
    const std::string* const terminal = Terminal();
    const int descriptor =
        terminal != nullptr ? Real().open(terminal->c_str(), flags | O_NOCTTY) : -1;
    if (descriptor >= 0) {
        connection = Connect();
    }
    return descriptor;
}

void Line::Reopen(uint32_t connection) {
    if (connection == latest_connection_) {
        ++holders_;
    }
}

void Line::Close(uint32_t connection) {
    if (connection < born_) {
        return;
    }
    ++closes_;
    if (connection != latest_connection_ || --holders_ > 0) {
        return;
    }
    connection_ = 0;
    DropInput();
    EndConnection();
}

void Line::EndConnection() {
    if (connected_) {
        connected_ = false;
        far_end_->Closed();
    }
}

size_t Line::Take(char* buffer, size_t size) {
    const size_t count = std::min(size, Readable());
    std::memcpy(buffer, input_.data() + taken_, count);
    taken_ += count;
    return count;
}

void Line::DropInput() {
    input_.clear();
    taken_ = 0;
}

void Line::Set(const termios& settings) {
    settings_ = settings;
    ++times_set_;
    far_end_->SettingsChanged(settings_);
}

void Line::PlugOut() {
    plugged_in_ = false;
    Vanish();
}

}  // namespace pagersim
