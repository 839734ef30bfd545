// The UCP centre. Tested by tests/unit/sim/ucp_centre_test.cpp.
#include "sim/centres/ucp_centre.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "sim/centres/gsm_alphabet.h"

namespace pagersim {
namespace {

constexpr char kStx = '\x02';
constexpr char kEtx = '\x03';
constexpr std::string_view kAlphanumeric = "3";  // a message's type
constexpr std::size_t kLongestText = 160;
constexpr std::size_t kLongestRecipient = 16;

// Where an operation keeps its message, counting from 0, and how many fields it has.
struct Layout {
    std::string_view operation;
    std::size_t type, text, all;
};
constexpr std::size_t kRecipient = 0;
constexpr std::array<Layout, 2> kLayouts = {{{"01", 3, 4, 5}, {"51", 18, 20, 33}}};

// The password of operation 60, in hexadecimal.
constexpr std::size_t kSessionPassword = 4;

// Operation 31: the recipient, and what kind of device it is, four digits.
constexpr std::string_view kAlert = "31";
constexpr std::size_t kDevice = 1;
constexpr std::size_t kDeviceDigits = 4;
constexpr const char* kNoneWaiting = "0000";

const Layout* LayoutOf(std::string_view operation) {
    for (const Layout& layout : kLayouts) {
        if (layout.operation == operation) {
            return &layout;
        }
    }
    return nullptr;
}

bool IsNumber(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

std::vector<std::string> Negative(int error) {
    std::array<char, 16> code{};
    std::snprintf(code.data(), code.size(), "%02d", error);
    return {"N", code.data(), ""};
}

// The message text by its type (MT): 2 numeric, as it is; 3 alphanumeric and 4 transparent, in
// hexadecimal. Empty results: an unknown type, no hexadecimal.
struct Text {
    UcpError error = kUcpNone;
    std::string text = {};
};

Text Decoded(const std::string& type, const std::string& field) {
    if (type == "2") {
        return {kUcpNone, field};
    }
    if (type != kAlphanumeric && type != "4") {
        return {kUcpMessageType};
    }
    const auto text = FromHex(field);
    return text ? Text{kUcpNone, *text} : Text{kUcpSyntax};
}

}  // namespace

void UcpCentre::Heard(std::string_view bytes) {
    for (const char c : bytes) {
        HearByte(c);
    }
}

void UcpCentre::HearByte(char c) {
    if (c == kStx) {
        in_frame_ = true;
        heard_.clear();
    } else if (!in_frame_) {
        stray_ = true;
    } else if (c == kEtx) {
        in_frame_ = false;
        HearFrame(heard_);
    } else {
        heard_ += c;
    }
}

void UcpCentre::HearFrame(const std::string& text) {
    const UcpFrame frame = ReadUcpFrame(text);
    if (!frame.fault.empty()) {
        call_->Note(frame.fault);
    }
    if (frame.type != "O") {  // no operation, so there is nobody to answer
        return;
    }
    const bool disturbed = std::exchange(stray_, false) && options_.strict;
    if (disturbed) {
        call_->Note("something stands before the frame");
    }
    const UcpError error = disturbed ? kUcpSyntax : frame.error;
    const Fields fields = error == kUcpNone ? Execute(frame) : Negative(error);
    call_->Say(kStx + UcpResult(frame, fields) + kEtx);
}

UcpCentre::Fields UcpCentre::Execute(const UcpFrame& frame) {
    if (frame.operation == "60") {
        return OpenSession(frame);
    }
    if (frame.operation != kAlert && LayoutOf(frame.operation) == nullptr) {
        return Negative(kUcpNotAllowed);
    }
    if (!options_.password.empty() && !session_) {
        return Negative(kUcpAuthentication);
    }
    return frame.operation == kAlert ? TakeAlert(frame) : TakeMessage(frame);
}

UcpCentre::Fields UcpCentre::OpenSession(const UcpFrame& frame) {
    if (frame.fields.size() <= kSessionPassword) {
        return Negative(kUcpSyntax);
    }
    session_ =
        options_.password.empty() || FromHex(frame.fields[kSessionPassword]) == options_.password;
    return session_ ? Fields{"A", ""} : Negative(kUcpAuthentication);
}

UcpCentre::Fields UcpCentre::TakeAlert(const UcpFrame& frame) const {
    const bool complete = frame.fields.size() == kDevice + 1 && IsNumber(frame.fields[kDevice]) &&
                          frame.fields[kDevice].size() == kDeviceDigits;
    if (!complete) {
        return Negative(kUcpSyntax);
    }
    return IsKnown(frame.fields[kRecipient]) ? Fields{"A", kNoneWaiting} : Negative(kUcpRecipient);
}

UcpCentre::Fields UcpCentre::TakeMessage(const UcpFrame& frame) {
    const Layout& layout = *LayoutOf(frame.operation);
    const std::size_t count = frame.fields.size();
    if (options_.strict ? count != layout.all : count <= layout.text) {
        call_->Note("operation " + frame.operation + " with " + std::to_string(count) + " fields");
        return Negative(kUcpSyntax);
    }
    const std::string& recipient = frame.fields[kRecipient];
    const Text message = Decoded(frame.fields[layout.type], frame.fields[layout.text]);
    const UcpError error =
        message.error == kUcpNone ? Judge(recipient, message.text) : message.error;
    if (error != kUcpNone) {
        return Negative(error);
    }
    if (options_.answer != 0) {
        return Negative(options_.answer);
    }
    const bool shown_in_gsm = options_.gsm && frame.fields[layout.type] == kAlphanumeric;
    call_->Deliver({recipient, shown_in_gsm ? DecodeGsm(message.text) : message.text});
    const std::string receipt = recipient + ":" + TimeStamp();
    return frame.operation == "51" ? Fields{"A", "", receipt} : Fields{"A", receipt};
}

bool UcpCentre::IsKnown(const std::string& recipient) const {
    const auto& pagers = options_.pagers;
    return IsNumber(recipient) && recipient.size() <= kLongestRecipient &&
           (pagers.empty() || std::find(pagers.begin(), pagers.end(), recipient) != pagers.end());
}

UcpError UcpCentre::Judge(const std::string& recipient, const std::string& text) const {
    if (!IsKnown(recipient)) {
        return kUcpRecipient;
    }
    return text.size() > kLongestText ? kUcpTooLong : kUcpNone;
}

// DDMMYYhhmmss.
std::string UcpCentre::TimeStamp() const {
    const std::time_t now =
        options_.start +
        static_cast<std::time_t>(
            std::chrono::duration_cast<std::chrono::seconds>(call_->Now()).count());
    std::tm parts{};
    gmtime_r(&now, &parts);
    std::array<char, 16> text{};
    std::strftime(text.data(), text.size(), "%d%m%y%H%M%S", &parts);
    return text.data();
}

}  // namespace pagersim
