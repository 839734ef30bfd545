// A modem of the exchange file on a pty, in real time.
#ifndef PAGERFWD_SIM_SERVE_SERVED_LINE_H
#define PAGERFWD_SIM_SERVE_SERVED_LINE_H

#include <poll.h>

#include <functional>
#include <memory>
#include <string>

#include "sim/phone/modem.h"
#include "sim/serve/real_time.h"
#include "sim/serve/served_pty.h"

namespace pagersim {

// The modem takes several programs that have the line open for one.
//
// Threads    One. Nothing here blocks.
class ServedLine : private Wire {
 public:
    // `moved` is told the path that programs open, at first and whenever it is another: the pty of
    // a device that has vanished is gone, and the next opening finds a new one. All references
    // outlive this.
    ServedLine(const std::string& name, const ModemOptions& options, Exchange& exchange,
               Recorder& recorder, RealTime& time,
               std::function<void(const std::string& path)> moved);

    // What to wait for, and what to do then; also without anything, every now and then, since a
    // pty doesn't tell when it is set.
    void AddTo(std::vector<pollfd>& waiting) const;
    void Look();

    // The device is gone, until it is plugged in; `moved` is told no path.
    void PlugOut();
    void PlugIn();

    bool IsOpen() const { return holders_ > 0; }

 private:
    void Send(std::string_view bytes) override;
    void At(Milliseconds after, std::function<void()> what) override {
        time_.At(after, std::move(what));
    }
    Milliseconds Now() const override { return time_.Now(); }
    void Vanish() override { vanished_ = true; }

    void MakePty();
    void End();
    void Opened();
    void Closed();
    void ReadAll();
    void NoteSettings();
    void WriteWaiting();

    RealTime& time_;
    const std::function<void(const std::string& path)> moved_;
    std::unique_ptr<ServedPty> pty_;
    int holders_ = 0;     // programs that have it open
    termios settings_{};  // as the modem has heard them
    std::string to_program_;
    bool vanished_ = false;
    Modem modem_;
};

}  // namespace pagersim

#endif
