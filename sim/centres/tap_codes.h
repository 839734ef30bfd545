// The three-digit codes of a TAP centre's text lines (TAP 1.8, appendix A).
#ifndef PAGERFWD_SIM_CENTRES_TAP_CODES_H
#define PAGERFWD_SIM_CENTRES_TAP_CODES_H

namespace pagersim {

inline constexpr int kTapVersion = 110;
inline constexpr int kTapGoodbye = 115;
inline constexpr int kTapAccepted = 211;
inline constexpr int kTapUnexpected = 502;
inline constexpr int kTapTooManyBadSums = 503;
inline constexpr int kTapBadLogOn = 507;
inline constexpr int kTapBadPassword = 509;
inline constexpr int kTapIllegalId = 510;
inline constexpr int kTapInvalidId = 511;
inline constexpr int kTapTooLong = 513;
inline constexpr int kTapChecksum = 514;
inline constexpr int kTapFormat = 515;

// How a centre answers a block when it has this to say.
enum class TapAnswer {
    kAccept,  // ACK
    kResend,  // NAK
    kRefuse,  // RS: don't send it again
    kEnd,     // ESC EOT: the call is over
};

struct TapCode {
    int code;
    const char* words;
    TapAnswer answer;
};

// Null for a code that isn't one of TAP's.
const TapCode* FindTapCode(int code);

}  // namespace pagersim

#endif
