// A Hayes modem on a serial line, with a telephone exchange behind it.
#ifndef PAGERFWD_SIM_PHONE_MODEM_H
#define PAGERFWD_SIM_PHONE_MODEM_H

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "sim/far_end.h"
#include "sim/phone/answers.h"
#include "sim/phone/at_line.h"
#include "sim/phone/command_buffer.h"
#include "sim/phone/escape_watch.h"
#include "sim/phone/exchange.h"
#include "sim/phone/phone_line.h"
#include "sim/phone/trickle.h"
#include "sim/record/event.h"
#include "sim/timers.h"

namespace pagersim {

// What the program's letting go of DTR does: closing the port, or setting its speed to 0 (&D).
enum class DtrDrop { kIgnored, kEscapes, kHangsUp, kResets };

struct ModemOptions {
    bool powered = true;            // false: switched off, nothing ever comes back
    Milliseconds answer_delay{20};  // from a command to its answer
    Milliseconds answer_gap{40};    // between two answers; 0 puts both into one read
    std::size_t answer_piece = 0;   // what goes to the program comes in pieces of so many bytes...
    Milliseconds piece_gap{30};     // ... so far apart; 0: whole
    DtrDrop dtr = DtrDrop::kHangsUp;
    EscapeRules escape = {};
    DialTimes dial = {};
    PhoneOptions phone = {};
    std::optional<unsigned> connect_speed = {};  // behind CONNECT, 0: none; else the line's speed
    std::uint64_t vanish_after = 0;  // the device is gone once it has been sent so many bytes
};

// Answers as modems in the field do, not only as the book says:
//  - it echoes what it is sent in command state, and AT&F and ATZ switch that on again;
//  - H answers by itself, before the answer to its line: OK when there was nothing to hang up, else
//    NO CARRIER. So ATHV1 is answered twice, and a program that reads one OK takes the other for
//    the answer to its next command. The line feed behind the carriage return changes nothing;
//  - +++ reaches the centre before the modem knows it for an escape, and commands that come before
//    the guard time is over reach it, too;
//  - what a centre says at once comes right behind CONNECT.
// What is sent while it dials gives up the call, but for the first 125 ms (V.250, 5.6.1).
//
// Of each character as many bits go either way as the program has set.
//
// Echo, form of the answers, registers and &D last while it has power: over closing and opening.
// Unless &D says that DTR means nothing, closing the line or dropping it (speed 0) hangs up; else
// the call stands, and is there at the next opening.
//
// Threads    As in far_end.h.
class Modem : public FarEnd, private PhoneUser {
 public:
    // `line` is the port's name in the record, "COM 1". Exchange and recorder outlive the modem.
    Modem(std::string line, const ModemOptions& options, Exchange& exchange, Recorder& recorder);

    void Opened(Wire& wire) override;
    void Heard(std::string_view bytes) override;
    void SettingsChanged(const termios& settings) override;
    void Closed() override;

 private:
    enum class State { kCommand, kDialling, kData };
    enum class Outcome { kNext, kAnswered, kFailed };  // of one command of a line

    // What commands can set. Registers without effect are only kept.
    struct Profile {
        explicit Profile(const ModemOptions& options)
            : dtr(options.dtr), escape(options.escape), dial(options.dial), phone(options.phone) {}

        bool echo = true;
        bool verbose = true;
        bool quiet = false;
        DtrDrop dtr;
        EscapeRules escape;
        DialTimes dial;
        PhoneOptions phone;
        std::map<std::string, int> registers = {};  // but for those with an effect
    };

    // What the first opening makes.
    struct Session {
        Session(Wire& wire_given, Modem& modem);

        Wire& wire;
        Trickle to_program;
        Timers timers;
        Milliseconds last_answer;  // when the latest reply is due
        PhoneLine phone;
    };

    void HearIn(State state, std::string_view& bytes);
    void HearCommand(std::string_view typed);
    void HearData(std::string_view& bytes);
    bool VanishesWith(std::size_t count);
    void EscapeIfSilent();
    void DropDtr();
    void GiveUpCall();
    std::string InDataBits(std::string_view bytes) const;

    // Commands, in modem_commands.cpp.
    void Run(const AtLine& line);
    Outcome Run(const AtCommand& command);
    Outcome RunOther(const AtCommand& command) const;
    Outcome Dial(const DialString& dial);
    Outcome SwitchHook(int value);
    Outcome ReturnToData();
    Outcome SetDtr(int value);
    Outcome SetRegister(const AtCommand& command);
    int RegisterValue(const std::string& name) const;
    Outcome ShowRegister(const std::string& name);

    void Connected() override;
    void DialFailed(Answer why) override;
    void Dialled() override;
    void CentreSays(const std::string& centre, std::string_view bytes) override;
    void CarrierLost() override;

    void Reply(Answer answer);  // after the modem's time to answer, behind earlier replies
    void ReplyText(const std::string& text);
    void SayNow(Answer answer);
    void ToProgram(const std::string& speaker, std::string_view bytes);
    std::string Words(Answer answer) const;
    void Record(const std::string& who, EventKind kind, std::string_view text = {});

    const std::string line_;
    const ModemOptions options_;
    Exchange& exchange_;
    Recorder& recorder_;

    Profile profile_{options_};
    unsigned line_speed_ = 0;
    int data_bits_ = 8;
    std::uint64_t bytes_heard_ = 0;

    State state_ = State::kCommand;
    CommandBuffer command_;
    EscapeWatch escape_{options_.escape};
    Milliseconds dialling_since_{0};
    std::unique_ptr<Session> session_;  // null until the first opening
    bool open_ = false;
};

}  // namespace pagersim

#endif
