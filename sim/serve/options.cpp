// The command line of `pagersim serve`. Tested by tests/unit/sim/serve_test.cpp.
#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>

#include "sim/serve/serve.h"

namespace pagersim {
namespace {

constexpr int kUsageError = 2;

constexpr const char* kDescription =
    "Serves the exchange in real time, on ptys that any program can open as serial lines.\n"
    "\n"
    "Says where each line is, shows the dialogue, and at SIGTERM or SIGINT what was received.\n";

constexpr const char* kExamples =
    "Examples:\n"
    "  Serve, and dial in with a terminal program:\n"
    "    pagersim serve --exchange examples/exchange.toml --links lines\n"
    "    picocom lines/ttyS0\n";

}  // namespace

int ServeMain(int count, const char* const* arguments) {
    ServeOptions options;
    CLI::App app{kDescription, "pagersim serve"};
    app.footer(kExamples);
    app.add_option("--exchange", options.exchange, "The exchange file")
        ->type_name("FILE")
        ->capture_default_str();
    app.add_option("--links", options.links,
                   "Makes links to the lines in this folder, ttyS0 for COM 1; they stay the same\n"
                   "when a device vanishes and comes back, and are gone at the end")
        ->type_name("FOLDER");
    app.add_flag("--quiet", options.quiet, "Shows only where the lines are");
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kUsageError;
    }
    try {
        Serve(options);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "pagersim: " << error.what() << '\n';
        return kUsageError;
    }
}

}  // namespace pagersim
