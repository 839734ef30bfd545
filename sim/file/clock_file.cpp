// The clock file. Tested by tests/unit/sim/exchange_file_test.cpp.
#include "sim/file/clock_file.h"

#include <array>
#include <fstream>

namespace pagersim {
namespace {

constexpr const char* kFormat = "%Y-%m-%d %H:%M:%S";

}  // namespace

std::optional<std::time_t> ParseInstant(const std::string& text) {
    std::tm parts{};
    const char* const end = strptime(text.c_str(), kFormat, &parts);
    if (end == nullptr || *end != '\0') {
        return std::nullopt;
    }
    parts.tm_isdst = -1;
    const std::time_t instant = std::mktime(&parts);
    // A 31st of February is read as a day in March: what comes back must be what was said.
    if (instant == -1 || FormatInstant(instant) != text) {
        return std::nullopt;
    }
    return instant;
}

std::string FormatInstant(std::time_t instant) {
    std::tm parts{};
    localtime_r(&instant, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), kFormat, &parts);
    return text.data();
}

std::optional<std::time_t> ReadClock(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    if (!std::getline(file, line)) {
        return std::nullopt;
    }
    return ParseInstant(line);
}

bool AdvanceClock(const std::string& path, std::time_t instant) {
    if (ReadClock(path).value_or(instant - 1) >= instant) {
        return true;
    }
    std::ofstream file(path, std::ios::trunc);
    file << FormatInstant(instant) << '\n';
    file.flush();
    return file.good();
}

std::time_t NextSecond(std::time_t start, Milliseconds elapsed) {
    return start +
           static_cast<std::time_t>(std::chrono::ceil<std::chrono::seconds>(elapsed).count());
}

}  // namespace pagersim
