// The world: its socket, its lines, and how it is served. Tested by
// tests/unit/sim/{shared_world,world_server}_test.cpp.
#include "sim/server/world_server.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "sim/server/local_socket.h"

namespace pagersim {
namespace {

constexpr const char* kShownClock = "PAGERSIM_SHOWN_CLOCK";

}  // namespace

WorldServer::WorldServer(const std::string& socket, std::time_t wall, Micros step)
    : path_(socket),
      listener_(Listen(socket)),
      ears_(epoll_create1(EPOLL_CLOEXEC)),
      wall_at_start_(Micros(std::chrono::seconds(wall)).count()),
      step_(step),
      clock_file_(ClockPage::MakeFile(std::getenv(kShownClock))),
      clock_(clock_file_.Number()),
      watched_(epoll_create1(EPOLL_CLOEXEC)) {
    if (listener_.Number() < 0) {
        throw std::system_error(errno, std::generic_category(), socket);
    }
    if (clock_file_.Number() < 0) {
        throw std::system_error(errno, std::generic_category(), "the world's clock");
    }
    clock_.SetStart(Micros(wall_at_start_));
    ListenAlso(listener_.Number(), kNewcomer);
}

WorldServer::~WorldServer() {
    for (auto& line : lines_) {
        line.reset();  // It says so to the members.
    }
    unlink(path_.c_str());
}

void WorldServer::AddLine(int com, std::unique_ptr<FarEnd> far_end) {
    lines_.at(static_cast<std::size_t>(com - 1)) =
        std::make_unique<Line>(*this, com, std::move(far_end));
}

Line* WorldServer::LineOn(int com) {
    return com >= 1 && com <= kLines ? lines_.at(static_cast<std::size_t>(com - 1)).get() : nullptr;
}

void WorldServer::WakeForInput(LineSet lines) {
    for (const auto& member : members_) {
        member->input |= lines;
    }
}

void WorldServer::RunDueEvents() {
    while (events_.Next() <= now_) {
        events_.RunNext();
    }
}

void WorldServer::Serve(int other) {
    GoOn();
    WaitFor(other);
    GoOn();
}

void WorldServer::Resume() {
    last_ = 0;
    stopped_ = false;
}

// As far as it goes without waiting.
void WorldServer::GoOn() {
    if (!AllHaveJoined()) {
        return;
    }
    while (!stopped_) {
        while (holder_ != nullptr && HearHolder()) {
        }
        if (holder_ != nullptr) {
            return;
        }
        HearOthers();
        if (stopped_) {
            return;
        }
        const Choice next = ChooseNext();
        idle_ = next.member == nullptr;
        if (idle_) {
            return;
        }
        if (next.why != Why::kLook) {
            idle_for_ = Milliseconds{0};
        }
        GiveTurn(next);
    }
}

}  // namespace pagersim
