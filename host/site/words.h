// The words of the site file, and what stands for them in the tables.
#ifndef PAGERFWD_HOST_SITE_WORDS_H
#define PAGERFWD_HOST_SITE_WORDS_H

#include <cstdint>
#include <string>
#include <string_view>

namespace host {

struct Word {
    const char* word;
    const char* cell;
};

// Only the first letter of these counts for the library, but for "None".
inline constexpr Word kFlows[] = {
    {"none", "None"}, {"hardware", "Hardware"}, {"xon/xoff", "XON/XOFF"}};

// The library would take mark and space too, but the serial line driver refuses them.
inline constexpr Word kParities[] = {{"none", "None"}, {"even", "Even"}, {"odd", "Odd"}};

// The library compares these to the letter; with any other it sends nothing and reports success.
inline constexpr Word kProtocols[] = {{"TAP", "TAP"}, {"UCP", "UCP"}};

inline constexpr Word kPagerTypes[] = {{"signal", "0"}, {"numeric", "1"}, {"alphanumeric", "2"},
                                       {"ntt", "3"},    {"sms1", "4"},    {"sms2", "5"}};

// Severities as alarms have them.
inline constexpr Word kSeverities[] = {
    {"critical", "1"}, {"major", "2"}, {"minor", "3"}, {"informational", "4"}, {"unknown", "5"}};

// The speeds of the serial line driver, in bits a second.
inline constexpr int64_t kSpeeds[] = {300,   1200,  2400,   4800,   9600,  19200,
                                      38400, 57600, 115200, 230400, 460800};

// Null when it is none of the words.
template <size_t count>
const char* CellFor(const Word (&words)[count], std::string_view word) {
    for (const Word& known : words) {
        if (known.word == word) {
            return known.cell;
        }
    }
    return nullptr;
}

// Null when no word stands for the cell.
template <size_t count>
const char* WordFor(const Word (&words)[count], std::string_view cell) {
    for (const Word& known : words) {
        if (known.cell == cell) {
            return known.word;
        }
    }
    return nullptr;
}

// "none", "even" or "odd"
template <size_t count>
std::string ListOf(const Word (&words)[count]) {
    std::string list;
    for (size_t i = 0; i < count; ++i) {
        const char* before = i == 0 ? "" : i + 1 < count ? ", " : " or ";
        list += std::string(before) + "\"" + words[i].word + "\"";
    }
    return list;
}

}  // namespace host

#endif
