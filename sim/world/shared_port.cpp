// A line of a shared world. Tested by tests/unit/sim/shared_world_test.cpp.
#include "sim/world/shared_port.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "sim/preload/real_calls.h"
#include "sim/world/world.h"

namespace pagersim {

Request SharedPort::About(Question ask, uint32_t connection, uint32_t number) const {
    return {ask, com_, connection, number, 0, 0};
}

int SharedPort::Open(int flags, uint32_t& connection) {
    std::string terminal;
    const Reply reply = TheWorld().Ask(About(Question::kOpen), {}, &terminal);
    if (reply.error != 0) {
        errno = reply.error;
        return -1;
    }
    connection = reply.connection;
    const int fd = Real().open(terminal.c_str(), flags | O_NOCTTY);
    if (fd < 0) {
        const int error = errno;
        Close(connection);
        errno = error;
    }
    return fd;
}

void SharedPort::Reopen(uint32_t connection) {
    TheWorld().Ask(About(Question::kReopen, connection));
}

void SharedPort::Close(uint32_t connection) {
    TheWorld().Ask(About(Question::kClose, connection));
}

size_t SharedPort::Take(char* buffer, size_t size) {
    size_t taken = 0;
    while (taken < size && state_.readable > 0) {
        std::string bytes;
        const auto wanted = static_cast<uint32_t>(std::min<size_t>(size - taken, kMostPayload));
        TheWorld().Ask(About(Question::kTake, 0, wanted), {}, &bytes);
        bytes.copy(buffer + taken, bytes.size());
        taken += bytes.size();
    }
    return taken;
}

void SharedPort::DropInput() {
    TheWorld().Ask(About(Question::kDrop));
}

void SharedPort::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::string_view part = bytes.substr(0, kMostPayload);
        TheWorld().Ask(About(Question::kWrite), part);
        bytes.remove_prefix(part.size());
    }
}

termios SharedPort::Settings() const {
    if (std::exchange(known_, state_.settings) == state_.settings) {
        return settings_;
    }
    std::string bytes;
    TheWorld().Ask(About(Question::kSettings), {}, &bytes);
    PackedSettings packed{};
    std::memcpy(&packed, bytes.data(), std::min(bytes.size(), sizeof packed));
    settings_ = Unpacked(packed);
    return settings_;
}

void SharedPort::Set(const termios& settings) {
    const PackedSettings packed = Packed(settings);
    TheWorld().Ask(About(Question::kSet), {reinterpret_cast<const char*>(&packed), sizeof packed});
}

}  // namespace pagersim
