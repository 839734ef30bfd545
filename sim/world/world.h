// The simulated world as a process has it: its clock, its program's threads, its serial lines.
#ifndef PAGERFWD_SIM_WORLD_WORLD_H
#define PAGERFWD_SIM_WORLD_WORLD_H

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <string_view>

#include "sim/far_end.h"
#include "sim/world/line.h"
#include "sim/world/link.h"
#include "sim/world/locked.h"
#include "sim/world/scheduler.h"
#include "sim/world/shared_port.h"

namespace pagersim {

// There is one, TheWorld(), from the first use to the end of the process. Between Start and Stop it
// is active: then the interposed calls of registered threads go by its clock. It is this process's
// own, or, after Join, one that others are in too: then the lines and the clock are with the
// server.
//
// Threads    Operations that say "locked" require a Locked guard in the calling thread; the others
//            take it themselves, and may be called inside one.
class World {
 public:
    static bool IsActive() { return active_.load(std::memory_order_relaxed); }

    World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    // A fresh world: time 0, which the wall clock shows as `wall`; no events, no lines.
    void Start(time_t wall);
    void Stop();

    // Becomes one of the processes of a world; `server` is its socket. Comes back with the turn.
    void Join(const std::string& server);
    // The program ends: what time it is by now.
    void Leave();
    bool IsShared() const { return link_ != nullptr; }

    // COM1 to COM9. A line that is there already is replaced.
    void AddLine(int com, std::unique_ptr<FarEnd> far_end);
    void RemoveLine(int com);

    // Time. No lock needed.
    Micros Now() const { return scheduler_.Now(); }
    Micros SinceStart() const { return IsShared() ? std::max(Now(), link_->Now()) : Now(); }
    Micros WallNow() const { return Micros(wall_at_start_.load()) + SinceStart(); }  // since 1970
    void SetWall(time_t wall);
    void SetStep(Micros step) { step_ = step; }
    Micros Step() const { return step_; }

    // Locked.
    Scheduler& Threads() { return scheduler_; }
    Line* LineOn(int com) { return com >= 1 && com <= kLines ? Place(com).get() : nullptr; }
    Port* PortOn(int com);

    // Of a shared world, locked.
    Reply Ask(const Request& request, std::string_view sent = {}, std::string* payload = nullptr);
    void Hear(const Reply& reply);
    void Tell(const Request& request);  // while this process has the turn
    Link& Shared() { return *link_; }

    // Around the making of a child, locked. See Link.
    void PrepareChild();
    void BeginAsChild();

 private:
    void Begin();
    std::unique_ptr<Line>& Place(int com) { return lines_.at(static_cast<size_t>(com - 1)); }

    static inline std::atomic<bool> active_{false};

    Scheduler scheduler_;
    std::array<std::unique_ptr<Line>, kLines> lines_;
    std::atomic<int64_t> wall_at_start_{0};  // microseconds
    std::atomic<Micros> step_{};
    std::unique_ptr<Link> link_;  // of a shared world
    std::array<std::unique_ptr<SharedPort>, kLines> ports_;
};

World& TheWorld();

// True when the simulation serves the calling thread: the world is active, the thread is a running
// one of the program, and not already in here (as far ends are that write a file, say).
bool IsServed();

// Around a call of the system in which the thread may wait for something outside.
class Outside {
 public:
    Outside();
    ~Outside();
    Outside(const Outside&) = delete;
    Outside& operator=(const Outside&) = delete;

 private:
    Wait wait_{WaitKind::kOutside};
    bool counts_;
};

// Before main.
void RegisterMainThread();

// Another thread's beginning and end.
ProgramThread& RegisterThread(void* (*start)(void*), void* argument);
void EnterThread(ProgramThread& me);
void LeaveThread();

}  // namespace pagersim

#endif
