// One simulated serial line: a device that the program opens, and a far end behind it.
#ifndef PAGERFWD_SIM_WORLD_LINE_H
#define PAGERFWD_SIM_WORLD_LINE_H

#include <termios.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "sim/far_end.h"
#include "sim/world/port.h"
#include "sim/world/timeline.h"

namespace pagersim {

// A pty's two ends: what the program opens is a terminal like any other.
class Pty {
 public:
    Pty();  // IsOpen() tells whether that worked
    ~Pty();
    Pty(const Pty&) = delete;
    Pty& operator=(const Pty&) = delete;

    bool IsOpen() const { return master_ >= 0; }
    const std::string& SlaveName() const { return slave_name_; }

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
class Line final : public Wire, public Port {
 public:
    Line(Timeline& timeline, int com, std::unique_ptr<FarEnd> far_end);
    ~Line() override;

    // For the far end.
    void Send(std::string_view bytes) override;
    void At(Milliseconds after, std::function<void()> what) override;
    Milliseconds Now() const override;
    void Vanish() override;

    // For the program.
    int Open(int flags, uint32_t& connection) override;
    void Reopen(uint32_t connection) override;
    void Close(uint32_t connection) override;
    bool IsAlive(uint32_t connection) const override { return connection == connection_; }
    bool IsThere() const override { return plugged_in_; }
    size_t Readable() const override { return input_.size() - taken_; }
    size_t Take(char* buffer, size_t size) override;
    void DropInput() override;
    Micros LatestInput() const override { return latest_input_; }
    void Write(std::string_view bytes) override { far_end_->Heard(bytes); }
    termios Settings() const override { return settings_; }
    void Set(const termios& settings) override;
    LineSet Bit() const override { return SetOf(com_); }

    // The two halves of Open, for a program elsewhere. The terminal that it opens; null and errno
    // when there is none. Then the connection.
    const std::string* Terminal();
    uint32_t Connect();

    // 0: none, or the device has vanished.
    uint32_t Connection() const { return connection_; }

    uint32_t TimesSet() const { return times_set_; }

    void PlugOut();
    void PlugIn() { plugged_in_ = true; }

    // For tests.
    int Opens() const { return opens_; }
    int Closes() const { return closes_; }

 private:
    void EndConnection();

    Timeline& timeline_;
    const int com_;
    std::unique_ptr<Pty> pty_;
    termios settings_;
    uint32_t times_set_ = 0;
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
