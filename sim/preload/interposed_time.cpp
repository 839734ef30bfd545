// sleep and the wall clock. Tested by tests/unit/sim/clock_test.cpp.
#include "sim/preload/interpose.h"

namespace pagersim {
namespace {

// A program that looks at a line over and over and never at the time would wait for ever: so many
// looks count as one at the time.
constexpr int kQuietLooksPerStep = 100;

// One that looks at the time over and over and at no line, as with a device that is gone, too.
constexpr int kTimeLooksPerStep = 1000;

// Requires: locked.
void TakeStep() {
    ProgramThread& me = *Me();
    World& world = TheWorld();
    Wait wait{WaitKind::kLook};
    wait.deadline = world.Now() + world.Step();
    wait.lines = me.quiet_lines;
    world.Threads().WaitFor(me, wait);
}

timespec ToTimespec(Micros time) {
    timespec result{};
    result.tv_sec = static_cast<time_t>(time.count() / 1'000'000);
    result.tv_nsec = static_cast<long>(time.count() % 1'000'000 * 1000);
    return result;
}

}  // namespace

void NoteQuietLook(unsigned lines) {
    ProgramThread& me = *Me();
    me.quiet_lines = lines;
    if (++me.quiet_looks >= kQuietLooksPerStep) {
        TakeStep();
    }
}

void NoteActivity() {
    Me()->quiet_lines = 0;
    Me()->quiet_looks = 0;
    Me()->time_looks = 0;
}

Micros LookAtWallClock() {
    if (IsServed() && (Me()->quiet_lines != 0 || ++Me()->time_looks >= kTimeLooksPerStep)) {
        const Locked locked;
        TakeStep();
    }
    return TheWorld().WallNow();
}

PAGERSIM_INTERPOSED unsigned sleep(unsigned seconds) {
    if (!IsServed()) {
        return Real().sleep(seconds);
    }
    const Locked locked;
    Wait wait{WaitKind::kSleep};
    wait.deadline = TheWorld().Now() + std::chrono::seconds(seconds);
    if (TheWorld().Threads().WaitFor(*Me(), wait) != Waking::kSignal) {
        return 0;
    }
    const Micros left = wait.deadline - TheWorld().Now();
    return static_cast<unsigned>(std::chrono::ceil<std::chrono::seconds>(left).count());
}

PAGERSIM_INTERPOSED int gettimeofday(timeval* now, void* zone) noexcept {
    if (!World::IsActive()) {
        return Real().gettimeofday(now, zone);
    }
    const Micros wall = LookAtWallClock();
    now->tv_sec = static_cast<time_t>(wall.count() / 1'000'000);
    now->tv_usec = static_cast<suseconds_t>(wall.count() % 1'000'000);
    return 0;
}

PAGERSIM_INTERPOSED time_t time(time_t* out) noexcept {
    if (!World::IsActive()) {
        return Real().time(out);
    }
    const auto now = static_cast<time_t>(LookAtWallClock().count() / 1'000'000);
    if (out != nullptr) {
        *out = now;
    }
    return now;
}

PAGERSIM_INTERPOSED int clock_gettime(clockid_t clock, timespec* now) noexcept {
    if (!World::IsActive() || (clock != CLOCK_REALTIME && clock != CLOCK_REALTIME_COARSE)) {
        return Real().clock_gettime(clock, now);
    }
    *now = ToTimespec(LookAtWallClock());
    return 0;
}

}  // namespace pagersim
