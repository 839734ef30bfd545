// pagerfwd run: the engine, in the foreground. Tested by tests/e2e/run_test.cpp.
#include <CLI/CLI.hpp>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/cli/program.h"
#include "host/library/library.h"
#include "host/node/node.h"
#include "host/process/database_locks.h"
#include "host/process/fault_log.h"
#include "host/process/room_to_open.h"
#include "host/store/database_name.h"
#include "host/text/age.h"

namespace host {
namespace {

struct RunOptions {
    bool until_done = false;
    std::optional<std::string> discard_older;
    std::string metrics;
    std::string line_database;
    std::string node;
    int lease = 0;  // seconds; 0: as it is usual
};

// A server's, with a password perhaps, which is nobody's to see in the list of processes.
void NameForLines(const std::string& database, const std::string& line_database) {
    const char* const given = std::getenv("PAGERFWD_LINE_DATABASE");
    if (HasPassword(line_database) && (given == nullptr || line_database != given)) {
        throw Failure(kUsage, kPasswordShown);
    }
    setenv("PAGERFWD_DATABASE", (line_database.empty() ? database : line_database).c_str(), 1);
}

// As the node starts this program for its lines, which work in other folders.
std::vector<std::string> LineProgram(const Program& program, const RunOptions& options) {
    const auto absolute = [](const std::string& path) {
        return path.empty() ? path : std::filesystem::absolute(path).string();
    };
    std::vector<std::string> words = {"pagerfwd"};
    if (IsOnServer(program.database)) {
        NameForLines(program.database, options.line_database);
    } else {
        words.insert(words.end(), {"--database", absolute(program.database)});
    }
    for (const auto& [option, path] :
         {std::pair{"--library", program.library}, std::pair{"--locks", program.locks}}) {
        if (!path.empty()) {
            words.insert(words.end(), {option, absolute(path)});
        }
    }
    return words;
}

NodeOptions OptionsFor(const Program& program, const RunOptions& options) {
    NodeOptions node;
    node.database = program.database;
    node.line_program = LineProgram(program, options);
    node.until_done = options.until_done;
    node.metrics = options.metrics;
    node.member = {options.node, std::chrono::seconds(options.lease)};
    if (options.discard_older) {
        node.discard_older = ParseAge(*options.discard_older);
        if (!node.discard_older) {
            throw Failure(
                kUsage, "\"" + *options.discard_older + "\" is no age; write it as 90m, 12h or 3d");
        }
    }
    return node;
}

ExitCode RunNode(const Program& program, const RunOptions& options) {
    RequireLibraryFile(program.library);  // or every line would say so, again and again
    OperatorLog log(std::cerr, std::getenv("JOURNAL_STREAM") != nullptr);
    const FaultLog faults(log);
    StopSignal stop;
    MakeRoomToOpen(program.database);
    try {
        const NodeOptions node_options = OptionsFor(program, options);
        while (Node(node_options, log).Run(stop) == Node::End::kDatabaseReplaced) {
        }
    } catch (const NoSuchNode& wrong) {
        throw Failure(kUsage, wrong.what());
    } catch (const InUse& taken) {
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
        ->add_option("--node", options->node,
                     "Which node of the site this is (without it: the one called as the host is, "
                     "or the only one)")
        ->type_name("NAME");
    command
        ->add_option(
            "--lease", options->lease,
            "On a site of several hosts: how long this one may be out of touch before the "
            "others take its pages over (without it: 5, or 60 where the site has one node)")
        ->type_name("SECONDS")
        // A shorter one would end whenever a server is busy for a moment.
        ->check(CLI::Range(5, 24 * 60 * 60));
    command
        ->add_option("--metrics", options->metrics,
                     "Keep the engine's figures in this file, for a node exporter (name.prom)")
        ->type_name("FILE");
    command
        ->add_option("--line-database", options->line_database,
                     "The same database on a server, as its lines are to name it: by a user with "
                     "fewer rights")
        ->envname("PAGERFWD_LINE_DATABASE")
        ->type_name("NAME");
    command->footer(
        "Takes every alarm that is added to the alarm log, by \"pagerfwd alarm raise\" or by "
        "another\n"
        "program, and pages those to whom the routes of the site file lead. Pages that were "
        "pending\n"
        "when an engine ended are due at once. A page on the line is finished before it ends, "
        "which\n"
        "can take minutes. Each port is served by a process of its own, in a folder beside the\n"
        "database, where every step of every page is written to pageprot.txt.\n\n"
        "Examples:\n"
        "  pagerfwd --database site.db run\n"
        "  pagerfwd --database site.db run --discard-older-than 12h\n");
    command->callback([options, &program] {
        program.command = [options, &program] { return RunNode(program, *options); };
    });
}

}  // namespace host
