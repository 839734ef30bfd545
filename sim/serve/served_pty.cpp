// Ptys for any program. Tested by tests/unit/sim/serve_test.cpp.
#include "sim/serve/served_pty.h"

#include <fcntl.h>
#include <sys/inotify.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>

namespace pagersim {
namespace {

[[noreturn]] void Fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

Descriptor OpenMaster() {
    Descriptor master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
    if (master.Number() < 0 || grantpt(master.Number()) != 0 || unlockpt(master.Number()) != 0) {
        Fail("no pty can be made");
    }
    termios raw{};
    cfmakeraw(&raw);
    raw.c_cflag |= CS8 | CREAD | CLOCAL;
    raw.c_cc[VMIN] = 1;
    cfsetspeed(&raw, B9600);
    tcsetattr(master.Number(), TCSANOW, &raw);
    return master;
}

std::string SlaveOf(const Descriptor& master) {
    std::array<char, 64> name{};
    if (ptsname_r(master.Number(), name.data(), name.size()) != 0) {
        Fail("a pty has no name");
    }
    return name.data();
}

Descriptor WatchOn(const std::string& path) {
    Descriptor watch(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (watch.Number() < 0 ||
        inotify_add_watch(watch.Number(), path.c_str(), IN_OPEN | IN_CLOSE) < 0) {
        Fail(path.c_str());
    }
    return watch;
}

}  // namespace

ServedPty::ServedPty()
    : master_(OpenMaster()),
      path_(SlaveOf(master_)),
      own_(open(path_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)),
      watch_(WatchOn(path_)) {}

std::string ServedPty::TakeOpenings() {
    std::string changes;
    alignas(inotify_event) std::array<char, 4096> events{};
    const ssize_t size = read(watch_.Number(), events.data(), events.size());
    for (ssize_t at = 0; at < size;) {
        inotify_event event{};
        std::memcpy(&event, events.data() + at, sizeof event);
        changes += (event.mask & IN_OPEN) != 0 ? '+' : '-';
        at += static_cast<ssize_t>(sizeof event + event.len);
    }
    return changes;
}

std::string ServedPty::Read() {
    std::array<char, 4096> bytes{};
    const ssize_t size = read(master_.Number(), bytes.data(), bytes.size());
    return size > 0 ? std::string(bytes.data(), static_cast<size_t>(size)) : std::string();
}

size_t ServedPty::Write(std::string_view bytes) {
    const ssize_t size = write(master_.Number(), bytes.data(), bytes.size());
    return size > 0 ? static_cast<size_t>(size) : 0;
}

void ServedPty::DropUnread() {
    tcflush(own_.Number(), TCIFLUSH);
}

termios ServedPty::Settings() const {
    termios settings{};
    tcgetattr(master_.Number(), &settings);
    return settings;
}

}  // namespace pagersim
