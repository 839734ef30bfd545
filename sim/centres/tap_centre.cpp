// The TAP dialogue, as the centre sees it. Tested by tests/unit/sim/tap_centre_test.cpp.
#include "sim/centres/tap_centre.h"

#include <algorithm>
#include <utility>

#include "sim/record/printable.h"

namespace pagersim {
namespace {

constexpr char kStx = '\x02';
constexpr char kEot = '\x04';
constexpr std::string_view kAck = "\x06\r";
constexpr std::string_view kNak = "\x15\r";
constexpr std::string_view kRs = "\x1e\r";
constexpr std::string_view kEscEot = "\x1b\x04\r";
constexpr std::string_view kGoAhead = "\x1b[p\r";
constexpr std::string_view kLogOn = "\x1bPG1";

constexpr unsigned kTries = 3;
constexpr std::size_t kLongestInput = 4096;  // more without an end is no block

bool AllDigits(const std::string& text) {
    return text.find_first_not_of("0123456789") == std::string::npos;
}

bool Contains(const std::vector<std::string>& known, const std::string& one) {
    return std::find(known.begin(), known.end(), one) != known.end();
}

bool StartsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

}  // namespace

void TapCentre::Heard(std::string_view bytes) {
    for (const char c : bytes) {
        HearByte(c);
    }
}

void TapCentre::HearByte(char c) {
    const bool in_block = state_ == State::kBlock && !heard_.empty();
    if (!options_.strict && !in_block && (c == '\0' || c == '\n')) {
        return;
    }
    switch (state_) {
        case State::kKnock:
            return HearKnock(c);
        case State::kLogOn:
            return HearLogOn(c);
        case State::kBlock:
            return HearBlock(c);
        case State::kEnd:
            return HearEnd(c);
        case State::kOver:
            return;
    }
}

void TapCentre::HearKnock(char c) {
    if (c == '\r' && ++knocks_ >= options_.knocks) {
        AskForId();
    }
}

void TapCentre::AskForId() {
    state_ = State::kLogOn;
    call_->Say("ID=");
}

void TapCentre::HearLogOn(char c) {
    if (c != '\r') {
        heard_ += c;
        return;
    }
    const std::string line = std::exchange(heard_, {});
    if (line.empty()) {
        AskForId();
    } else {
        CheckLogOn(line);
    }
}

void TapCentre::CheckLogOn(const std::string& line) {
    const int fault = LogOnFault(line);
    if (fault == 0) {
        state_ = State::kBlock;
        SayCode(kTapVersion, kAck);
        call_->Say(kGoAhead);
        return;
    }
    call_->Note("not a log-on: " + Printable(line));
    if (++bad_log_ons_ >= kTries) {
        return SayGoodbye(fault);
    }
    SayCode(fault, kNak);
    AskForId();
}

int TapCentre::LogOnFault(const std::string& line) const {
    if (!StartsWith(line, kLogOn)) {
        return kTapBadLogOn;
    }
    return line.substr(kLogOn.size()) == options_.password ? 0 : kTapBadPassword;
}

void TapCentre::HearBlock(char c) {
    if (heard_.empty() && c != kStx) {
        return HearOutsideBlock(c);
    }
    complained_ = false;
    heard_ += c;
    if (IsWholeTapBlock(heard_)) {
        AnswerBlock(std::exchange(heard_, {}));
    } else if (heard_.size() > kLongestInput) {
        heard_.clear();
    }
}

void TapCentre::HearOutsideBlock(char c) {
    if (c == kEot) {
        state_ = State::kEnd;
        ForgetParts();
    } else {
        Complain();
    }
}

void TapCentre::Complain() {
    if (!std::exchange(complained_, true)) {
        SayCode(kTapUnexpected, kNak);
    }
}

void TapCentre::AnswerBlock(const std::string& block) {
    const TapBlock read = ReadTapBlock(block, options_.strict);
    if (!read.fault.empty()) {
        call_->Note(read.fault);
    }
    TapMessage message = message_;
    message.Add(read);
    const int code = Verdict(read, message);
    const TapCode* known = FindTapCode(code);
    switch (known == nullptr ? TapAnswer::kRefuse : known->answer) {
        case TapAnswer::kAccept:
            return Accept(code, message);
        case TapAnswer::kResend:
            return SayCode(code, kNak);
        case TapAnswer::kRefuse:
            message_ = {};
            return SayCode(code, kRs);
        case TapAnswer::kEnd:
            return SayGoodbye(code);
    }
}

void TapCentre::Accept(int code, const TapMessage& message) {
    if (!message.IsWhole()) {
        message_ = message;
        // No page is accepted yet, so that the usual line would be wrong.
        return code == kTapAccepted ? SayBehind({}, kAck) : SayCode(code, kAck);
    }
    message_ = {};
    call_->Deliver({message.Pager(), message.Text()});
    SayCode(code, kAck);
}

// The code for a block. One that is told to accept whatever comes still can't accept a faulty one.
int TapCentre::Verdict(const TapBlock& block, const TapMessage& message) {
    if (block.code == kTapChecksum && ++bad_sums_ >= kTries) {
        return kTapTooManyBadSums;
    }
    if (block.code != 0) {
        return block.code;
    }
    if (message.Size() > kLongestInput) {
        return kTapTooLong;
    }
    if (message.IsWhole() && !message.HasText()) {
        call_->Note("a message needs a pager and a text");
        return kTapFormat;
    }
    if (options_.answer != 0) {
        return options_.answer;
    }
    return message.IsWhole() ? VerdictOnPager(message.Pager()) : kTapAccepted;
}

int TapCentre::VerdictOnPager(const std::string& pager) const {
    if (pager.empty() || (options_.strict && !AllDigits(pager))) {
        return kTapIllegalId;
    }
    const bool known = options_.pagers.empty() || Contains(options_.pagers, pager);
    return known ? kTapAccepted : kTapInvalidId;
}

void TapCentre::Ended() {
    state_ = State::kOver;
    ForgetParts();
}

void TapCentre::ForgetParts() {
    if (!std::exchange(message_, {}).IsEmpty()) {
        call_->Note("the message's last block never came, nothing delivered");
    }
}

void TapCentre::HearEnd(char c) {
    if (c == '\r') {
        SayGoodbye(kTapGoodbye);
    }
}

void TapCentre::SayCode(int code, std::string_view control) {
    SayBehind(TextLine(code), control);
}

void TapCentre::SayBehind(std::string line, std::string_view control) {
    if (line.empty() && !options_.bare_ack) {
        line = "\r";
    }
    call_->Say(line.append(control));
}

// Refusals always say why; what every centre says when all is well only where lines are wanted.
std::string TapCentre::TextLine(int code) const {
    const bool usual = code == kTapVersion || code == kTapAccepted || code == kTapGoodbye;
    if (usual && !options_.text_lines) {
        return {};
    }
    const TapCode* known = FindTapCode(code);
    return std::to_string(code) + " " + (known == nullptr ? "" : known->words) + "\r";
}

void TapCentre::SayGoodbye(int code) {
    state_ = State::kOver;
    if (!options_.ends) {
        call_->Note("never ends the call");
        return;
    }
    SayCode(code, kEscEot);
    call_->At(kHangUpAfter, [this] { call_->HangUp(); });
}

}  // namespace pagersim
