// What can go wrong between the program and its modem: a far end in front of another one.
#ifndef PAGERFWD_TESTS_PROOF_FAULTY_LINE_H
#define PAGERFWD_TESTS_PROOF_FAULTY_LINE_H

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "sim/far_end.h"

namespace proof {

enum class LineFault {
    kNone,
    kDropsSent,      // the nth byte from the program is lost
    kGarblesSent,    // ... or arrives as another
    kDropsHeard,     // the nth byte to the program is lost
    kGarblesHeard,   // ... or arrives as another
    kSplits,         // what follows the nth byte to the program comes 30 ms later
    kVanishes,       // the device is gone after the nth byte from the program, until it is opened
    kGoesFor3Hours,  // ... and for so long it can't be opened
};

// Threads    As in sim/far_end.h.
class FaultyLine : public pagersim::FarEnd, private pagersim::Wire {
 public:
    explicit FaultyLine(std::unique_ptr<pagersim::FarEnd> behind) : behind_(std::move(behind)) {}

    // Counting begins anew.
    void Plan(LineFault fault, size_t nth);
    bool HasHappened() const { return happened_; }

    // Pulls the device out, and puts it back.
    std::function<void()> plug_out = [] {};
    std::function<void()> plug_in = [] {};

    // All since the plan, as it was before the fault.
    const std::string& Sent() const { return sent_; }    // by the program
    const std::string& Heard() const { return heard_; }  // by the program

    void Opened(pagersim::Wire& wire) override;
    void Heard(std::string_view bytes) override;
    void SettingsChanged(const termios& settings) override { behind_->SettingsChanged(settings); }
    void Closed() override { behind_->Closed(); }

 private:
    void Send(std::string_view bytes) override;
    void At(pagersim::Milliseconds after, std::function<void()> what) override;
    pagersim::Milliseconds Now() const override { return wire_->Now(); }
    void Vanish() override { wire_->Vanish(); }

    std::string Damaged(std::string_view bytes, size_t before, LineFault drops, LineFault garbles);
    void Go();

    const std::unique_ptr<pagersim::FarEnd> behind_;
    pagersim::Wire* wire_ = nullptr;
    LineFault fault_ = LineFault::kNone;
    size_t nth_ = 0;
    bool happened_ = false;
    std::string sent_;
    std::string heard_;
};

}  // namespace proof

#endif
