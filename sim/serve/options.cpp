// The command line of `pagersim serve`. Tested by tests/unit/sim/serve_test.cpp.
#include <CLI/CLI.hpp>

#include "sim/runner/command_line.h"
#include "sim/serve/serve.h"

namespace pagersim {
namespace {

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
    AddExchangeOption(app, options.exchange);
    app.add_option("--links", options.links,
                   "Makes links to the lines in this folder, ttyS0 for COM 1; they stay the same\n"
                   "when a device vanishes and comes back, and are gone at the end")
        ->type_name("FOLDER");
    app.add_flag("--quiet", options.quiet, "Shows only where the lines are");
    // None of its words is a command's.
    if (const auto status = Parse(app, {arguments + 1, arguments + count})) {
        return *status;
    }
    return Guarded([&] {
        Serve(options);
        return 0;
    });
}

}  // namespace pagersim
