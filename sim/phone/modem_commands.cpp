// What the modem does at each command. Tested by tests/unit/sim/modem_test.cpp.
#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

#include "sim/phone/modem.h"

namespace pagersim {
namespace {

// Commands that a modem takes and that change nothing here: loudspeaker, result code set, profiles,
// flow control, error correction.
constexpr std::string_view kWithoutEffect = "BLMNPTWXY";
constexpr std::string_view kMarksWithoutEffect = "&\\%*";

constexpr Milliseconds kSecond{1000};
constexpr Milliseconds kGuardUnit{20};  // S12 counts fiftieths of a second
constexpr int kLargest = 255;           // of a register

}  // namespace

void Modem::Run(const AtLine& line) {
    for (const AtCommand& command : line.commands) {
        switch (Run(command)) {
            case Outcome::kNext:
                break;
            case Outcome::kAnswered:
                return;
            case Outcome::kFailed:
                return Reply(Answer::kError);
        }
    }
    Reply(line.well_formed ? Answer::kOk : Answer::kError);
}

Modem::Outcome Modem::Run(const AtCommand& command) {
    const std::string_view name = command.name;
    if (name == "D") {
        return Dial(command.dial);
    }
    if (name == "H") {
        return SwitchHook(command.value);
    }
    if (name == "O") {
        return ReturnToData();
    }
    if (name.front() == 'S') {
        return name.back() == '?' ? ShowRegister(command.name) : SetRegister(command);
    }
    if (name == "Z") {
        session_->phone.HangUp();
    }
    if (name == "Z" || name == "&F") {
        profile_ = Profile(options_);
    } else if (name == "E" && command.value <= 1) {
        profile_.echo = command.value == 1;
    } else if (name == "V" && command.value <= 1) {
        profile_.verbose = command.value == 1;
    } else if (name == "Q" && command.value <= 1) {
        profile_.quiet = command.value == 1;
    } else if (name == "&D") {
        return SetDtr(command.value);
    } else {
        return RunOther(command);
    }
    return Outcome::kNext;
}

Modem::Outcome Modem::RunOther(const AtCommand& command) const {
    const bool known = command.name.size() == 1
                           ? kWithoutEffect.find(command.name) != std::string_view::npos
                           : kMarksWithoutEffect.find(command.name[0]) != std::string_view::npos;
    return known ? Outcome::kNext : Outcome::kFailed;
}

Modem::Outcome Modem::Dial(const DialString& dial) {
    if (session_->phone.HasCarrier()) {
        return Outcome::kFailed;
    }
    state_ = State::kDialling;
    dialling_since_ = session_->wire.Now();
    session_->phone.Dial(dial, profile_.phone);
    return Outcome::kAnswered;
}

Modem::Outcome Modem::SwitchHook(int value) {
    if (value > 1) {
        return Outcome::kFailed;
    }
    if (value == 1) {
        return Outcome::kNext;
    }
    Reply(session_->phone.HangUp() ? Answer::kNoCarrier : Answer::kOk);
    return Outcome::kNext;
}

Modem::Outcome Modem::ReturnToData() {
    if (!session_->phone.HasCarrier()) {
        Reply(Answer::kNoCarrier);
        return Outcome::kAnswered;
    }
    Connected();
    return Outcome::kAnswered;
}

Modem::Outcome Modem::SetDtr(int value) {
    constexpr std::array<DtrDrop, 4> kEffects = {DtrDrop::kIgnored, DtrDrop::kEscapes,
                                                 DtrDrop::kHangsUp, DtrDrop::kResets};
    const auto which = static_cast<std::size_t>(value);
    if (which >= kEffects.size()) {
        return Outcome::kFailed;
    }
    profile_.dtr = kEffects.at(which);
    return Outcome::kNext;
}

Modem::Outcome Modem::SetRegister(const AtCommand& command) {
    if (command.value > kLargest) {
        return Outcome::kFailed;
    }
    if (command.name == "S7") {
        profile_.phone.carrier_wait = command.value * kSecond;
    } else if (command.name == "S8") {
        profile_.dial.comma = command.value * kSecond;
    } else if (command.name == "S12") {
        profile_.escape.guard = command.value * kGuardUnit;
    } else {
        profile_.registers[command.name] = command.value;
    }
    return Outcome::kNext;
}

int Modem::RegisterValue(const std::string& name) const {
    const auto in_units = [](Milliseconds time, Milliseconds unit) {
        return static_cast<int>(std::min<Milliseconds::rep>(time / unit, kLargest));
    };
    if (name == "S7") {
        return in_units(profile_.phone.carrier_wait, kSecond);
    }
    if (name == "S8") {
        return in_units(profile_.dial.comma, kSecond);
    }
    if (name == "S12") {
        return in_units(profile_.escape.guard, kGuardUnit);
    }
    const auto set = profile_.registers.find(name);
    return set == profile_.registers.end() ? 0 : set->second;
}

Modem::Outcome Modem::ShowRegister(const std::string& name) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "\r\n%03d\r\n",
                  RegisterValue(name.substr(0, name.size() - 1)));
    ReplyText(text.data());
    return Outcome::kNext;
}

}  // namespace pagersim
