// TAP's codes. Tested by tests/unit/sim/tap_centre_test.cpp.
#include "sim/centres/tap_codes.h"

#include <array>

namespace pagersim {
namespace {

constexpr std::array<TapCode, 20> kCodes = {{
    {110, "1.8", TapAnswer::kAccept},
    {115, "Thank you for calling", TapAnswer::kEnd},
    {211, "Page accepted", TapAnswer::kAccept},
    {212, "Message truncated, page accepted", TapAnswer::kAccept},
    {213, "Message held, page accepted", TapAnswer::kAccept},
    {501, "Timed out", TapAnswer::kEnd},
    {502, "Unexpected characters", TapAnswer::kResend},
    {503, "Too many checksum errors", TapAnswer::kEnd},
    {504, "Tone-only pager", TapAnswer::kRefuse},
    {505, "Numeric pager", TapAnswer::kRefuse},
    {507, "Bad log-on", TapAnswer::kResend},
    {508, "Bad log-on: type", TapAnswer::kResend},
    {509, "Bad log-on: password", TapAnswer::kResend},
    {510, "Illegal pager id", TapAnswer::kRefuse},
    {511, "Invalid pager id", TapAnswer::kRefuse},
    {512, "Try later", TapAnswer::kRefuse},
    {513, "Message too long", TapAnswer::kRefuse},
    {514, "Checksum error", TapAnswer::kResend},
    {515, "Message format error", TapAnswer::kRefuse},
    {516, "Message quota exceeded", TapAnswer::kRefuse},
}};

}  // namespace

const TapCode* FindTapCode(int code) {
    for (const TapCode& known : kCodes) {
        if (known.code == code) {
            return &known;
        }
    }
    return nullptr;
}

}  // namespace pagersim
