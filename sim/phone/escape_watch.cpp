// The escape sequence. Tested by tests/unit/sim/escape_watch_test.cpp.
#include "sim/phone/escape_watch.h"

namespace pagersim {
namespace {

constexpr Milliseconds kTick{20};  // of the modem's clock

}  // namespace

Milliseconds EscapeWatch::Silence() const {
    return NeedsSilence() ? rules_.guard + kTick : Milliseconds{0};
}

std::string_view EscapeWatch::TakeData(std::string_view& bytes, Milliseconds now) {
    std::size_t count = 0;
    while (count < bytes.size()) {
        HeardByte(bytes[count++], now);
        if (!NeedsSilence() && Due()) {
            break;
        }
    }
    const std::string_view data = bytes.substr(0, count);
    bytes.remove_prefix(count);
    return data;
}

std::optional<Milliseconds> EscapeWatch::Due() const {
    return pluses_ == 3 && !spoilt_ ? std::optional(Silence()) : std::nullopt;
}

void EscapeWatch::HeardByte(char byte, Milliseconds now) {
    const bool after_silence = !last_heard_ || (NeedsSilence() && now - *last_heard_ >= Silence());
    last_heard_ = now;
    if (after_silence) {
        pluses_ = 0;
        spoilt_ = false;
    }
    if (byte == '+') {
        ++pluses_;
    } else {
        pluses_ = 0;
        spoilt_ = rules_.guard_before && NeedsSilence();
    }
}

bool EscapeWatch::Completed(Milliseconds now) const {
    return Due() && now - *last_heard_ >= Silence();
}

}  // namespace pagersim
