// One simulated serial line: a device that the program opens, and a far end behind it.
#ifndef PAGERFWD_SIM_WORLD_LINE_H
#define PAGERFWD_SIM_WORLD_LINE_H

#include <termios.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "sim/far_end.h"
#include "sim/world/scheduler.h"

namespace pagersim {

// A pty's two ends: what the program opens is a terminal like any other.
class Pty {
 public:
    Pty();  // IsOpen() tells whether that worked
    ~Pty();
    Pty(const Pty&) = delete;
    Pty& operator=(const Pty&) = delete;

    bool IsOpen() const { return master_ >= 0; }
    int OpenSlave(int flags) const;  // a descriptor, or -1 and errno

 private:
    int master_;
    std::string slave_name_;
};

// The bytes themselves don't go through the pty, which hands them over in pieces that depend on
// the machine's load, and stops at a few thousand; nor do the settings, of which it drops character
// size and parity. Both are kept here. Like a line in raw mode, it never edits or echoes.
//
// Order      A connection lasts from an opening to the last closing of its descriptors, or until
//            the device vanishes; the next opening begins another. The far end hears Opened and
//            Closed once for each.
// Threads    Every operation requires the world's lock.
class Line final : public Wire {
 public:
    Line(Scheduler& scheduler, int com, std::unique_ptr<FarEnd> far_end);
    ~Line() override;

    // For the far end.
    void Send(std::string_view bytes) override;
    void At(Milliseconds after, std::function<void()> what) override;
    Milliseconds Now() const override;
    void Vanish() override;

    // For the program. A descriptor of an earlier connection has no part in this one: see
    // `connection`, never 0, which Open gives with the descriptor and the others take.
    int Open(int flags, uint32_t& connection);  // a descriptor, or -1 and errno
    void Reopen(uint32_t connection);           // a descriptor was duplicated
    void Close(uint32_t connection);
    bool IsAlive(uint32_t connection) const { return connection == connection_; }
    size_t Readable() const { return input_.size() - taken_; }
    size_t Take(char* buffer, size_t size);
    void DropInput();
    void Write(std::string_view bytes) { far_end_->Heard(bytes); }
    const termios& Settings() const { return settings_; }
    void Set(const termios& settings);
    Micros LatestInput() const { return latest_input_; }

    // For tests.
    void PlugOut();
    void PlugIn() { plugged_in_ = true; }
    int Opens() const { return opens_; }
    int Closes() const { return closes_; }

    unsigned Bit() const { return 1U << (com_ - 1); }

 private:
    void EndConnection();

    Scheduler& scheduler_;
    const int com_;
    std::unique_ptr<Pty> pty_;
    termios settings_;
    std::string input_;  // for the program: what it hasn't read begins at taken_
    size_t taken_ = 0;
    Micros latest_input_{0};
    const uint32_t born_;      // this line's connections come after that
    uint32_t connection_ = 0;  // 0: none, or vanished
    bool connected_ = false;   // the far end has heard Opened and not yet Closed
    uint32_t latest_connection_ = 0;
    int holders_ = 0;  // descriptors of the latest connection
    bool plugged_in_ = true;
    int opens_ = 0;
    int closes_ = 0;
    std::unique_ptr<FarEnd> far_end_;
};

}  // namespace pagersim

#endif
