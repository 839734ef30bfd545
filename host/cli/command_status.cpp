// pagerfwd status: what is pending, and what has become of the rest. Tested by
// tests/unit/host/cli_status_test.cpp and tests/e2e/run_test.cpp.
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "host/cli/numbers.h"
#include "host/cli/program.h"
#include "host/cli/status_view.h"

namespace host {
namespace {

struct StatusOptions {
    bool json = false;
    int64_t ended = 20;
};

ExitCode Status(const Program& program, const StatusOptions& options) {
    const EngineStatus status = ReadStatus(program.database, options.ended);
    std::cout << (options.json ? AsJson(status) : AsTables(status));
    return kDone;
}

}  // namespace

void AddStatus(CLI::App& app, Program& program) {
    CLI::App* const command = app.add_subcommand(
        "status", "Show the lines, the pages that are pending, and the last that have ended");
    const auto options = std::make_shared<StatusOptions>();
    command->add_option("--ended", options->ended, "How many that have ended")
        ->capture_default_str()
        ->check(NumberFrom(0));
    command->add_flag("--json", options->json, "As JSON");
    command->footer(
        "Looking changes nothing. \"Off limit\" are pages that were given up; \"done\" those that "
        "a\n"
        "centre confirmed, or that an SMS pager's hours kept from leaving. When a page is due and\n"
        "when it ended is computed from the changes of the tables, by the rules of the engine.\n\n"
        "Example:\n"
        "  pagerfwd --database site.db status\n");
    command->callback([options, &program] {
        program.command = [options, &program] { return Status(program, *options); };
    });
}

}  // namespace host
