// The command line. Tested by tests/unit/sim/pagersim_test.cpp.
#include "sim/runner/options.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "sim/runner/command_line.h"

namespace pagersim {
namespace {

constexpr const char* kDescription =
    "Runs a program on simulated modems and paging centres, under a virtual clock.\n"
    "\n"
    "The program and its children find serial ports /dev/ttyS0 to /dev/ttyS63 as the exchange\n"
    "file describes them; a real port is never touched. Waiting takes no real time.\n";

constexpr const char* kExamples =
    "Examples:\n"
    "  Send a test page and look on:\n"
    "    pagersim --exchange examples/exchange.toml -- pagerfwd test duty\n"
    "\n"
    "  Prove that exactly this page arrives, at night; the exit status tells:\n"
    "    pagersim --quiet --start \"2001-02-03 04:05:06\" --expect \"sms1:123=HELLO\" \\\n"
    "        -- pagerfwd test duty\n"
    "\n"
    "  Prove that nothing does:\n"
    "    pagersim --expect nothing -- pagerfwd test night\n"
    "\n"
    "  Go on in time where the run before ended, and keep what was said:\n"
    "    pagersim --clock clock.txt --transcript dialogue.txt -- pagerfwd run\n"
    "\n"
    "  Let two commands run at once, on one clock and one exchange:\n"
    "    pagersim --beside \"pagerfwd watch\" -- pagerfwd run --until-done\n"
    "\n"
    "Exit status: the program's, if that is not 0; 1 when an expectation is not met; 2 when\n"
    "nothing was run because of a mistake in the command line or the exchange file.\n";

class Help : public CLI::Formatter {
 public:
    std::string make_usage(const CLI::App*, std::string) const override {
        return "Usage: pagersim [OPTIONS] -- COMMAND [ARGUMENTS...]\n"
               "       pagersim world [OPTIONS] FOLDER\n"
               "       pagersim join FOLDER -- COMMAND [ARGUMENTS...]\n"
               "       pagersim serve [OPTIONS]\n"
               "\n"
               "Subcommands:\n"
               "  world                       A world that stays, for commands that join it:\n"
               "                              pagersim world --help\n"
               "  join                        A command in such a world: pagersim join --help\n"
               "  serve                       The exchange in real time, on ptys that any program\n"
               "                              can open: pagersim serve --help\n";
    }
};

constexpr const char* kWorldDescription =
    "Makes a world that commands join, each from a terminal or a script of its own.\n"
    "\n"
    "They share its clock, its exchange and its transcript. It ends at SIGTERM or SIGINT: then "
    "the\n"
    "commands in it are asked to end, too.\n";

constexpr const char* kWorldExamples =
    "Examples:\n"
    "  A service and one who looks on; time begins when both are there:\n"
    "    pagersim world --exchange examples/exchange.toml --await 2 night &\n"
    "    pagersim join night -- pagerfwd run &\n"
    "    pagersim join night -- pagerfwd watch\n";

constexpr const char* kJoinDescription =
    "Runs a command in a world that \"pagersim world\" has made. Its exit status is the "
    "command's.\n";

class JoinHelp : public CLI::Formatter {
 public:
    std::string make_usage(const CLI::App*, std::string) const override {
        return "Usage: pagersim join FOLDER -- COMMAND [ARGUMENTS...]\n";
    }
};

void DescribeWorld(CLI::App& app, RunnerOptions& options) {
    AddExchangeOption(app, options.exchange);
    app.add_option("--start", options.start,
                   "What the clock shows at first, local time, \"2001-02-03 04:05:06\"\n"
                   "(without it: Monday, 2001-01-08 10:00:00)")
        ->type_name("INSTANT");
    app.add_option("--clock", options.clock,
                   "A file that keeps the time: begins where the run before ended\n"
                   "(and at --start when the file is not there)")
        ->type_name("FILE");
    app.add_option("--step", options.step_ms,
                   "Milliseconds that a look at the clock takes on a quiet line")
        ->capture_default_str()
        ->type_name("MS")
        ->check(CLI::Range(1, 60'000));
    app.add_option("--transcript", options.transcript,
                   "Writes the dialogue to this file; - for standard output, with --quiet too")
        ->type_name("FILE");
    app.add_option("--report,--json", options.report,
                   "Writes calls and pages to this file as JSON; - for standard output")
        ->type_name("FILE");
    app.add_option("--expect", options.expectations,
                   "A page that must arrive, CENTRE:PAGER=TEXT; can be repeated. Exactly these\n"
                   "pages must, and no others. The word nothing: no page at all. Without it,\n"
                   "the [[expect]] tables of the exchange file count")
        ->type_name("PAGE")
        ->allow_extra_args(false)
        ->take_all();
    app.add_flag("--quiet", options.quiet, "Shows no dialogue and no summary");
}

void AddFolder(CLI::App& app, std::string& folder) {
    app.add_option("FOLDER", folder, "The world's name: a folder that it makes, and takes away")
        ->required();
}

// Whether there is a command behind "--".
std::optional<int> CheckCommand(const std::vector<std::string>& command, const char* example) {
    if (!command.empty()) {
        return std::nullopt;
    }
    std::cerr << "pagersim: there is no command to run; write it behind --, for example\n  "
              << example << '\n';
    return kUsageError;
}

}  // namespace

Parsed<RunnerOptions> ParseOptions(int count, const char* const* arguments) {
    const CommandLine line = Split(count, arguments);
    Parsed<RunnerOptions> parsed;
    RunnerOptions& options = parsed.options;
    options.command = line.command;

    CLI::App app{kDescription, "pagersim"};
    app.formatter(std::make_shared<Help>());
    app.footer(kExamples);
    DescribeWorld(app, options);
    app.add_option("--beside", options.beside,
                   "A command that a shell runs beside the program, from the start; can be\n"
                   "repeated. It is asked to end (SIGTERM) when the program has ended")
        ->type_name("COMMAND")
        ->allow_extra_args(false)
        ->take_all();
    parsed.exit_status = Parse(app, line.options);
    if (!parsed.exit_status) {
        parsed.exit_status = CheckCommand(
            options.command, "pagersim --exchange exchange.toml -- pagerfwd test duty");
    }
    return parsed;
}

Parsed<RunnerOptions> ParseWorldOptions(int count, const char* const* arguments) {
    Parsed<RunnerOptions> parsed;
    RunnerOptions& options = parsed.options;
    CLI::App app{kWorldDescription, "pagersim world"};
    app.footer(kWorldExamples);
    DescribeWorld(app, options);
    AddFolder(app, options.folder);
    app.add_option("--await", options.await, "Time begins when so many commands have joined")
        ->capture_default_str()
        ->type_name("COUNT")
        ->check(CLI::Range(1, 1000));
    app.add_flag("--until-left", options.until_left,
                 "Ends when all commands that have joined have ended");
    parsed.exit_status = Parse(app, {arguments + 1, arguments + count});
    return parsed;
}

Parsed<JoinOptions> ParseJoinOptions(int count, const char* const* arguments) {
    const CommandLine line = Split(count, arguments);
    Parsed<JoinOptions> parsed;
    parsed.options.command = line.command;
    CLI::App app{kJoinDescription, "pagersim join"};
    app.formatter(std::make_shared<JoinHelp>());
    AddFolder(app, parsed.options.folder);
    parsed.exit_status = Parse(app, line.options);
    if (!parsed.exit_status) {
        parsed.exit_status =
            CheckCommand(line.command, "pagersim join night -- pagerfwd test duty");
    }
    return parsed;
}

}  // namespace pagersim
