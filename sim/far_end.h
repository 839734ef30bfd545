// What sits at the other end of a serial line: the interface between the line and whatever is
// simulated behind it (a modem, or a test's script).
//
// Threads    Everything behind a line runs one call at a time, under the simulation's lock, in the
//            thread of the program that happens to touch the line or to wait. Nothing here blocks.
// Time       All times are virtual.
#ifndef PAGERFWD_SIM_FAR_END_H
#define PAGERFWD_SIM_FAR_END_H

#include <termios.h>

#include <chrono>
#include <functional>
#include <string_view>

namespace pagersim {

using Milliseconds = std::chrono::milliseconds;

// The line, as its far end sees it. Outlives the far end.
class Wire {
 public:
    virtual ~Wire() = default;

    // Bytes for the program, readable at once.
    virtual void Send(std::string_view bytes) = 0;

    // Runs `what` so much later. Calls due at the same instant run in the order they were asked
    // for.
    virtual void At(Milliseconds after, std::function<void()> what) = 0;

    // Since the simulation began.
    virtual Milliseconds Now() const = 0;

    // The device is gone: reads and writes give EIO until the program opens it again.
    virtual void Vanish() = 0;
};

class FarEnd {
 public:
    virtual ~FarEnd() = default;

    // The program opened the device; `wire` stays valid for the life of the far end.
    virtual void Opened(Wire& wire) = 0;

    // What the program wrote, as it comes: a text may arrive in several calls.
    virtual void Heard(std::string_view bytes) = 0;

    // The program set the line. A speed of 0 drops the connection.
    virtual void SettingsChanged(const termios& settings) = 0;

    // The program closed the device.
    virtual void Closed() = 0;
};

}  // namespace pagersim

#endif
