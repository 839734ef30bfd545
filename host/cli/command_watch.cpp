// pagerfwd watch: the status, live. Tested by tests/unit/host/cli_status_test.cpp.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <iostream>
#include <memory>

#include "host/cli/program.h"
#include "host/cli/status_view.h"
#include "host/cli/times.h"
#include "host/service/stop_signal.h"

namespace host {
namespace {

struct WatchOptions {
    int64_t ended = 10;
    double seconds = 1;
};

constexpr const char* kClearScreen = "\x1b[H\x1b[2J";

ExitCode Watch(const Program& program, const WatchOptions& options) {
    const std::chrono::milliseconds between{static_cast<int64_t>(options.seconds * 1000)};
    const bool terminal = isatty(STDOUT_FILENO) != 0;
    StopSignal stop;
    std::string before;
    do {
        const std::string now = AsTables(ReadStatus(program.database, options.ended));
        // Where it can't be put in the place of the one before, only what is new is of interest.
        if (now != before || terminal) {
            std::cout << (terminal ? kClearScreen : "") << LocalTime(std::time(nullptr)) << "  "
                      << now << std::flush;
        }
        before = now;
    } while (std::cout && !stop.WaitFor(between));
    return kDone;
}

}  // namespace

void AddWatch(CLI::App& app, Program& program) {
    CLI::App* const command = app.add_subcommand("watch", "Show the status, again and again");
    const auto options = std::make_shared<WatchOptions>();
    command->add_option("--ended", options->ended, "How many pages that have ended")
        ->capture_default_str()
        ->check(CLI::NonNegativeNumber);
    command->add_option("--every", options->seconds, "Seconds between two looks")
        ->capture_default_str()
        ->check(CLI::Range(0.1, 3600.0));
    command->footer(
        "Ends with Ctrl-C. Where the output is no terminal, it is written whenever it changes.\n\n"
        "Example:\n"
        "  pagerfwd --database site.db watch\n");
    command->callback([options, &program] {
        program.command = [options, &program] { return Watch(program, *options); };
    });
}

}  // namespace host
