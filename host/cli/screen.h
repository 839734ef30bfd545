// The terminal that something is shown on again and again.
#ifndef PAGERFWD_HOST_CLI_SCREEN_H
#define PAGERFWD_HOST_CLI_SCREEN_H

#include <cstddef>
#include <optional>
#include <string>

namespace host {

struct ScreenSize {
    size_t rows;
    size_t columns;
};

// Of the terminal that is standard output, at this moment. None: it is none.
std::optional<ScreenSize> SizeOfScreen();

// What shows the lines of a text from the first row on in the place of what was there, each cut to
// the width, and no row more than there is: nothing ever scrolls.
std::string OnScreen(const std::string& text, ScreenSize size);

}  // namespace host

#endif
