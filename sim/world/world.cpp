// The simulated world: its start and end, its lock, its registered threads.
#include "sim/world/world.h"

#include <pthread.h>

namespace pagersim {
namespace {

constexpr Micros kDefaultStep = Milliseconds(10);

int64_t InMicros(time_t wall) {
    return Micros(std::chrono::seconds(wall)).count();
}

}  // namespace

World& TheWorld() {
    static World* const world = new World;  // Never destroyed: threads may outlive main.
    return *world;
}

World::World() : step_(kDefaultStep) {}

void World::Start(time_t wall) {
    const Locked locked;
    for (auto& line : lines_) {
        line.reset();
    }
    scheduler_.Reset();
    wall_at_start_ = InMicros(wall);
    step_ = kDefaultStep;
    active_ = true;
}

void World::Stop() {
    const Locked locked;
    active_ = false;
    for (auto& line : lines_) {
        line.reset();
    }
    scheduler_.Reset();
}

void World::AddLine(int com, std::unique_ptr<FarEnd> far_end) {
    const Locked locked;
    Place(com) = std::make_unique<Line>(scheduler_, com, std::move(far_end));
}

void World::RemoveLine(int com) {
    const Locked locked;
    Place(com).reset();
}

void World::SetWall(time_t wall) {
    const Locked locked;
    wall_at_start_ = InMicros(wall) - Now().count();
}

bool IsServed() {
    const ProgramThread* const me = Me();
    return World::IsActive() && me != nullptr && !IsInside() && me->wait == nullptr;
}

Outside::Outside() : counts_(IsServed()) {
    if (!counts_) {
        return;
    }
    const Locked locked;
    TheWorld().Threads().GoOutside(*Me(), wait_);
}

Outside::~Outside() {
    if (!counts_) {
        return;
    }
    const Locked locked;
    TheWorld().Threads().ComeBack(*Me());
}

ProgramThread& RegisterThread(void* (*start)(void*), void* argument) {
    auto thread = std::make_unique<ProgramThread>();
    thread->start = start;
    thread->argument = argument;
    return TheWorld().Threads().Add(std::move(thread));
}

// The sanitizer's runtime doesn't know this thread yet: nothing here may need it.
void EnterThread(ProgramThread& thread) {
    {
        const Locked locked;  // Waits until the creator has noted the handle.
    }
    SetMe(&thread);
}

void LeaveThread() {
    {
        const Locked locked;
        TheWorld().Threads().End(*Me());
    }
    SetMe(nullptr);
}

namespace {

void RestartAfterFork() {
    TheWorld().Threads().KeepOnly(Me());
    UnlockAfterFork();
}

}  // namespace

void RegisterMainThread() {
    ProgramThread* main_thread = nullptr;
    {
        const Locked locked;
        main_thread = &RegisterThread(nullptr, nullptr);
        main_thread->handle = pthread_self();
    }
    SetMe(main_thread);
    pthread_atfork(LockForFork, UnlockAfterFork, RestartAfterFork);
}

}  // namespace pagersim
