// Talking to a process, and looking at it. Tested by tests/unit/sim/shared_world_test.cpp.
#include "sim/server/member.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

namespace pagersim {
namespace {

std::string FolderOf(pid_t pid) {
    return "/proc/" + std::to_string(pid);
}

// What the system says of a thread, in hexadecimal but for the first.
struct ThreadStatus {
    char state = '?';  // 'S': sleeps, 'T': is stopped, ...
    uint64_t pending = 0, pending_for_process = 0, blocked = 0;
};

ThreadStatus StatusIn(const std::string& folder) {
    constexpr int kHexadecimal = 16;
    ThreadStatus status;
    std::ifstream file(folder + "/status");
    for (std::string name, value, rest; file >> name >> value && std::getline(file, rest);) {
        if (name == "State:") {
            status.state = value.front();
        } else if (name == "SigPnd:") {
            status.pending = std::stoull(value, nullptr, kHexadecimal);
        } else if (name == "ShdPnd:") {
            status.pending_for_process = std::stoull(value, nullptr, kHexadecimal);
        } else if (name == "SigBlk:") {
            status.blocked = std::stoull(value, nullptr, kHexadecimal);
        }
    }
    return status;
}

bool Sleeps(const ThreadStatus& status) {
    const uint64_t on_its_way = (status.pending | status.pending_for_process) & ~status.blocked;
    const bool has_ended = status.state == 'Z';  // the first thread, before the others
    return has_ended || ((status.state == 'S' || status.state == 'T') && on_its_way == 0);
}

pid_t SenderOf(msghdr& message) {
    const cmsghdr* const header = CMSG_FIRSTHDR(&message);
    if (header == nullptr || header->cmsg_type != SCM_CREDENTIALS) {
        return 0;
    }
    ucred sender{};
    std::memcpy(&sender, CMSG_DATA(header), sizeof sender);
    return sender.pid;
}

void AttachTo(msghdr& message, std::vector<char>& control, const std::vector<int>& descriptors) {
    const std::size_t size = descriptors.size() * sizeof(int);
    control.resize(CMSG_SPACE(size));
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(size);
    std::memcpy(CMSG_DATA(header), descriptors.data(), size);
}

}  // namespace

bool IsReadable(int fd, int timeout_ms) {
    pollfd look{fd, POLLIN, 0};
    return fd >= 0 && poll(&look, 1, timeout_ms) > 0;
}

Voice ListenTo(const Member& member) {
    // In this order: what a process said before it ended is there when its end can be seen.
    const bool has_ended = IsReadable(member.process.Number());
    char byte = 0;
    const ssize_t count = recv(member.socket.Number(), &byte, sizeof byte, MSG_PEEK | MSG_DONTWAIT);
    if (count > 0) {
        return Voice::kSpeaks;
    }
    const bool has_closed = count == 0 || (errno != EAGAIN && errno != EINTR);
    return has_ended || has_closed ? Voice::kEnded : Voice::kSilent;
}

std::optional<Received> ReceiveFrom(const Member& member) {
    Received received{};
    char bytes[kMostPayload];
    iovec parts[2] = {{&received.request, sizeof received.request}, {bytes, sizeof bytes}};
    msghdr message{};
    message.msg_iov = parts;
    message.msg_iovlen = 2;
    alignas(cmsghdr) char credentials[CMSG_SPACE(sizeof(ucred))];
    message.msg_control = credentials;
    message.msg_controllen = sizeof credentials;
    const ssize_t count = recvmsg(member.socket.Number(), &message, MSG_DONTWAIT);
    if (count < static_cast<ssize_t>(sizeof received.request)) {
        return std::nullopt;
    }
    received.sender = SenderOf(message);
    received.payload.assign(bytes, static_cast<std::size_t>(count) - sizeof received.request);
    return received;
}

void SendTo(const Member& member, const Reply& reply, std::string_view payload,
            const std::vector<int>& given) {
    iovec parts[2] = {{const_cast<Reply*>(&reply), sizeof reply},
                      {const_cast<char*>(payload.data()), payload.size()}};
    msghdr message{};
    message.msg_iov = parts;
    message.msg_iovlen = 2;
    std::vector<char> control;
    if (!given.empty()) {
        AttachTo(message, control, given);
    }
    while (sendmsg(member.socket.Number(), &message, MSG_NOSIGNAL) < 0 && errno == EINTR) {
    }
}

std::string NameOf(const Member& member) {
    std::string name;
    std::getline(std::ifstream(FolderOf(member.pid) + "/comm"), name);
    return std::to_string(member.pid) + " (" + name + ")";
}

void SignalTo(const Member& member, int signal) {
    syscall(SYS_pidfd_send_signal, member.process.Number(), signal, nullptr, 0);
}

bool RunsWithoutUs(const Member& member) {
    std::ifstream maps(FolderOf(member.pid) + "/maps");
    if (!maps) {
        return false;
    }
    for (std::string line; std::getline(maps, line);) {
        if (line.find("preload") != std::string::npos) {
            return false;
        }
    }
    return true;
}

bool IsParentOf(const Member& member, pid_t other) {
    std::ifstream file(FolderOf(other) + "/status");
    for (std::string name, value, rest; file >> name >> value && std::getline(file, rest);) {
        if (name == "PPid:") {
            return value == std::to_string(member.pid);
        }
    }
    return false;
}

bool IsAsleep(const Member& member) {
    std::error_code error;
    std::filesystem::directory_iterator threads(FolderOf(member.pid) + "/task", error);
    return !error && std::all_of(begin(threads), end(threads), [](const auto& thread) {
        return Sleeps(StatusIn(thread.path().string()));
    });
}

}  // namespace pagersim
