// pagerfwd watch: the status, live. Tested by tests/unit/host/cli_watch_test.cpp.
#include <CLI/CLI.hpp>
#include <chrono>
#include <iostream>
#include <memory>
#include <optional>

#include "host/cli/numbers.h"
#include "host/cli/program.h"
#include "host/cli/screen.h"
#include "host/cli/status_view.h"
#include "host/process/stop_signal.h"
#include "host/text/times.h"

namespace host {
namespace {

struct WatchOptions {
    int64_t ended = 10;
    bool is_ended_said = false;
    double seconds = 1;
};

// On a terminal as much as its screen holds; fewer that have ended only where that is said.
std::string Look(const Program& program, const WatchOptions& options,
                 const std::optional<ScreenSize>& screen) {
    if (!screen) {
        return AsTables(ReadStatus(program.database, options.ended));
    }
    const auto ended = options.is_ended_said ? options.ended : static_cast<int64_t>(screen->rows);
    return AsTables(Fitting(ReadStatus(program.database, ended), screen->rows));
}

ExitCode Watch(const Program& program, const WatchOptions& options) {
    const std::chrono::milliseconds between{static_cast<int64_t>(options.seconds * 1000)};
    StopSignal stop;
    std::string before;
    do {
        const std::optional<ScreenSize> screen = SizeOfScreen();
        const std::string now = Look(program, options, screen);
        const std::string said = LocalTime(std::time(nullptr)) + "  " + now;
        // Where it can't be put in the place of the one before, only what is new is of interest.
        if (screen) {
            std::cout << OnScreen(said, *screen) << std::flush;
        } else if (now != before) {
            std::cout << said << std::flush;
        }
        before = now;
    } while (std::cout && !stop.WaitFor(between));
    std::cout << (SizeOfScreen() ? "\n" : "");
    return kDone;
}

}  // namespace

void AddWatch(CLI::App& app, Program& program) {
    CLI::App* const command = app.add_subcommand("watch", "Show the status, again and again");
    const auto options = std::make_shared<WatchOptions>();
    CLI::Option* const ended =
        command
            ->add_option("--ended", options->ended,
                         "How many pages that have ended (without it, 10; on a terminal as many as "
                         "fit)")
            ->check(NumberFrom(0));
    command->add_option("--every", options->seconds, "Seconds between two looks")
        ->capture_default_str()
        ->check(NumberFrom(0.1, 3600));
    command->footer(
        "Ends with Ctrl-C. On a terminal it fills the screen and never scrolls; elsewhere it is "
        "written\n"
        "whenever it changes.\n\n"
        "Example:\n"
        "  pagerfwd --database site.db watch\n");
    command->callback([options, ended, &program] {
        options->is_ended_said = ended->count() > 0;
        program.command = [options, &program] { return Watch(program, *options); };
    });
}

}  // namespace host
