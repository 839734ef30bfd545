// pagerfwd notify: tries the command that is told what an operator should hear of. Tested by
// tests/unit/host/cli_notify_test.cpp.
#include <poll.h>
#include <CLI/CLI.hpp>

#include <ctime>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/cli/program.h"
#include "host/node/notice.h"
#include "host/process/background_command.h"
#include "host/site/stored_commands.h"
#include "host/store/look.h"
#include "host/text/printable.h"

namespace host {
namespace {

std::string Example(const std::string& database) {
    Notice notice;
    notice.kind = NoticeKind::kLineSick;
    notice.line = "example";
    notice.text = "this is only a try: no line is sick";
    return AsJson(notice, OriginOf(database), std::time(nullptr), 0) + "\n";
}

// Waits for it, as long as the engine lets it run.
std::string RunToItsEnd(const std::vector<std::string>& command, const std::string& input) {
    constexpr int kBetweenLooks = 50;  // ms
    BackgroundCommand running;
    std::string why_not = running.Start(command, input, std::time(nullptr));
    if (!why_not.empty()) {
        return why_not;
    }
    std::optional<std::string> end;
    while (!(end = running.Look(std::time(nullptr)))) {
        poll(nullptr, 0, kBetweenLooks);
    }
    return *end;
}

ExitCode Notify(const Program& program, bool try_it) {
    const std::vector<std::string> command = Look(program.database, [](Connection& database) {
        return ReadCommand(database, kNotifyCommand);
    });
    if (command.empty()) {
        std::cout << "nobody is told: the site file has no [notify] command\n";
        return kNo;
    }
    std::string words;
    for (const std::string& word : command) {
        words += " \"" + Printable(word) + "\"";
    }
    const std::string example = Example(program.database);
    std::cout << "the command:" << words << "\nan example: " << example << std::flush;
    if (!try_it) {
        return kDone;
    }
    const std::string why_not = RunToItsEnd(command, example);
    std::cout << (why_not.empty() ? "told" : "not told: it " + why_not) << "\n";
    return why_not.empty() ? kDone : kNo;
}

}  // namespace

void AddNotify(CLI::App& app, Program& program) {
    CLI::App* const command =
        app.add_subcommand("notify", "Show what the command of [notify] in the site file is told");
    const auto try_it = std::make_shared<bool>(false);
    command->add_flag("--try", *try_it, "Run it with an example, as the engine does");
    command->footer(
        "The command gets each event as JSON, in one line, on its standard input, and is killed\n"
        "after 30 seconds. With --try the exit code is 1 when it fails.\n\n"
        "Example:\n"
        "  pagerfwd notify --try\n");
    command->callback([try_it, &program] {
        program.command = [try_it, &program] { return Notify(program, *try_it); };
    });
}

}  // namespace host
