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
    session_ = std::make_unique<Session>(wire, *this);
    state_ = State::kCommand;
    command_ = CommandBuffer();
    Record(kProgram, EventKind::kOpens);
}

void Modem::Closed() {
    if (!session_) {
        return;
    }
    session_->phone.HangUp();
    Record(kProgram, EventKind::kCloses);
    session_.reset();
}

void Modem::SettingsChanged(const termios& settings) {
    if (!session_) {
        return;
    }
    Record(kProgram, EventKind::kSets, DescribeLine(settings));
    line_speed_ = SpeedOf(settings);
    if (cfgetospeed(&settings) == B0) {
        Drop();
    }
}

void Modem::Drop() {
    session_->timers.Clear();
    session_->phone.HangUp();
    state_ = State::kCommand;
}

void Modem::Heard(std::string_view bytes) {
    if (!session_) {
        return;
    }
    Record(kProgram, EventKind::kSends, bytes);
    if (VanishesWith(bytes.size()) || !options_.powered) {
        return;
    }
    while (!bytes.empty()) {
        HearIn(state_, bytes);
    }
}

// The state may change with every byte.
void Modem::HearIn(State state, std::string_view& bytes) {
    if (state == State::kData) {
        HearData(std::exchange(bytes, {}));
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

void Modem::HearData(std::string_view bytes) {
    session_->phone.Say(bytes);
    if (escape_.Heard(bytes, session_->wire.Now())) {
        session_->timers.After(profile_.escape.guard, [this] { EscapeIfSilent(); });
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
    Drop();
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
    Record(speaker, EventKind::kSends, bytes);
    session_->to_program.Push(bytes);
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
