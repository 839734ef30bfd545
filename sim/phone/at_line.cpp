// Command lines. Tested by tests/unit/sim/dial_string_test.cpp.
#include "sim/phone/at_line.h"

#include <algorithm>
#include <cctype>

namespace pagersim {
namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsLetter(char c) {
    return c >= 'A' && c <= 'Z';
}

std::string UpperWithoutBlanks(std::string_view text) {
    std::string upper;
    for (const char c : text) {
        if (c != ' ') {
            upper += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
    }
    return upper;
}

// The digits at the head of `text`, taken off. Numbers beyond any command's range stay beyond it.
std::string TakeDigits(std::string_view& text) {
    std::string digits;
    while (!text.empty() && IsDigit(text.front())) {
        digits += text.front();
        text.remove_prefix(1);
    }
    return digits;
}

int ValueOf(const std::string& digits) {
    constexpr std::size_t kMostDigits = 5;
    return digits.empty() ? 0 : std::stoi(digits.substr(0, kMostDigits));
}

// "E", "&F", "\N": a letter with the mark that may stand before it; empty when there is none.
std::string TakeName(std::string_view& text) {
    constexpr std::string_view kMarks = "&\\%*";
    const std::size_t mark = kMarks.find(text.front()) != std::string_view::npos ? 1 : 0;
    if (text.size() <= mark || !IsLetter(text[mark])) {
        return {};
    }
    std::string name(text.substr(0, mark + 1));
    text.remove_prefix(mark + 1);
    return name;
}

// S8=4 and S8?, behind the S.
bool TakeRegister(std::string_view& text, AtCommand& command) {
    command.name = "S" + TakeDigits(text);
    if (text.empty() || (text.front() != '=' && text.front() != '?')) {
        return false;
    }
    if (text.front() == '?') {
        command.name += '?';
    }
    text.remove_prefix(1);
    command.value = ValueOf(TakeDigits(text));
    return true;
}

bool TakeDial(std::string_view& text, AtCommand& command, const DialTimes& times) {
    const auto dial = TakeDialString(text, times);
    if (dial) {
        command.dial = *dial;
    }
    return dial.has_value();
}

bool TakeCommand(std::string_view& text, AtCommand& command, const DialTimes& times) {
    command.name = TakeName(text);
    if (command.name == "D") {
        return TakeDial(text, command, times);
    }
    if (command.name == "S") {
        return TakeRegister(text, command);
    }
    command.value = ValueOf(TakeDigits(text));
    return !command.name.empty();
}

}  // namespace

AtLine ParseAtLine(std::string_view body, const DialTimes& times) {
    const std::string line = UpperWithoutBlanks(body);
    std::string_view rest = line;
    AtLine parsed;
    while (parsed.well_formed && !rest.empty()) {
        AtCommand command;
        parsed.well_formed = TakeCommand(rest, command, times);
        if (parsed.well_formed) {
            parsed.commands.push_back(command);
        }
    }
    return parsed;
}

}  // namespace pagersim
