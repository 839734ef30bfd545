// The plain paging service. Tested by tests/unit/sim/plain_service_test.cpp.
#include "sim/centres/plain_service.h"

#include <array>

namespace pagersim {
namespace {

// German and English, as one letter or both.
bool IsYes(const std::string& line) {
    constexpr std::array<std::string_view, 7> kYes = {"j", "J", "y", "Y", "jy", "JY", "yes"};
    for (const auto yes : kYes) {
        if (line == yes) {
            return true;
        }
    }
    return false;
}

}  // namespace

void PlainService::Answered(Call& call) {
    call_ = &call;
    step_ = options_.question ? Step::kGoOn : Step::kNumber;
    const std::string opening =
        options_.greeting + (options_.question ? options_.question_text : "");
    if (!opening.empty()) {
        call_->Say(opening);
    }
}

void PlainService::Heard(std::string_view bytes) {
    if (options_.echo) {
        call_->Say(bytes);
    }
    for (const char c : bytes) {
        if (c == '\r') {
            HearLine(std::exchange(line_, {}));
        } else if (c != '\n' && c != '\0') {
            line_ += c;
        }
    }
}

void PlainService::HearLine(const std::string& line) {
    switch (step_) {
        case Step::kGoOn:
            if (!IsYes(line)) {
                return Finish();
            }
            step_ = Step::kNumber;
            return call_->Say(options_.prompt);
        case Step::kNumber:
            page_.recipient = line;
            step_ = Step::kMessage;
            return call_->Say(options_.prompt);
        case Step::kMessage:
            if (IsYes(line)) {
                return Confirm(line);
            }
            page_.text = line;
            step_ = Step::kConfirmation;
            return call_->Say(options_.confirmation);
        case Step::kConfirmation:
            return Confirm(line);
        case Step::kOver:
            return;
    }
}

void PlainService::Confirm(const std::string& answer) {
    if (IsYes(answer)) {
        call_->Deliver(page_);
    } else {
        call_->Note("not confirmed");
    }
    Finish();
}

void PlainService::Finish() {
    step_ = Step::kOver;
    if (options_.hangs_up) {
        call_->At(kHangUpAfter, [this] { call_->HangUp(); });
    }
}

}  // namespace pagersim
