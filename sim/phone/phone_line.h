// The modem's side of the telephone line: dialling, the call, hanging up.
#ifndef PAGERFWD_SIM_PHONE_PHONE_LINE_H
#define PAGERFWD_SIM_PHONE_PHONE_LINE_H

#include <memory>
#include <string>
#include <string_view>

#include "sim/phone/answers.h"
#include "sim/phone/dial_string.h"
#include "sim/phone/exchange.h"
#include "sim/phone/modem_call.h"
#include "sim/record/event.h"
#include "sim/timers.h"

namespace pagersim {

struct PhoneOptions {
    bool dial_tone = true;                       // false: the line is dead
    Milliseconds training{2500};                 // from a modem's answering to the carrier
    Milliseconds carrier_wait{50'000};           // how long a call may go without one (S7)
    Answer unknown_number = Answer::kNoCarrier;  // when the number reaches nobody
};

// What the modem is told. Every Dial ends in exactly one of the first three, unless it is given up.
class PhoneUser {
 public:
    virtual ~PhoneUser() = default;

    virtual void Connected() = 0;  // the carrier is up; what the centre says at once follows
    virtual void DialFailed(Answer why) = 0;
    virtual void Dialled() = 0;  // a dial string that ends in ';' is out
    virtual void CentreSays(const std::string& centre, std::string_view bytes) = 0;
    virtual void CarrierLost() = 0;  // on an established connection
};

// Order      Dial, when no dialling is under way. With ';' the line is kept, answered or not, and
//            what is dialled later is tones for who has answered.
// Ownership  Owns the call. Its destruction hangs up.
// Threads    As in far_end.h.
class PhoneLine {
 public:
    // `line` is the port's name in the record. All references outlive this.
    PhoneLine(Wire& wire, std::string line, Exchange& exchange, Recorder& recorder,
              PhoneUser& user);

    void Dial(const DialString& dial, const PhoneOptions& options);

    // Ends the call, or the dialling. True: there was a carrier.
    bool HangUp();

    bool HasCarrier() const { return carrier_; }
    void Say(std::string_view bytes);  // Requires: a carrier.

 private:
    void TonesAreOut(const DialString& dial);
    void Place(const DialString& dial);
    void PlaceInBackground(const Exchange::Connection& connection);
    void PlaceAndWait(const Exchange::Connection& connection);
    void AwaitCarrier(const Exchange::Connection& connection);
    void AwaitVoice(const Exchange::Connection& connection);
    void StartCall(const Exchange::Connection& connection);
    void PassTones(const std::string& digits);
    void FailAfter(Milliseconds delay, Answer why);
    void LoseCarrier();
    void Note(const std::string& remark);

    Wire& wire_;
    const std::string line_;
    Exchange& exchange_;
    Recorder& recorder_;
    PhoneUser& user_;
    PhoneOptions options_;
    bool off_hook_ = false;  // a call stands or is being answered, dialled with ';'
    bool carrier_ = false;
    std::unique_ptr<ModemCall> call_;  // null while nobody has answered
    Timers progress_;                  // of the dialling; hanging up ends it
};

}  // namespace pagersim

#endif
