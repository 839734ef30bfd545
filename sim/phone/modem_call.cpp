// The call. Tested by tests/unit/sim/modem_call_test.cpp.
#include "sim/phone/modem_call.h"

#include <algorithm>
#include <utility>

namespace pagersim {

ModemCall::ModemCall(Wire& wire, const Exchange::Connection& connection, std::string line,
                     Recorder& recorder, Caller caller)
    : wire_(wire),
      line_(std::move(line)),
      name_(connection.subscriber->name),
      number_(connection.number),
      recorder_(recorder),
      caller_(std::move(caller)),
      to_caller_(wire, PaceOfLine(connection.subscriber->speed),
                 [this](std::string_view bytes) { caller_.said(name_, bytes); }),
      to_centre_(wire, PaceOfLine(connection.subscriber->speed),
                 [this](std::string_view bytes) { centre_->Heard(bytes); }),
      response_(connection.subscriber->response),
      centre_(connection.subscriber->make_centre()),
      timers_(wire) {}

ModemCall::~ModemCall() {
    timers_.Clear();
    centre_->Ended();
    Record(EventKind::kEnds, number_);
}

void ModemCall::Answer() {
    Record(EventKind::kDials, number_);
    greeting_ = true;
    centre_->Answered(*this);
    greeting_ = false;
}

void ModemCall::CallerSays(std::string_view bytes) {
    to_centre_.Push(bytes);
}

void ModemCall::CallerDials(std::string_view digits) {
    centre_->Dialled(digits);
}

void ModemCall::Say(std::string_view bytes, Milliseconds after) {
    if (!greeting_) {
        after += response_;
    }
    last_word_ = std::max(last_word_, wire_.Now() + after);
    if (after.count() == 0) {
        to_caller_.Push(bytes);
        return;
    }
    timers_.After(after, [this, text = std::string(bytes)] { to_caller_.Push(text); });
}

void ModemCall::At(Milliseconds after, std::function<void()> what) {
    timers_.After(after, std::move(what));
}

// The end is a timer's business, never the caller's: this may be called by the very centre that
// ends with the call.
void ModemCall::HangUp() {
    const Milliseconds after = std::max(Milliseconds{0}, last_word_ - wire_.Now());
    timers_.After(after, [this] {
        to_caller_.Finally(
            [this] { timers_.After(Milliseconds{0}, [this] { caller_.dropped(); }); });
    });
}

void ModemCall::Deliver(ReceivedPage page) {
    Record(EventKind::kDelivers, std::move(page.text), std::move(page.recipient));
}

void ModemCall::Note(std::string_view remark) {
    Record(EventKind::kNotes, std::string(remark));
}

void ModemCall::Record(EventKind kind, std::string text, std::string recipient) {
    recorder_.Record({wire_.Now(), line_, name_, kind, std::move(text), std::move(recipient)});
}

}  // namespace pagersim
