// Dialling and the call. Tested by tests/unit/sim/modem_test.cpp.
#include "sim/phone/phone_line.h"

#include <utility>

namespace pagersim {
namespace {

// How long the exchange takes to say so.
constexpr Milliseconds kNoToneAfter{2000};
constexpr Milliseconds kBusyAfter{1500};
constexpr Milliseconds kUnknownAfter{3000};

}  // namespace

PhoneLine::PhoneLine(Wire& wire, std::string line, Exchange& exchange, Recorder& recorder,
                     PhoneUser& user)
    : wire_(wire),
      line_(std::move(line)),
      exchange_(exchange),
      recorder_(recorder),
      user_(user),
      progress_(wire) {}

void PhoneLine::Dial(const DialString& dial, const PhoneOptions& options) {
    options_ = options;
    if (!options_.dial_tone) {
        FailAfter(kNoToneAfter, Answer::kNoDialtone);
        return;
    }
    progress_.After(dial.duration, [this, dial] { TonesAreOut(dial); });
}

bool PhoneLine::HangUp() {
    progress_.Clear();
    call_.reset();
    off_hook_ = false;
    return std::exchange(carrier_, false);
}

void PhoneLine::Say(std::string_view bytes) {
    call_->CallerSays(bytes);
}

void PhoneLine::TonesAreOut(const DialString& dial) {
    if (off_hook_) {
        PassTones(dial.Digits());
    } else {
        Place(dial);
    }
    if (dial.stays_in_command) {
        user_.Dialled();
    } else if (off_hook_) {
        FailAfter(options_.carrier_wait, Answer::kNoCarrier);
    }
}

void PhoneLine::Place(const DialString& dial) {
    off_hook_ = dial.stays_in_command;
    const auto connection = exchange_.Find(dial);
    if (!connection) {
        Note("nobody has the number " + dial.Digits());
    }
    if (connection && dial.stays_in_command) {
        PlaceInBackground(*connection);
    } else if (connection) {
        PlaceAndWait(*connection);
    } else if (!dial.stays_in_command) {
        FailAfter(kUnknownAfter, options_.unknown_number);
    }
}

// Nothing tells the modem what becomes of a call that it doesn't wait for.
void PhoneLine::PlaceInBackground(const Exchange::Connection& connection) {
    Subscriber& subscriber = *connection.subscriber;
    if (Exchange::PlaceCall(subscriber) == Fate::kAnswered) {
        progress_.After(subscriber.answers_after, [this, connection] { StartCall(connection); });
    } else {
        Note(subscriber.name + " can't be reached");
    }
}

void PhoneLine::PlaceAndWait(const Exchange::Connection& connection) {
    Subscriber& subscriber = *connection.subscriber;
    switch (Exchange::PlaceCall(subscriber)) {
        case Fate::kAnswered:
            return subscriber.has_modem ? AwaitCarrier(connection) : AwaitVoice(connection);
        case Fate::kBusy:
            return FailAfter(kBusyAfter, Answer::kBusy);
        case Fate::kNoAnswer:
            return FailAfter(options_.carrier_wait, Answer::kNoAnswer);
        case Fate::kNoCarrier:
            return FailAfter(subscriber.answers_after + options_.training, Answer::kNoCarrier);
    }
}

void PhoneLine::AwaitCarrier(const Exchange::Connection& connection) {
    const Milliseconds wait = connection.subscriber->answers_after + options_.training;
    if (wait > options_.carrier_wait) {
        FailAfter(options_.carrier_wait, Answer::kNoAnswer);
        return;
    }
    progress_.After(wait, [this, connection] {
        carrier_ = true;
        user_.Connected();
        StartCall(connection);
    });
}

void PhoneLine::AwaitVoice(const Exchange::Connection& connection) {
    progress_.After(connection.subscriber->answers_after,
                    [this, connection] { StartCall(connection); });
    FailAfter(options_.carrier_wait, Answer::kNoCarrier);
}

void PhoneLine::StartCall(const Exchange::Connection& connection) {
    const ModemCall::Caller caller{[this](const std::string& centre, std::string_view bytes) {
                                       if (carrier_) {
                                           user_.CentreSays(centre, bytes);
                                       }
                                   },
                                   [this] { LoseCarrier(); }};
    call_ = std::make_unique<ModemCall>(wire_, connection, line_, recorder_, caller);
    call_->Answer();
    if (!connection.tones.empty()) {
        call_->CallerDials(connection.tones);
    }
}

void PhoneLine::PassTones(const std::string& digits) {
    if (call_) {
        call_->CallerDials(digits);
    } else {
        Note("nobody has answered: tones lost: " + digits);
    }
}

void PhoneLine::FailAfter(Milliseconds delay, Answer why) {
    progress_.After(delay, [this, why] {
        HangUp();
        user_.DialFailed(why);
    });
}

void PhoneLine::LoseCarrier() {
    if (HangUp()) {
        user_.CarrierLost();
    }
}

void PhoneLine::Note(const std::string& remark) {
    recorder_.Record({wire_.Now(), line_, kModem, EventKind::kNotes, remark});
}

}  // namespace pagersim
