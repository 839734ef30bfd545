// What the command lines share. Tested by tests/unit/sim/pagersim_test.cpp and serve_test.cpp.
#include "sim/runner/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>

namespace pagersim {

void AddExchangeOption(CLI::App& app, std::string& file) {
    app.add_option("--exchange", file, "The exchange file")
        ->type_name("FILE")
        ->capture_default_str();
}

CommandLine Split(int count, const char* const* arguments) {
    const std::vector<std::string> all(arguments + 1, arguments + count);
    const auto separator = std::find(all.begin(), all.end(), "--");
    CommandLine words{{all.begin(), separator}, {}};
    if (separator != all.end()) {
        words.command.assign(separator + 1, all.end());
    }
    return words;
}

std::optional<int> Parse(CLI::App& app, const std::vector<std::string>& options) {
    std::vector<std::string> reversed(options.rbegin(), options.rend());  // as CLI11 takes them
    try {
        app.parse(reversed);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kUsageError;
    }
}

int Guarded(const std::function<int()>& deed) {
    try {
        return deed();
    } catch (const std::exception& error) {
        std::cerr << "pagersim: " << error.what() << '\n';
        return kUsageError;
    }
}

}  // namespace pagersim
