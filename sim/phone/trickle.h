// Bytes on their way at a limited pace: a slow line, or answers that come in pieces.
#ifndef PAGERFWD_SIM_PHONE_TRICKLE_H
#define PAGERFWD_SIM_PHONE_TRICKLE_H

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

#include "sim/timers.h"

namespace pagersim {

// So many bytes at a time, so far apart. A chunk of 0 is no limit.
struct Pace {
    std::size_t chunk = 0;
    std::chrono::microseconds interval{0};
};

// A line of so many bits per second, at ten bits a byte. 0 is no limit.
Pace PaceOfLine(unsigned bits_per_second);

// Order      First in, first out. The first bytes after a rest leave at once.
// Threads    As in far_end.h.
class Trickle {
 public:
    using Sink = std::function<void(std::string_view)>;

    Trickle(Wire& wire, Pace pace, Sink sink);

    void Push(std::string_view bytes);

    void Clear();  // what has not left yet never will

    // Runs `what` when all bytes so far have left. It may destroy the Trickle. Nothing may be
    // pushed after this.
    void Finally(std::function<void()> what);

 private:
    void Pump();
    void SendChunk();
    void Rest();

    Pace pace_;
    Sink sink_;
    std::string waiting_;
    std::function<void()> finally_;
    std::chrono::microseconds owed_{0};  // pause not yet made, below the clock's millisecond
    bool resting_ = false;
    Timers timers_;
};

}  // namespace pagersim

#endif
