// Numbers in the names of devices and of descriptors.
#ifndef PAGERFWD_SIM_WORLD_NUMBER_H
#define PAGERFWD_SIM_WORLD_NUMBER_H

#include <charconv>
#include <optional>
#include <string_view>

namespace pagersim {

// None: not digits alone, with a zero before others, or too large.
inline std::optional<int> NumberIn(std::string_view text) {
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [read, error] = std::from_chars(text.data(), end, number);
    const bool is_plain = error == std::errc() && read == end && text.front() != '-' &&
                          (text.size() == 1 || text.front() != '0');
    return is_plain ? std::optional(number) : std::nullopt;
}

}  // namespace pagersim

#endif
