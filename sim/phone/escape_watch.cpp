// The escape sequence. Tested by tests/unit/sim/escape_watch_test.cpp.
#include "sim/phone/escape_watch.h"

namespace pagersim {

bool EscapeWatch::Heard(std::string_view bytes, Milliseconds now) {
    for (const char byte : bytes) {
        HeardByte(byte, now);
    }
    return pluses_ == 3 && !spoilt_;
}

void EscapeWatch::HeardByte(char byte, Milliseconds now) {
    const bool after_silence = !last_heard_ || now - *last_heard_ >= rules_.guard;
    last_heard_ = now;
    if (after_silence) {
        pluses_ = 0;
        spoilt_ = false;
    }
    if (byte == '+') {
        ++pluses_;
    } else {
        pluses_ = 0;
        spoilt_ = rules_.guard_before;
    }
}

bool EscapeWatch::Completed(Milliseconds now) const {
    return pluses_ == 3 && !spoilt_ && last_heard_ && now - *last_heard_ >= rules_.guard;
}

}  // namespace pagersim
