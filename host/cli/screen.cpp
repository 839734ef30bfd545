// A terminal's screen. Tested by tests/unit/host/cli_watch_test.cpp.
#include "host/cli/screen.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <sstream>

#include "host/text/text_table.h"

namespace host {
namespace {

constexpr const char* kHome = "\x1b[H";
constexpr const char* kClearRow = "\x1b[K";
constexpr const char* kClearBelow = "\x1b[J";

// Of a terminal that doesn't tell its own.
constexpr ScreenSize kUsual{24, 80};

}  // namespace

std::optional<ScreenSize> SizeOfScreen() {
    if (isatty(STDOUT_FILENO) == 0) {
        return std::nullopt;
    }
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0) {
        return kUsual;
    }
    return ScreenSize{size.ws_row, size.ws_col};
}

// A row is cleared before it is written: behind its last place the cursor still stands on it.
std::string OnScreen(const std::string& text, ScreenSize size) {
    std::string shown = kHome;
    std::istringstream lines(text);
    std::string line;
    size_t row = 0;
    for (; row < size.rows && std::getline(lines, line); ++row) {
        shown += (row == 0 ? "" : "\n") + std::string(kClearRow);
        shown += CutToPlaces(line, size.columns);
    }
    return row < size.rows ? shown + "\n" + kClearBelow : shown;
}

}  // namespace host
