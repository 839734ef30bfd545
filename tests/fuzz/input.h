// The bytes of a fuzzer, taken as numbers and texts, and what ends a run that broke a rule.
//
// Written so that a corpus can be: a text is a byte that says how long it is, and its bytes.
#ifndef PAGERFWD_TESTS_FUZZ_INPUT_H
#define PAGERFWD_TESTS_FUZZ_INPUT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace fuzz {

constexpr size_t kVeryLong = size_t{64} << 10;

// Ends the run, with the input kept by the fuzzer, unless the rule holds.
inline void Expect(bool holds, const char* rule) {
    if (!holds) {
        std::fprintf(stderr, "\nbroken: %s\n", rule);
        std::abort();
    }
}

inline std::string_view View(const uint8_t* data, size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

class Input {
 public:
    Input(const uint8_t* data, size_t size) : rest_(View(data, size)) {}

    bool AtEnd() const { return rest_.empty(); }

    // 0 at the end.
    uint8_t Byte() {
        if (rest_.empty()) {
            return 0;
        }
        const auto byte = static_cast<uint8_t>(rest_.front());
        rest_.remove_prefix(1);
        return byte;
    }

    // From 0 to `most`, which is 255 or less.
    int Upto(int most) { return Byte() % (most + 1); }
    bool OnceIn(int times) { return Upto(times - 1) == times - 1; }

    // 0xFF in the place of the length: the text behind it again and again, beyond 64 KiB.
    std::string Text() {
        const uint8_t length = Byte();
        if (length < 0xFF) {
            return Take(length);
        }
        const std::string part = Take(Byte());
        std::string text;
        while (!part.empty() && text.size() <= kVeryLong) {
            text += part;
        }
        return text;
    }

    std::string Rest() { return Take(rest_.size()); }

 private:
    std::string Take(size_t length) {
        std::string taken(rest_.substr(0, length));
        rest_.remove_prefix(taken.size());
        return taken;
    }

    std::string_view rest_;
};

// As C sees a text.
inline std::string UpToNul(const std::string& text) {
    return text.c_str();  // NOLINT(readability-redundant-string-cstr)
}

}  // namespace fuzz

#endif
