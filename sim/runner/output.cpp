// Tested by tests/unit/sim/pagersim_test.cpp.
#include "sim/runner/output.h"

#include <iostream>

#include "sim/runner/command_line.h"

namespace pagersim {

Output::Output(const std::string& path) : to_screen_(path == "-") {
    if (path.empty() || to_screen_) {
        return;
    }
    file_.reset(std::fopen(path.c_str(), "we"));  // The command doesn't get it.
    if (file_ == nullptr) {
        throw UsageError(path + ": can't be written");
    }
}

void Output::Write(const std::string& text) {
    if (text.empty()) {
        return;
    }
    if (to_screen_) {
        std::cout << text << std::flush;
    } else if (file_ != nullptr) {
        std::fwrite(text.data(), 1, text.size(), file_.get());
        std::fflush(file_.get());
    }
}

}  // namespace pagersim
