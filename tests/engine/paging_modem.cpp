// The simple modem of the engine's tests.
#include "tests/engine/paging_modem.h"

#include <utility>

using namespace std::chrono_literals;
using namespace std::string_literals;
using pagersim::Milliseconds;

namespace {

constexpr Milliseconds kCallSetUp = 4s;
constexpr char kSTX = '\x02';
constexpr char kETX = '\x03';

// What stands between two texts, the first one found from the left.
std::string Between(const std::string& text, char begin, char end) {
    const size_t from = text.find(begin) + 1;
    return text.substr(from, text.find(end, from) - from);
}

}  // namespace

void PagingModem::Plan(std::deque<Answer> next, Answer otherwise) {
    const std::lock_guard guard(lock_);
    plan_ = std::move(next);
    otherwise_ = otherwise;
}

std::vector<PagingModem::Call> PagingModem::Calls() const {
    const std::lock_guard guard(lock_);
    return calls_;
}

std::vector<std::string> PagingModem::Pages() const {
    const std::lock_guard guard(lock_);
    return pages_;
}

PagingModem::Answer PagingModem::CurrentAnswer() const {
    const std::lock_guard guard(lock_);
    return plan_.empty() ? otherwise_ : plan_.front();
}

void PagingModem::EndAnswer() {
    const std::lock_guard guard(lock_);
    if (!plan_.empty()) {
        plan_.pop_front();
    }
}

void PagingModem::Opened(pagersim::Wire& wire) {
    wire_ = &wire;
    state_ = State::kCommand;
    heard_.clear();
    dies_ = is_dead_ = false;
}

void PagingModem::Heard(std::string_view bytes) {
    for (const char byte : bytes) {
        Hear(byte);
    }
}

void PagingModem::Hear(char byte) {
    heard_ += byte;
    if (HeardEndsWith("+++")) {
        state_ = State::kCommand;
        is_dead_ = dies_;
        Say("\r\nOK\r\n");
        return;
    }
    switch (state_) {
        case State::kCommand:
            return HearCommand();
        case State::kPlain:
            return HearPlain();
        case State::kTAP:
            return HearTAP();
        case State::kUCP:
            return HearUCP();
        case State::kSilent:
            return;
    }
}

void PagingModem::HearCommand() {
    if (heard_ == "\n") {
        heard_.clear();
    }
    if (!HeardEndsWith("\r")) {
        return;
    }
    if (heard_.compare(0, 3, "ATD") == 0) {
        return HearDial();
    }
    if (heard_ == "AT&FV1\r" && CurrentAnswer() == Answer::kIgnoresInit) {
        EndAnswer();
        heard_.clear();
        return;
    }
    Say("\r\nOK\r\n");
}

void PagingModem::HearDial() {
    const std::string command = heard_.substr(0, heard_.size() - 1);
    const Answer answer = CurrentAnswer();
    EndAnswer();
    {
        const std::lock_guard guard(lock_);
        calls_.push_back({wire_->Now(), command});
    }
    dies_ = answer == Answer::kDeliversAndDies || answer == Answer::kBusyAndDies;
    if (answer == Answer::kBusy || answer == Answer::kBusyAndDies) {
        return Say("\r\nBUSY\r\n", kCallSetUp);
    }
    if (command.back() == ';') {
        {
            const std::lock_guard guard(lock_);
            pages_.push_back(command);
        }
        return Say("\r\nOK\r\n", kCallSetUp);
    }
    const char service = command.size() > 4 ? command[4] : '1';
    state_ = answer == Answer::kFallsSilent ? State::kSilent
             : service == '2'               ? State::kTAP
             : service == '3'               ? State::kUCP
                                            : State::kPlain;
    number_.clear();
    Say("\r\nCONNECT 2400\r\n", kCallSetUp);
}

// Number, message if there is one, confirmation.
void PagingModem::HearPlain() {
    if (!HeardEndsWith("\r")) {
        return;
    }
    const std::string text = heard_.substr(0, heard_.size() - 1);
    if (number_.empty()) {
        number_ = text;
        return Say("\r\n>");
    }
    if (!HeardEndsWith("jy\r")) {
        return;  // the message; the confirmation follows without a prompt
    }
    std::string message = text.substr(0, text.size() - 2);
    if (!message.empty()) {
        message.pop_back();  // its carriage return
    }
    {
        const std::lock_guard guard(lock_);
        pages_.push_back(number_ + "|" + message);
    }
    state_ = State::kCommand;
    Say("\r\nNO CARRIER\r\n");
}

void PagingModem::HearTAP() {
    if (HeardEndsWith("\r\0"s)) {
        return Say("ID=");
    }
    if (HeardEndsWith("\x1bPG1\r\n")) {
        return Say("\r\n\x1b[p\r");
    }
    if (HeardEndsWith("\x04\r")) {
        return Say("\x1b\x04\r");
    }
    // The block: STX number CR message CR ETX, three characters, CR.
    const bool complete = heard_.size() > 5 && heard_[heard_.size() - 5] == kETX;
    if (!complete) {
        return;
    }
    const std::string block = Between(heard_, kSTX, kETX);
    const size_t end = block.find('\r');
    {
        const std::lock_guard guard(lock_);
        pages_.push_back(block.substr(0, end) + "|" +
                         block.substr(end + 1, block.size() - end - 2));
    }
    Say("\r\x06\r");
}

void PagingModem::HearUCP() {
    if (!HeardEndsWith("\x03")) {
        return;
    }
    {
        const std::lock_guard guard(lock_);
        pages_.push_back(Between(heard_, kSTX, kETX));
    }
    Say("\x02"
        "03/00039/R/51/A//123:080101100000/6C\x03");
}

bool PagingModem::HeardEndsWith(std::string_view end) const {
    return heard_.size() >= end.size() &&
           heard_.compare(heard_.size() - end.size(), end.size(), end) == 0;
}

void PagingModem::Say(std::string_view bytes, Milliseconds after) {
    heard_.clear();
    if (is_dead_) {
        return;
    }
    if (after == 0ms) {
        return wire_->Send(bytes);
    }
    wire_->At(after, [wire = wire_, text = std::string(bytes)] { wire->Send(text); });
}
