// A serial line whose far end is one of the simulated ones, on the real clock: a pty, and a thread
// that hands on what is written to it. The far end's own time runs a hundred times as fast, so that
// what it takes to answer, hang up and the like hardly counts.
#ifndef PAGERFWD_BENCH_REAL_LINE_H
#define PAGERFWD_BENCH_REAL_LINE_H

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <thread>

#include "sim/far_end.h"

namespace bench {

// The two ends of a pty, raw, both open as long as the object lives.
//
// Errors     Throws std::runtime_error when the system has none.
class Pty {
 public:
    Pty();
    ~Pty();
    Pty(const Pty&) = delete;
    Pty& operator=(const Pty&) = delete;

    int Master() const { return master_; }
    int Slave() const { return slave_; }
    const std::string& Device() const { return device_; }

 private:
    int master_;
    int slave_ = -1;
    std::string device_;
};

// Threads    The far end is called by the line's own thread only, from Run to the end.
class RealLine : public pagersim::Wire {
 public:
    RealLine() = default;
    ~RealLine() override;
    RealLine(const RealLine&) = delete;
    RealLine& operator=(const RealLine&) = delete;

    const std::string& Device() const { return pty_.Device(); }
    void Run(pagersim::FarEnd& farEnd);

    // How many "+++" got no answer before the program went on.
    int UnansweredEscapes() const { return unanswered_; }

    // For the far end.
    void Send(std::string_view bytes) override;
    void At(pagersim::Milliseconds after, std::function<void()> what) override;
    pagersim::Milliseconds Now() const override;
    void Vanish() override {}

 private:
    using Clock = std::chrono::steady_clock;

    void Serve();
    void Hear(std::string_view bytes);
    void RunDue();
    int MillisecondsToNext() const;

    Pty pty_;
    const Clock::time_point begun_ = Clock::now();
    pagersim::FarEnd* far_end_ = nullptr;
    std::multimap<Clock::time_point, std::function<void()>> calls_;
    bool escaped_ = false;  // "+++" was the last thing heard, and nothing was said since
    std::atomic<int> unanswered_{0};
    std::atomic<bool> ends_{false};
    std::thread thread_;
};

}  // namespace bench

#endif
