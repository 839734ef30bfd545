// Talking to the server of a shared world. Tested by tests/unit/sim/shared_world_test.cpp.
#include "sim/world/link.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "sim/preload/real_calls.h"
#include "sim/world/number.h"
#include "sim/world/socket_address.h"

namespace pagersim {
namespace {

[[noreturn]] void EndWithoutWorld() {
    static constexpr std::string_view kText = "pagersim: the world of this program has ended\n";
    constexpr int kStatus = 125;
    (void)Real().write(STDERR_FILENO, kText.data(), kText.size());
    _exit(kStatus);
}

template <typename Descriptors>
void TakeDescriptors(msghdr& message, Descriptors& descriptors) {
    for (cmsghdr* each = CMSG_FIRSTHDR(&message); each != nullptr;
         each = CMSG_NXTHDR(&message, each)) {
        if (each->cmsg_type == SCM_RIGHTS) {
            std::memcpy(descriptors.data(), CMSG_DATA(each), sizeof descriptors);
        }
    }
}

void SetInherited(int fd, bool inherited) {
    Real().fcntl(fd, F_SETFD, inherited ? 0 : FD_CLOEXEC);
}

}  // namespace

int MovedUp(int fd, int least) {
    const int high = Real().fcntl(fd, F_DUPFD_CLOEXEC, least);
    if (high < 0) {
        return fd;
    }
    Real().close(fd);
    return high;
}

Link::Link(std::string path) : path_(std::move(path)) {
    socket_ = FindInherited();
    if (socket_ < 0) {
        socket_ = Connect();
    }
}

Reply Link::Ask(const Request& request, std::string_view sent, std::string* payload) {
    Send(request, sent);
    Reply reply{};
    Receive(reply, payload, 0);
    return reply;
}

Reply Link::Start(std::string_view terminals, std::string* payload) {
    Request request{};
    request.ask = Question::kStart;
    Send(request, terminals);
    Reply reply{};
    Given given = {-1, -1};
    Receive(reply, payload, 0, &given);
    watched_.Begin(given[0], reply.connection);
    clock_ = ClockPage(given[1]);
    Real().close(given[1]);
    has_turn_ = true;
    return reply;
}

void Link::Tell(const Request& request) {
    Send(request, {});
}

void Link::Rest(int64_t deadline, uint32_t flags, LineSet lines) {
    Request request{};
    request.ask = Question::kRest;
    request.deadline = deadline;
    request.number = flags;
    request.lines = lines;
    Send(request, {});
    has_turn_ = false;
    wanted_ = false;
}

void Link::Want() {
    if (!std::exchange(wanted_, true)) {
        Request request{};
        request.ask = Question::kWant;
        Send(request, {});
    }
}

void Link::TellAsking(int more) {
    asking_ += static_cast<uint32_t>(more);
    Request request{};
    request.ask = Question::kOutside;
    request.number = asking_;
    Send(request, {});
}

bool Link::ReceiveTurn(Reply& reply, bool wait) {
    has_turn_ = has_turn_ || Receive(reply, nullptr, wait ? 0 : MSG_DONTWAIT) > 0;
    wanted_ = wanted_ && !has_turn_;
    return has_turn_;
}

bool Link::AwaitTurn(Reply& reply) {
    const ssize_t count = Real().recv(socket_, &reply, sizeof reply, 0);
    if (count == static_cast<ssize_t>(sizeof reply)) {
        has_turn_ = true;
        wanted_ = false;
        return true;
    }
    if (count >= 0 || errno != EINTR) {
        EndWithoutWorld();
    }
    return false;
}

Reply Link::PrepareChild() {
    child_ = Connect();
    Request request{};
    request.ask = Question::kFork;
    const Reply reply = Ask(request);
    SetInherited(socket_, false);
    return reply;
}

void Link::ForgetChild() {
    SetInherited(socket_, true);
    Real().close(std::exchange(child_, -1));
}

void Link::Adopt() {
    Real().close(socket_);
    watched_.Leave();
    socket_ = std::exchange(child_, -1);
    has_turn_ = false;
    wanted_ = false;
    asking_ = 0;
}

void Link::StayInherited() {
    SetInherited(socket_, true);
}

void Link::MoveAway(int fd) {
    for (int* const mine : {&socket_, &child_}) {
        if (*mine == fd) {
            *mine = MovedUp(fd, fd + 1);
            SetInherited(*mine, true);
        }
    }
    watched_.MoveAway(fd);
}

bool Link::Owns(int fd) const {
    return fd >= 0 && (fd == socket_ || fd == child_ || watched_.Owns(fd));
}

void Link::Send(const Request& request, std::string_view payload) {
    iovec parts[2] = {{const_cast<Request*>(&request), sizeof request},
                      {const_cast<char*>(payload.data()), payload.size()}};
    msghdr message{};
    message.msg_iov = parts;
    message.msg_iovlen = 2;
    while (sendmsg(socket_, &message, MSG_NOSIGNAL) < 0) {
        if (errno != EINTR) {
            EndWithoutWorld();
        }
    }
}

ssize_t Link::Receive(Reply& reply, std::string* payload, int flags, Given* given) {
    char bytes[kMostPayload];
    iovec parts[2] = {{&reply, sizeof reply}, {bytes, sizeof bytes}};
    msghdr message{};
    message.msg_iov = parts;
    message.msg_iovlen = 2;
    for (;;) {
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(ucred)) + CMSG_SPACE(sizeof(Given))];
        message.msg_control = given != nullptr ? control : nullptr;
        message.msg_controllen = given != nullptr ? sizeof control : 0;
        const ssize_t count = Real().recvmsg(socket_, &message, flags | MSG_CMSG_CLOEXEC);
        if (count >= static_cast<ssize_t>(sizeof reply)) {
            if (given != nullptr) {
                TakeDescriptors(message, *given);
            }
            if (payload != nullptr) {
                payload->assign(bytes, static_cast<size_t>(count) - sizeof reply);
            }
            return count;
        }
        if (count < 0 && errno == EAGAIN) {
            return 0;
        }
        if (count >= 0 || errno != EINTR) {
            EndWithoutWorld();
        }
    }
}

int Link::Connect() const {
    const int fd = MovedUp(socket(AF_UNIX, SOCK_SEQPACKET, 0));
    const sockaddr_un address = AddressOf(path_);
    SetInherited(fd, true);
    const int on = 1;  // The server learns who speaks, also before it has taken the connection.
    setsockopt(fd, SOL_SOCKET, SO_PASSCRED, &on, sizeof on);
    if (fd < 0 || connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        EndWithoutWorld();
    }
    return fd;
}

// A descriptor that leads to the server: -1 when there is none.
int Link::FindInherited() const {
    DIR* const folder = opendir("/proc/self/fd");
    int found = -1;
    while (folder != nullptr && found < 0) {
        const dirent* const entry = readdir(folder);
        if (entry == nullptr) {
            break;
        }
        const int fd = NumberIn(entry->d_name).value_or(-1);
        sockaddr_un peer{};
        socklen_t size = sizeof peer;
        if (getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &size) == 0 &&
            peer.sun_family == AF_UNIX && path_ == peer.sun_path) {
            found = fd;
        }
    }
    if (folder != nullptr) {
        closedir(folder);
    }
    return found;
}

}  // namespace pagersim
