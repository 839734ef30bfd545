// What may reach a terminal.
#ifndef PAGERFWD_TESTS_FUZZ_PRINTED_H
#define PAGERFWD_TESTS_FUZZ_PRINTED_H

#include <string_view>

#include "host/text/printable.h"
#include "tests/fuzz/input.h"

namespace fuzz {

// Lines of UTF-8 in which nothing steers a terminal.
inline void ExpectFitForTerminal(std::string_view text) {
    while (!text.empty()) {
        const size_t end = text.find('\n');
        const std::string_view line = text.substr(0, end);
        Expect(host::Printable(line) == line, "nothing printed steers a terminal");
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
}

}  // namespace fuzz

#endif
