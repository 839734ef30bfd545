// The command line. Tested by tests/unit/sim/pagersim_test.cpp.
#include "sim/runner/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <iterator>
#include <memory>

namespace pagersim {
namespace {

constexpr int kUsageError = 2;

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
    "Exit status: the program's, if that is not 0; 1 when an expectation is not met; 2 when\n"
    "nothing was run because of a mistake in the command line or the exchange file.\n";

class Help : public CLI::Formatter {
 public:
    std::string make_usage(const CLI::App*, std::string) const override {
        return "Usage: pagersim [OPTIONS] -- COMMAND [ARGUMENTS...]\n"
               "       pagersim serve [OPTIONS]\n"
               "\n"
               "Subcommands:\n"
               "  serve                       The exchange in real time, on ptys that any program\n"
               "                              can open: pagersim serve --help\n";
    }
};

void Describe(CLI::App& app, RunnerOptions& options) {
    app.formatter(std::make_shared<Help>());
    app.footer(kExamples);
    app.add_option("--exchange", options.exchange, "The exchange file")
        ->type_name("FILE")
        ->capture_default_str();
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

}  // namespace

ParsedOptions ParseOptions(int count, const char* const* arguments) {
    const std::vector<std::string> all(arguments + 1, arguments + count);
    const auto separator = std::find(all.begin(), all.end(), "--");
    ParsedOptions parsed;
    RunnerOptions& options = parsed.options;
    if (separator != all.end()) {
        options.command.assign(separator + 1, all.end());
    }

    CLI::App app{kDescription, "pagersim"};
    Describe(app, options);
    // CLI11 takes its arguments last one first.
    std::vector<std::string> own(std::make_reverse_iterator(separator), all.rend());
    try {
        app.parse(own);
    } catch (const CLI::ParseError& error) {
        parsed.exit_status = app.exit(error) == 0 ? 0 : kUsageError;
        return parsed;
    }
    if (options.command.empty()) {
        std::cerr << "pagersim: there is no command to run; write it behind --, for example\n"
                     "  pagersim --exchange exchange.toml -- pagerfwd test duty\n";
        parsed.exit_status = kUsageError;
    }
    return parsed;
}

}  // namespace pagersim
