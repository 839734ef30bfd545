// Watches for the escape sequence: +++, then silence.
#ifndef PAGERFWD_SIM_PHONE_ESCAPE_WATCH_H
#define PAGERFWD_SIM_PHONE_ESCAPE_WATCH_H

#include <optional>
#include <string_view>

#include "sim/far_end.h"

namespace pagersim {

struct EscapeRules {
    Milliseconds guard{500};    // the silence that must follow; also the longest gap between two +
    bool guard_before = false;  // the same silence is needed before the first +
};

// A sequence is exactly three +. It counts when the guard time passes without another byte: the
// owner asks Completed() then.
class EscapeWatch {
 public:
    explicit EscapeWatch(EscapeRules rules) : rules_(rules) {}

    // The program sent `bytes` at `now`. True: three + stand last, ask again after the guard time.
    bool Heard(std::string_view bytes, Milliseconds now);

    // Has nothing been heard for the guard time, after exactly three +?
    bool Completed(Milliseconds now) const;

 private:
    void HeardByte(char byte, Milliseconds now);

    EscapeRules rules_;
    std::optional<Milliseconds> last_heard_;
    int pluses_ = 0;
    bool spoilt_ = false;  // other bytes stand right before the +
};

}  // namespace pagersim

#endif
