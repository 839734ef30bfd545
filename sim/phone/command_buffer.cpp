// Gathering command lines. Tested by tests/unit/sim/dial_string_test.cpp.
#include "sim/phone/command_buffer.h"

namespace pagersim {

std::optional<std::string> CommandBuffer::Heard(char c) {
    return in_line_ ? HeardInLine(c) : HeardBeforeLine(c);
}

std::optional<std::string> CommandBuffer::HeardBeforeLine(char c) {
    const bool was_a = after_a_;
    after_a_ = c == 'A' || c == 'a';
    if (was_a && c == '/') {
        return last_body_;
    }
    in_line_ = was_a && (c == 'T' || c == 't');
    return std::nullopt;
}

std::optional<std::string> CommandBuffer::HeardInLine(char c) {
    constexpr char kBackspace = '\b';
    if (c == '\r') {
        in_line_ = false;
        last_body_ = body_;
        body_.clear();
        return last_body_;
    }
    if (c == kBackspace && !body_.empty()) {
        body_.pop_back();
    } else if (static_cast<unsigned char>(c) >= 0x20) {
        body_ += c;
    }
    return std::nullopt;
}

}  // namespace pagersim
