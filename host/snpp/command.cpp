// Lines of SNPP. Tested by tests/unit/host/snpp_dialogue_test.cpp, tests/fuzz/snpp_line.cpp.
#include "host/snpp/command.h"

#include <algorithm>

namespace host {
namespace {

constexpr std::string_view kBlanks = " \t";
constexpr size_t kLetters = 4;

std::string Trimmed(std::string_view text) {
    const size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
    const size_t end = text.find_last_not_of(kBlanks);
    return begin == text.size() ? "" : std::string(text.substr(begin, end + 1 - begin));
}

char Capital(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

}  // namespace

std::string FirstWordOf(std::string& text) {
    const size_t end = std::min(text.find_first_of(kBlanks), text.size());
    std::string word = text.substr(0, end);
    text = Trimmed(std::string_view(text).substr(end));
    return word;
}

SnppCommand ParseSnppLine(std::string_view line) {
    SnppCommand command;
    command.argument = Trimmed(line);
    command.name = FirstWordOf(command.argument).substr(0, kLetters);
    std::transform(command.name.begin(), command.name.end(), command.name.begin(), Capital);
    return command;
}

}  // namespace host
