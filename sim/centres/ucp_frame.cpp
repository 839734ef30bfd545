// UCP frames. Tested by tests/unit/sim/ucp_frame_test.cpp.
#include "sim/centres/ucp_frame.h"

#include <array>
#include <cstdio>

#include "sim/record/printable.h"

namespace pagersim {
namespace {

constexpr std::size_t kTransaction = 0, kLength = 1, kType = 2, kOperation = 3, kFirstField = 4;
constexpr std::size_t kLengthDigits = 5;
constexpr std::size_t kChecksumDigits = 2;

bool AllDigits(std::string_view text) {
    return text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::vector<std::string> SplitAtSlashes(std::string_view text) {
    std::vector<std::string> parts;
    for (std::size_t end = text.find('/'); end != std::string_view::npos; end = text.find('/')) {
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    parts.emplace_back(text);
    return parts;
}

template <typename... Values>
std::string Formatted(const char* format, Values... values) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

std::string UpperHex(std::string_view digits) {
    std::string upper;
    for (const char c : digits) {
        upper += c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    return upper;
}

bool IsHeader(const std::vector<std::string>& parts) {
    return parts.size() > kFirstField && parts[kTransaction].size() == 2 &&
           AllDigits(parts[kTransaction]) && parts[kLength].size() == kLengthDigits &&
           AllDigits(parts[kLength]) && (parts[kType] == "O" || parts[kType] == "R") &&
           parts[kOperation].size() == 2 && AllDigits(parts[kOperation]);
}

int HexValue(char digit) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    const auto value = kDigits.find(UpperHex({&digit, 1}));
    return value == std::string_view::npos ? -1 : static_cast<int>(value);
}

void Fail(UcpFrame& frame, UcpError error, const std::string& fault) {
    frame.error = error;
    frame.fault = fault;
}

}  // namespace

std::string UcpChecksum(std::string_view first_to_last_slash) {
    unsigned sum = 0;
    for (const char c : first_to_last_slash) {
        sum += static_cast<unsigned char>(c);
    }
    return Formatted("%02X", sum & 0xff);
}

UcpFrame ReadUcpFrame(std::string_view text) {
    UcpFrame frame;
    const std::vector<std::string> parts = SplitAtSlashes(text);
    if (!IsHeader(parts)) {
        Fail(frame, kUcpSyntax, "no frame: " + Printable(text));
        return frame;
    }
    frame.transaction = parts[kTransaction];
    frame.type = parts[kType];
    frame.operation = parts[kOperation];
    frame.fields.assign(parts.begin() + kFirstField, parts.end() - 1);

    const std::string& sent = parts.back();
    const std::string right = UcpChecksum(text.substr(0, text.size() - sent.size()));
    if (UpperHex(sent) != right) {
        Fail(frame, kUcpChecksum, "checksum is " + right + ", not " + Printable(sent));
    } else if (std::stoul(parts[kLength]) != text.size()) {
        Fail(frame, kUcpSyntax,
             "length is " + std::to_string(text.size()) + ", not " + parts[kLength]);
    }
    return frame;
}

std::string UcpResult(const UcpFrame& asked, const std::vector<std::string>& fields) {
    std::string body = "/R/" + asked.operation + "/";
    for (const std::string& field : fields) {
        body += field + "/";
    }
    const std::size_t length = 2 + 1 + kLengthDigits + body.size() + kChecksumDigits;
    const std::string frame =
        asked.transaction + "/" + Formatted("%05u", static_cast<unsigned>(length)) + body;
    return frame + UcpChecksum(frame);
}

std::optional<std::string> FromHex(std::string_view digits) {
    if (digits.size() % 2 != 0) {
        return std::nullopt;
    }
    std::string text;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const int high = HexValue(digits[i]);
        const int low = HexValue(digits[i + 1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        text += static_cast<char>(high * 16 + low);
    }
    return text;
}

}  // namespace pagersim
