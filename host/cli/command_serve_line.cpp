// pagerfwd serve-line: what `pagerfwd run` starts for each of its lines; not for the command line.
// Tested by tests/e2e/run_lines_test.cpp.
#include <CLI/CLI.hpp>
#include <memory>

#include "host/cli/program.h"
#include "host/line/serve_line.h"

namespace host {

void AddServeLine(CLI::App& app, Program& program) {
    CLI::App* const command = app.add_subcommand("serve-line", "Serve one line, for pagerfwd run");
    command->group("");  // in no list
    const auto options = std::make_shared<ServeLineOptions>();
    command->add_option("--line", options->line)->required();
    command->add_option("--bell", options->bell);
    command->add_option("--node", options->tenure.node);
    command->add_option("--term", options->tenure.term);
    command->add_option("--deadline", options->deadline);
    command->add_flag("--ask", options->ask);
    command->add_flag("--dial-tone", options->dial_tone);
    command->add_flag("--call", options->call);
    command->callback([options, &program] {
        program.command = [options, &program] {
            options->database = program.database;
            options->library = program.library;
            options->locks = program.locks;
            return static_cast<ExitCode>(ServeLine(*options));
        };
    });
}

}  // namespace host
