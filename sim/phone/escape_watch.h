// Watches for the escape sequence: silence, +++, silence.
#ifndef PAGERFWD_SIM_PHONE_ESCAPE_WATCH_H
#define PAGERFWD_SIM_PHONE_ESCAPE_WATCH_H

#include <optional>
#include <string_view>

#include "sim/far_end.h"

namespace pagersim {

struct EscapeRules {
    Milliseconds guard{1000};  // the silence (S12); 0: none is needed, the third + is an escape
    bool guard_before = true;  // needed before the first +, too
};

// A sequence is exactly three +. It counts when the silence passes without another byte: the owner
// asks Completed() then.
//
// A modem counts its guard time in whole fiftieths of a second, and the one in which the last byte
// came is no whole one. So a program that waits exactly a second behind +++ is too early.
class EscapeWatch {
 public:
    explicit EscapeWatch(EscapeRules rules) : rules_(rules) {}

    // The program sends `bytes` at `now`: takes off and returns what is data. That is all, unless
    // the sequence needs no silence: then what stands behind it is left.
    std::string_view TakeData(std::string_view& bytes, Milliseconds now);

    // How long to wait until Completed() is to be asked; none while no three + stand last.
    std::optional<Milliseconds> Due() const;

    // Has nothing been heard for the guard time, after exactly three +?
    bool Completed(Milliseconds now) const;

 private:
    void HeardByte(char byte, Milliseconds now);
    bool NeedsSilence() const { return rules_.guard.count() > 0; }
    Milliseconds Silence() const;

    EscapeRules rules_;
    std::optional<Milliseconds> last_heard_;
    int pluses_ = 0;
    bool spoilt_ = false;  // other bytes stand right before the +
};

}  // namespace pagersim

#endif
