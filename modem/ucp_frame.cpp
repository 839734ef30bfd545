// The UCP frame of a message. Example: "Hi" to 0123 has a body of 53 characters and becomes
//   STX 03/00063/O/51/0123/12345/////////////////3//4869/////////////af ETX
// Tested by tests/unit/modem/ucp_frame_test.cpp.

#include "modem/ucp_frame.h"

#include <cstdint>

namespace {

constexpr char kSTX[] = "\x02";
constexpr char kETX[] = "\x03";

// What the length field counts besides the body: "03/", its own five digits, the checksum.
constexpr int kCountedAroundBody = 10;

// Two digits for each character.
CString HexText(const CString& text) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    const int length = text.GetLength();
    CString hex;
    char* digit = hex.GetBufferSetLength(2 * length);
    for (int i = 0; i < length; ++i) {
        const unsigned code = static_cast<unsigned char>(text[i]) & 0x7FU;
        *digit++ = kDigits[code >> 4U];
        *digit++ = kDigits[code & 0xFU];
    }
    return hex;
}

// Kept: lower-case digits, though the protocol's usual form has upper case; the service must
// receive them so.
CString FrameCheckSum(const CString& frame) {
    uint32_t sum = 0;
    for (int i = 0; i < frame.GetLength(); ++i) {
        sum += static_cast<unsigned char>(frame[i]);
    }
    CString digits;
    digits.Format("%02x", sum & 0xFFU);
    return digits;
}

}  // namespace

CString CreateUCPFrame(const CString& number, const CString& message) {
    // Originator 12345, sixteen empty fields, message type 3 (alphanumeric), no bit count, the
    // message, twelve empty fields.
    const CString body =
        "/O/51/" + number + "/12345/////////////////3//" + HexText(message) + "/////////////";
    CString frame;
    frame.Format("03/%05d", body.GetLength() + kCountedAroundBody);
    frame += body;
    return kSTX + frame + FrameCheckSum(frame) + kETX;
}
