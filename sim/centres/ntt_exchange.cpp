// The tone-dialled pager exchange. Tested by tests/unit/sim/ntt_exchange_test.cpp.
#include "sim/centres/ntt_exchange.h"

#include "sim/centres/two_touch.h"

namespace pagersim {
namespace {

constexpr std::string_view kFreeText = "*2*2";
constexpr std::string_view kEnd = "##";

}  // namespace

void NttExchange::Dialled(std::string_view digits) {
    dialled_ += digits;
    for (auto end = dialled_.find(kEnd); end != std::string::npos; end = dialled_.find(kEnd)) {
        Take(dialled_.substr(0, end));
        dialled_.erase(0, end + kEnd.size());
    }
}

void NttExchange::Take(const std::string& message) {
    const bool free_text = message.compare(0, kFreeText.size(), kFreeText) == 0;
    const std::string text = free_text ? DecodeTwoTouch(message.substr(kFreeText.size())) : message;
    call_->Deliver({call_->Number(), text});
}

void NttExchange::Ended() {
    if (!dialled_.empty()) {
        call_->Note("hung up before ##, nothing delivered: " + dialled_);
    }
}

}  // namespace pagersim
