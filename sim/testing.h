// Simulated time and simulated serial lines for tests. A test program links libpagersim-preload.so;
// its sleep, poll, select, open, read, write, ... then go through the simulation, in every library
// of the process.
//
//     VirtualClock clock;
//     ScriptedLine line(1);
//     line.Hears("ATZ\r").Says("OK\r\n", 200ms);
//     ... run what talks on /dev/ttyS0 ...
//     EXPECT_EQ("", line.Verdict());
//
// Time passes only while every thread of the program waits (sleep, poll, select, epoll, a mutex or
// read-write lock held by another, join, a condition): it then jumps to the next deadline or the
// next thing a far end does. A program that polls is served too: once a look without waiting
// (select or poll with a time-out of zero, or such a read) has found nothing on a simulated line,
// the same thread's next look at the time (gettimeofday, time, CLOCK_REALTIME) waits for input or
// one step, whichever comes first; unless it has written or waited meanwhile.
//
// Threads that go on at one instant do so one after the other, in the order in which they began to
// wait: what they do at their times is the same in each run.
//
// Real stay the monotonic clock and what waits by it, nanosleep and usleep (libraries pause with
// them for other processes), and files, pipes and sockets: a wait on them in poll or select ends as
// soon as they are ready, before time passes. A thread that waits for something outside the program
// (read of a pipe, accept, recv, sigwait, waitpid, ...) doesn't stop the clock for the others.
//
// Whether or not a clock lives, a name beginning with /dev/ttyS never reaches a real device:
// without a simulated line it can't be opened (ENOENT), and never as a stream (fopen).
#ifndef PAGERFWD_SIM_TESTING_H
#define PAGERFWD_SIM_TESTING_H

#include <termios.h>

#include <chrono>
#include <ctime>
#include <memory>
#include <string>
#include <string_view>

#include "sim/far_end.h"

#define PAGERSIM_API __attribute__((visibility("default")))

namespace pagersim {

// Time is virtual while it lives. Each new one begins afresh: time 0, no events, no lines.
//
// Order      Made first and destroyed last in a fixture: the lines end with it. One at a time.
// Threads    A thread still waiting when it is destroyed goes on at once, as after its time-out.
class PAGERSIM_API VirtualClock {
 public:
    // Monday, 8 January 2001, 10:00:00 UTC.
    static constexpr time_t kDefaultStart = 978948000;

    // The wall clock shows `start`. The default is kDefaultStart for the first clock of a process
    // and as many weeks later for the others as it takes never to show an instant twice: what the
    // program keeps per process (the base of a tick count, say) stays true.
    explicit VirtualClock(time_t start = 0);
    ~VirtualClock();
    VirtualClock(const VirtualClock&) = delete;
    VirtualClock& operator=(const VirtualClock&) = delete;

    // Since this clock was made. A look at it lets no time pass.
    static Milliseconds Now();
    static std::chrono::microseconds NowExactly();

    // The wall clock jumps to `wall`; no time passes.
    static void Set(time_t wall);

    // How long a look at the time on a quiet line takes. 10 ms unless set; back to that with each
    // new clock.
    static void SetStep(Milliseconds step);

    // When all threads wait for each other, so that nothing can ever go on: after so much real time
    // the process says who waits for what on standard error, and aborts. A minute unless set; 0: it
    // waits on.
    static void SetPatience(Milliseconds real);
};

// Any far end on a line: COM1 to COM64, that is /dev/ttyS0 to /dev/ttyS63, can be opened while this
// lives. One a port.
class PAGERSIM_API AttachedLine {
 public:
    AttachedLine(int com, std::unique_ptr<FarEnd> far_end);
    ~AttachedLine();
    AttachedLine(const AttachedLine&) = delete;
    AttachedLine& operator=(const AttachedLine&) = delete;

    // Pulls the device out, or puts it back: opening fails (ENOENT) until it is back, and what is
    // open has vanished.
    void PlugOut();
    void PlugIn();

    termios Settings() const;  // as last set by the program; raw, 9600 bit/s 8N1 before that
    int Opens() const;         // how often the program has opened the device
    int Closes() const;        // ... and closed it

 private:
    const int com_;
};

// Whether the calling thread runs the simulation's code or a far end's. For a test's own allocator
// and the like, which has to tell the program from the world around it.
PAGERSIM_API bool IsInSimulation();

class Script;

// A line whose far end follows a script: no modem, no centre. Steps are added in order and played
// in order; they can be added while it plays.
//
// Threads    Every operation may be called from any thread at any time.
// Errors     The first thing that goes wrong stops the script; Verdict() tells it.
class PAGERSIM_API ScriptedLine {
 public:
    explicit ScriptedLine(int com);
    ~ScriptedLine();
    ScriptedLine(const ScriptedLine&) = delete;
    ScriptedLine& operator=(const ScriptedLine&) = delete;

    // Next: exactly these bytes arrive, however split over writes.
    ScriptedLine& Hears(std::string_view bytes);

    // Next: that many bytes arrive, whatever they are.
    ScriptedLine& HearsAnything(size_t count);

    // Then: the far end sends these bytes, so long after the step before was done. As first step:
    // after the first opening. Whatever is heard before that is a mistake of the program. What is
    // said while nobody has the device open is lost.
    ScriptedLine& Says(std::string_view bytes, Milliseconds after = Milliseconds{0});

    // Then: the device is gone; reads and writes give EIO until it is opened again. A step of time
    // behind it counts from that opening.
    ScriptedLine& Vanishes(Milliseconds after = Milliseconds{0});

    void PlugOut();
    void PlugIn();

    // "" when the script was played to its end and nothing else heard; else what went wrong first:
    // "step 6: expected <02>123<0d>, heard <02>124". Bytes that aren't printable are in
    // hexadecimal.
    std::string Verdict() const;

    std::string Heard() const;  // every byte the program has sent on this line
    termios Settings() const;
    int Opens() const;
    int Closes() const;

 private:
    std::unique_ptr<AttachedLine> line_;
    Script* script_;  // owned by the line
};

}  // namespace pagersim

#endif
