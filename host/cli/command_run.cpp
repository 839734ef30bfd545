// pagerfwd run: the engine, in the foreground. Tested by tests/e2e/run_test.cpp.
#include <CLI/CLI.hpp>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "host/cli/program.h"
#include "host/library/library.h"
#include "host/node/service.h"
#include "host/store/faults.h"
#include "host/text/age.h"

namespace host {
namespace {

struct RunOptions {
    bool until_done = false;
    std::optional<std::string> discard_older;
    std::string metrics;
};

ServiceOptions OptionsFor(const Program& program, const RunOptions& options) {
    ServiceOptions service;
    service.database = program.database;
    service.locks = program.locks;
    service.until_done = options.until_done;
    service.metrics = options.metrics;
    if (options.discard_older) {
        service.discard_older = ParseAge(*options.discard_older);
        if (!service.discard_older) {
            throw Failure(
                kUsage, "\"" + *options.discard_older + "\" is no age; write it as 90m, 12h or 3d");
        }
    }
    return service;
}

// A table that can't be written is answered to the library with a number only: its words come here.
class FaultsToLog {
 public:
    explicit FaultsToLog(OperatorLog& log)
        : before_(SetFaultListener([&log](FaultNews news, std::string_view message) {
              news == FaultNews::kFault ? log.Error(message) : log.Info(message);
          })) {}
    ~FaultsToLog() { SetFaultListener(before_); }
    FaultsToLog(const FaultsToLog&) = delete;
    FaultsToLog& operator=(const FaultsToLog&) = delete;

 private:
    const FaultListener before_;
};

ExitCode RunEngine(Program program, const RunOptions& options) {
    OperatorLog log(std::cerr, std::getenv("JOURNAL_STREAM") != nullptr);
    const FaultsToLog faults(log);
    StopSignal stop;
    try {
        const ServiceOptions service_options = OptionsFor(program, options);
        program.trace = true;  // only the trace tells that a port can't be opened
        StartTrace(program);
        const Library library(program.library);
        while (Service(service_options, library, log).Run(stop) ==
               Service::End::kDatabaseReplaced) {
        }
    } catch (const EngineTaken& taken) {
        throw Failure(kNo, taken.what());
    }
    return kDone;
}

}  // namespace

void AddRun(CLI::App& app, Program& program) {
    CLI::App* const command =
        app.add_subcommand("run", "Send the pages of alarms, until SIGTERM or Ctrl-C");
    const auto options = std::make_shared<RunOptions>();
    command->add_flag("--until-done", options->until_done, "End when no page is pending any more");
    command
        ->add_option("--discard-older-than", options->discard_older,
                     "Give up what is still pending of alarms raised longer ago: 90m, 12h, 3d")
        ->type_name("AGE");
    command
        ->add_option("--metrics", options->metrics,
                     "Keep the engine's figures in this file, for a node exporter (name.prom)")
        ->type_name("FILE");
    command->footer(
        "Takes every alarm that is added to the alarm log, by \"pagerfwd alarm raise\" or by "
        "another\n"
        "program, and pages those to whom the routes of the site file lead. Pages that were "
        "pending\n"
        "when an engine ended are due at once. A page on the line is finished before it ends, "
        "which\n"
        "can take minutes. Every step of every page is written to pageprot.txt, in this folder.\n\n"
        "Examples:\n"
        "  pagerfwd --database site.db run\n"
        "  pagerfwd --database site.db run --discard-older-than 12h\n");
    command->callback([options, &program] {
        program.command = [options, &program] { return RunEngine(program, *options); };
    });
}

}  // namespace host
