// A paging centre: the service that answers when the modem has dialled its number.
//
// Threads, Time   As in far_end.h.
#ifndef PAGERFWD_SIM_CENTRE_H
#define PAGERFWD_SIM_CENTRE_H

#include <functional>
#include <string>
#include <string_view>

#include "sim/far_end.h"

namespace pagersim {

// What a byte or digits show as that stand for no character: U+FFFD.
constexpr std::string_view kNoCharacter = "\xef\xbf\xbd";

// How long after its last word a centre hangs up.
constexpr Milliseconds kHangUpAfter{300};

// One page as a centre understood it.
struct ReceivedPage {
    std::string recipient;  // the pager's number, as sent
    std::string text;       // decoded from the protocol's coding, otherwise raw bytes
};

// The call, as the centre sees it. Valid from Answered to Ended.
class Call {
 public:
    virtual ~Call() = default;

    // The number that was dialled to reach this centre: digits only.
    virtual std::string Number() const = 0;

    // Since the simulation began.
    virtual Milliseconds Now() const = 0;

    // Bytes for the caller, sent so much later.
    virtual void Say(std::string_view bytes, Milliseconds after = Milliseconds{0}) = 0;

    // Runs `what` so much later, unless the call has ended by then.
    virtual void At(Milliseconds after, std::function<void()> what) = 0;

    // Drops the carrier, after what was said so far.
    virtual void HangUp() = 0;

    // The centre accepts a page: it is delivered, whatever becomes of the call.
    virtual void Deliver(ReceivedPage page) = 0;

    // A remark for the transcript, such as "checksum is 17;, not 18;".
    virtual void Note(std::string_view remark) = 0;
};

class Centre {
 public:
    virtual ~Centre() = default;

    virtual void Answered(Call& call) = 0;
    virtual void Heard(std::string_view bytes) = 0;     // what the caller's modem sends
    virtual void Dialled(std::string_view digits) = 0;  // tones on the standing call: 0-9 * #
    virtual void Ended() = 0;                           // the caller or the carrier went away
};

}  // namespace pagersim

#endif
