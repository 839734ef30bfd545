// Colours. Tested by tests/unit/host/colours_test.cpp.
#include "host/text/colours.h"

#include <unistd.h>

#include <cstdlib>

namespace host {
namespace {

bool IsSet(const char* variable) {
    const char* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

}  // namespace

Colours Colours::For(int descriptor) {
    const char* const terminal = std::getenv("TERM");
    const bool plain = terminal == nullptr || std::string_view(terminal) == "dumb";
    return Colours(isatty(descriptor) == 1 && !plain && !IsSet("NO_COLOR"));
}

std::string Colours::In(const char* code, std::string_view text) const {
    if (!on_) {
        return std::string(text);
    }
    return "\x1b[" + std::string(code) + "m" + std::string(text) + "\x1b[0m";
}

}  // namespace host
