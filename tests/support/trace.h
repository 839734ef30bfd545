// The paging trace as a test reads it: the file "pageprot.txt" of the working directory.
#ifndef PAGERFWD_TESTS_SUPPORT_TRACE_H
#define PAGERFWD_TESTS_SUPPORT_TRACE_H

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace test_support {

constexpr const char* kTraceFile = "pageprot.txt";
constexpr const char* kTraceSwitch = "NX_PAGEPROT";

// Tracing is on for handlers that are made while it lives.
class TraceSwitch {
 public:
    TraceSwitch() { setenv(kTraceSwitch, "", 1); }
    ~TraceSwitch() { unsetenv(kTraceSwitch); }
    TraceSwitch(const TraceSwitch&) = delete;
    TraceSwitch& operator=(const TraceSwitch&) = delete;
};

// The whole file; empty when there is none.
inline std::string TraceText() {
    std::ifstream file(kTraceFile, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void ForgetTrace() {
    std::remove(kTraceFile);
}

// " 7: 5: 9" and a tab.
inline bool IsTimeStamp(std::string_view text) {
    constexpr std::string_view kForm = "dd:dd:dd\t";
    if (text.size() < kForm.size()) {
        return false;
    }
    for (size_t i = 0; i < kForm.size(); ++i) {
        const bool is_digit = std::isdigit(static_cast<unsigned char>(text[i])) != 0;
        const bool fits = kForm[i] == 'd' ? is_digit || text[i] == ' ' : text[i] == kForm[i];
        if (!fits) {
            return false;
        }
    }
    return true;
}

// The texts of the trace calls, without time stamp and final line feed. A text may itself hold line
// feeds.
inline std::vector<std::string> TraceEntries() {
    constexpr size_t kStampSize = 9;
    const std::string text = TraceText();
    std::vector<std::string> entries;
    for (size_t begin = 0; begin < text.size();) {
        size_t end = text.find('\n', begin);
        if (end == std::string::npos) {
            end = text.size();
        }
        const std::string line = text.substr(begin, end - begin);
        if (IsTimeStamp(line)) {
            entries.push_back(line.substr(kStampSize));
        } else if (!entries.empty()) {
            entries.back() += "\n" + line;
        } else {
            entries.push_back("(no time stamp) " + line);
        }
        begin = end + 1;
    }
    return entries;
}

}  // namespace test_support

#endif
