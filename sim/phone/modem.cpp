// The modem between its program and its telephone line. Tested by tests/unit/sim/modem_test.cpp.
#include "sim/phone/modem.h"

#include <algorithm>
#include <utility>

#include "sim/phone/line_settings.h"

namespace pagersim {
namespace {

// What comes behind a dial command's carriage return, a line feed say, isn't meant to give it up.
constexpr Milliseconds kDeafWhileDialling{125};

// Up to and with what may complete a command: nothing before that changes the state.
std::string_view TakeCommand(std::string_view& bytes) {
    const std::string_view taken = bytes.substr(0, bytes.find_first_of("\r/") + 1);
    const std::string_view command = taken.empty() ? bytes : taken;
    bytes.remove_prefix(command.size());
    return command;
}

}  // namespace

Modem::Modem(std::string line, const ModemOptions& options, Exchange& exchange, Recorder& recorder)
    : line_(std::move(line)), options_(options), exchange_(exchange), recorder_(recorder) {}

Modem::Session::Session(Wire& wire_given, Modem& modem)
    : wire(wire_given),
      to_program(wire_given, Pace{modem.options_.answer_piece, modem.options_.piece_gap},
                 [this](std::string_view bytes) { wire.Send(bytes); }),
      timers(wire_given),
      last_answer(-modem.options_.answer_gap),
      phone(wire_given, modem.line_, modem.exchange_, modem.recorder_, modem) {}

void Modem::Opened(Wire& wire) {
    if (!session_) {
        session_ = std::make_unique<Session>(wire, *this);
    }
    open_ = true;
    Record(kProgram, EventKind::kOpens);
}

void Modem::Closed() {
    if (!open_) {
        return;
    }
    open_ = false;
    DropDtr();
    Record(kProgram, EventKind::kCloses);
}

void Modem::SettingsChanged(const termios& settings) {
    if (!open_) {
        return;
    }
    Record(kProgram, EventKind::kSets, DescribeLine(settings));
    line_speed_ = SpeedOf(settings);
    data_bits_ = DataBitsOf(settings);
    if (cfgetospeed(&settings) == B0) {
        DropDtr();
    }
}

void Modem::DropDtr() {
    const DtrDrop effect = profile_.dtr;
    if (effect == DtrDrop::kIgnored) {
        return;
    }
    if (effect == DtrDrop::kEscapes && session_->phone.HasCarrier()) {
        state_ = State::kCommand;
        return;
    }
    GiveUpCall();
    if (effect == DtrDrop::kResets) {
        profile_ = Profile(options_);
    }
}

// Also of what is to be said yet, and of a command that isn't complete.
void Modem::GiveUpCall() {
    session_->timers.Clear();
    session_->to_program.Clear();
    session_->phone.HangUp();
    state_ = State::kCommand;
    command_ = CommandBuffer();
}

std::string Modem::InDataBits(std::string_view bytes) const {
    std::string cut(bytes);
    for (char& c : cut) {
        c = static_cast<char>(static_cast<unsigned char>(c) & ((1U << data_bits_) - 1));
    }
    return cut;
}

void Modem::Heard(std::string_view sent) {
    if (!open_) {
        return;
    }
    const std::string arrives = InDataBits(sent);
    Record(kProgram, EventKind::kSends, arrives);
    if (VanishesWith(arrives.size()) || !options_.powered) {
        return;
    }
    for (std::string_view left = arrives; !left.empty();) {
        HearIn(state_, left);
    }
}

// The state may change with every byte.
void Modem::HearIn(State state, std::string_view& bytes) {
    if (state == State::kData) {
        HearData(bytes);
        return;
    }
    if (state == State::kCommand) {
        HearCommand(TakeCommand(bytes));
        return;
    }
    bytes.remove_prefix(1);
    if (session_->wire.Now() - dialling_since_ >= kDeafWhileDialling) {
        session_->phone.HangUp();
        DialFailed(Answer::kNoCarrier);
    }
}

void Modem::HearCommand(std::string_view typed) {
    if (profile_.echo) {
        ToProgram(kModem, typed);
    }
    for (const char c : typed) {
        if (const auto body = command_.Heard(c)) {
            Run(ParseAtLine(*body, profile_.dial));
        }
    }
}

void Modem::HearData(std::string_view& bytes) {
    const Milliseconds now = session_->wire.Now();
    session_->phone.Say(escape_.TakeData(bytes, now));
    const auto due = escape_.Due();
    if (due && due->count() == 0) {
        EscapeIfSilent();
    } else if (due) {
        session_->timers.After(*due, [this] { EscapeIfSilent(); });
    }
}

void Modem::EscapeIfSilent() {
    if (state_ != State::kData || !escape_.Completed(session_->wire.Now())) {
        return;
    }
    state_ = State::kCommand;
    SayNow(Answer::kOk);
}

bool Modem::VanishesWith(std::size_t count) {
    const bool was_there = bytes_heard_ < options_.vanish_after;
    bytes_heard_ += count;
    if (!was_there || bytes_heard_ < options_.vanish_after) {
        return false;
    }
    Record(kModem, EventKind::kNotes, "the device is gone");
    GiveUpCall();
    session_->wire.Vanish();
    return true;
}

void Modem::Connected() {
    state_ = State::kData;
    escape_ = EscapeWatch(profile_.escape);
    SayNow(Answer::kConnect);
}

void Modem::DialFailed(Answer why) {
    state_ = State::kCommand;
    SayNow(why);
}

void Modem::Dialled() {
    state_ = State::kCommand;
    SayNow(Answer::kOk);
}

void Modem::CentreSays(const std::string& centre, std::string_view bytes) {
    if (state_ == State::kData) {
        ToProgram(centre, bytes);
    }
}

void Modem::CarrierLost() {
    state_ = State::kCommand;
    SayNow(Answer::kNoCarrier);
}

void Modem::Reply(Answer answer) {
    ReplyText(Words(answer));
}

void Modem::ReplyText(const std::string& text) {
    const Milliseconds now = session_->wire.Now();
    Milliseconds& last = session_->last_answer;
    last = std::max(now + options_.answer_delay, last + options_.answer_gap);
    session_->timers.After(last - now, [this, text] { ToProgram(kModem, text); });
}

void Modem::SayNow(Answer answer) {
    ToProgram(kModem, Words(answer));
}

void Modem::ToProgram(const std::string& speaker, std::string_view bytes) {
    if (bytes.empty()) {
        return;
    }
    const std::string arrives = InDataBits(bytes);
    Record(speaker, EventKind::kSends, arrives);
    session_->to_program.Push(arrives);
}

std::string Modem::Words(Answer answer) const {
    if (profile_.quiet) {
        return {};
    }
    return AnswerText(answer, profile_.verbose, options_.connect_speed.value_or(line_speed_));
}

void Modem::Record(const std::string& who, EventKind kind, std::string_view text) {
    recorder_.Record({session_->wire.Now(), line_, who, kind, std::string(text)});
}

}  // namespace pagersim
