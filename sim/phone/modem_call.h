// A call that somebody has answered, from the caller's modem to the centre.
#ifndef PAGERFWD_SIM_PHONE_MODEM_CALL_H
#define PAGERFWD_SIM_PHONE_MODEM_CALL_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "sim/centre.h"
#include "sim/phone/exchange.h"
#include "sim/phone/trickle.h"
#include "sim/record/event.h"
#include "sim/timers.h"

namespace pagersim {

// Order      Answer first. The call ends with its destruction.
// Ownership  Owns the centre, a fresh one for each call.
// Threads    As in far_end.h. `said` and `dropped` are called from the world's timers or from
//            within Answer, CallerSays and CallerDials; `dropped` may destroy the call.
class ModemCall : public Call {
 public:
    struct Caller {
        std::function<void(const std::string& centre, std::string_view bytes)> said;
        std::function<void()> dropped;  // the centre dropped the carrier
    };

    ModemCall(Wire& wire, const Exchange::Connection& connection, std::string line,
              Recorder& recorder, Caller caller);
    ~ModemCall() override;
    ModemCall(const ModemCall&) = delete;
    ModemCall& operator=(const ModemCall&) = delete;

    void Answer();
    void CallerSays(std::string_view bytes);
    void CallerDials(std::string_view digits);

    std::string Number() const override { return number_; }
    Milliseconds Now() const override { return wire_.Now(); }
    void Say(std::string_view bytes, Milliseconds after) override;
    void At(Milliseconds after, std::function<void()> what) override;
    void HangUp() override;
    void Deliver(ReceivedPage page) override;
    void Note(std::string_view remark) override;

 private:
    void Record(EventKind kind, std::string text, std::string recipient = {});

    Wire& wire_;
    std::string line_, name_, number_;
    Recorder& recorder_;
    Caller caller_;
    Trickle to_caller_, to_centre_;
    const Milliseconds response_;
    bool greeting_ = false;      // what is said now comes right behind the connection
    Milliseconds last_word_{0};  // when the latest of what was said is due
    std::unique_ptr<Centre> centre_;
    Timers timers_;
};

}  // namespace pagersim

#endif
