// The frame of the Universal Computer Protocol, taken apart, checked and built (EMI-UCP 4.0).
//
//   03/00063/O/51/0123/12345/ ... /3//4869/ ... /af
//   |  |     | |  fields                         checksum
//   |  |     | operation
//   |  |     O operation, R result
//   |  how many characters all this has
//   transaction
#ifndef PAGERFWD_SIM_CENTRES_UCP_FRAME_H
#define PAGERFWD_SIM_CENTRES_UCP_FRAME_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pagersim {

// Error codes of a negative result.
enum UcpError {
    kUcpNone = 0,
    kUcpChecksum = 1,
    kUcpSyntax = 2,
    kUcpNotAllowed = 4,
    kUcpCallBarred = 5,
    kUcpRecipient = 6,
    kUcpAuthentication = 7,
    kUcpTooLong = 24,
    kUcpMessageType = 26,
};

struct UcpFrame {
    std::string transaction, type, operation;
    std::vector<std::string> fields = {};
    UcpError error = kUcpNone;  // what the frame itself deserves; the rest may then be missing
    std::string fault = {};     // the same in words
};

// The low eight bits of the sum of all characters, two upper-case hexadecimal digits.
std::string UcpChecksum(std::string_view first_to_last_slash);

// `frame` is what stands between STX and ETX. The checksum's letters may be of either case.
UcpFrame ReadUcpFrame(std::string_view frame);

// A result, without STX and ETX: length and checksum are added. Fields: "A", "",
// "0123:090996101010" or "N", "02", "".
std::string UcpResult(const UcpFrame& asked, const std::vector<std::string>& fields);

// Text in hexadecimal, two digits a character, either case; none when it isn't that.
std::optional<std::string> FromHex(std::string_view digits);

}  // namespace pagersim

#endif
