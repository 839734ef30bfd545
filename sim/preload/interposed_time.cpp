// sleep, the wall clock, and the one that goes on from the machine's start, here the world's: who
// compares times of several processes goes by it. CLOCK_MONOTONIC stays real: the runtime library
// measures its own pauses by it. Tested by tests/unit/sim/clock_test.cpp.
#include <algorithm>
#include <cerrno>

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

void NoteQuietLook(LineSet lines) {
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

namespace {

// Libraries pause so for other processes: when there are some in the world, in its time. The time
// left in `rest`; 0, or an error.
int Pause(Micros span, timespec* rest) {
    Micros left{0};
    {
        const Locked locked;
        Wait wait{WaitKind::kSleep};
        wait.deadline = TheWorld().Now() + span;
        if (TheWorld().Threads().WaitFor(*Me(), wait) == Waking::kSignal) {
            left = wait.deadline - TheWorld().Now();
        }
    }
    if (left > Micros::zero() && rest != nullptr) {
        *rest = ToTimespec(left);
    }
    return left > Micros::zero() ? EINTR : 0;
}

bool IsPauseShared() {
    return TheWorld().Threads().HasCompany() && IsServed();
}

}  // namespace

PAGERSIM_INTERPOSED int nanosleep(const timespec* span, timespec* rest) {
    if (!IsPauseShared() || span->tv_sec < 0) {
        return Real().nanosleep(span, rest);
    }
    const int error = Pause(ToMicros(span->tv_sec, span->tv_nsec), rest);
    errno = error != 0 ? error : errno;
    return error != 0 ? -1 : 0;
}

PAGERSIM_INTERPOSED int usleep(useconds_t span) {
    if (!IsPauseShared()) {
        return Real().usleep(span);
    }
    const int error = Pause(Micros(span), nullptr);
    errno = error != 0 ? error : errno;
    return error != 0 ? -1 : 0;
}

PAGERSIM_INTERPOSED int clock_nanosleep(clockid_t clock, int flags, const timespec* span,
                                        timespec* rest) {
    if (!IsPauseShared() || span->tv_sec < 0) {
        return Real().clock_nanosleep(clock, flags, span, rest);
    }
    const Micros given = ToMicros(span->tv_sec, span->tv_nsec);
    if ((flags & TIMER_ABSTIME) == 0) {
        return Pause(given, rest);
    }
    timespec now{};
    clock_gettime(clock, &now);
    return Pause(std::max(Micros::zero(), given - ToMicros(now.tv_sec, now.tv_nsec)), nullptr);
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
    const bool is_wall = clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE;
    if (!World::IsActive() || (!is_wall && clock != CLOCK_BOOTTIME)) {
        return Real().clock_gettime(clock, now);
    }
    *now = ToTimespec(is_wall ? LookAtWallClock() : TheWorld().SinceStart());
    return 0;
}

}  // namespace pagersim
