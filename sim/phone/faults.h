// What can go wrong on the way to a centre and with it: a wrapper around any centre.
#ifndef PAGERFWD_SIM_PHONE_FAULTS_H
#define PAGERFWD_SIM_PHONE_FAULTS_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>

#include "sim/centre.h"

namespace pagersim {

struct Faults {
    Milliseconds late{0};                       // everything it says comes so much later
    std::optional<unsigned> silent_after = {};  // it says so many things, then nothing more
    std::uint64_t drop_after_hearing = 0;       // carrier lost once it has heard so many bytes
    std::uint64_t drop_after_saying = 0;        // ... or said so many; 0: never
    unsigned noise = 0;  // about one byte in so many is garbled, both ways, the same in each run
};

// Threads    As in far_end.h.
class FaultyCentre : public Centre, private Call {
 public:
    FaultyCentre(std::unique_ptr<Centre> centre, const Faults& faults);

    void Answered(Call& call) override;
    void Heard(std::string_view bytes) override;
    void Dialled(std::string_view digits) override;
    void Ended() override;

 private:
    std::string Number() const override { return call_->Number(); }
    Milliseconds Now() const override { return call_->Now(); }
    void Say(std::string_view bytes, Milliseconds after) override;
    void At(Milliseconds after, std::function<void()> what) override;
    void HangUp() override { call_->HangUp(); }
    void Deliver(ReceivedPage page) override { call_->Deliver(std::move(page)); }
    void Note(std::string_view remark) override { call_->Note(remark); }

    std::string Garbled(std::string_view bytes);
    std::size_t BytesLeft(std::uint64_t limit, std::uint64_t so_far) const;
    void DropCarrier(const std::string& when);

    const std::unique_ptr<Centre> centre_;
    const Faults faults_;
    Call* call_ = nullptr;  // valid from Answered to Ended
    std::minstd_rand noise_;
    unsigned words_said_ = 0;
    std::uint64_t bytes_said_ = 0;
    std::uint64_t bytes_heard_ = 0;
    bool dropped_ = false;
};

}  // namespace pagersim

#endif
