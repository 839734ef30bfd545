// pagerfwd line: lines taken out of service and put back. Tested by
// tests/unit/host/cli_line_test.cpp.
#include <CLI/CLI.hpp>
#include <ctime>
#include <iostream>
#include <memory>
#include <string>

#include "host/cli/line_commands.h"
#include "host/cli/lines_view.h"
#include "host/cli/names.h"
#include "host/cli/program.h"
#include "host/cli/user_name.h"
#include "host/lines/pausing.h"
#include "host/site/site_tables.h"
#include "host/store/look.h"
#include "host/store/pool.h"
#include "host/store/tables/lines.h"
#include "host/text/printable.h"

namespace host {
namespace {

ExitCode Pause(const Program& program, const std::string& name, bool pause) {
    Lease lease(program.database);
    Connection& connection = lease.Database();
    const Encoding encoding = EncodingOf(connection);
    const std::string cell = FindNamedLine(connection, name, encoding).name;
    const std::string shown = "line \"" + Printable(name) + "\": ";
    if (PauseLine(connection, cell, pause, {UserName(), std::time(nullptr)})) {
        std::cout << shown << (pause ? "paused\n" : "in service again\n");
    } else {
        std::cout << shown << (pause ? "was paused before\n" : "was not paused\n");
    }
    return kDone;
}

ExitCode ListLines(const Program& program, bool json) {
    const auto [encoding, lines] = Look(program.database, [](Connection& database) {
        return std::pair(EncodingOf(database), ReadLineStatus(database));
    });
    if (json) {
        std::cout << Written(LinesAsJson(lines, encoding)) << "\n";
    } else {
        std::cout << (lines.empty() ? "no lines\n" : LinesAsTable(lines, encoding));
    }
    return kDone;
}

void AddPausing(CLI::App& line, Program& program, const char* name, const char* help, bool pause,
                const char* footer) {
    CLI::App* const command = line.add_subcommand(name, help);
    const auto port = std::make_shared<std::string>();
    command->add_option("LINE", *port, "The line, by the name of its port")->required();
    command->footer(footer);
    command->callback([port, pause, &program] {
        program.command = [port, pause, &program] { return Pause(program, *port, pause); };
    });
}

void AddLineList(CLI::App& line, Program& program) {
    CLI::App* const command = line.add_subcommand("list", "Show the lines");
    const auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "As JSON");
    command->footer("Example:\n  pagerfwd line list\n");
    command->callback([json, &program] {
        program.command = [json, &program] { return ListLines(program, *json); };
    });
}

}  // namespace

SiteLine FindNamedLine(Connection& connection, const std::string& name, Encoding encoding) {
    std::optional<SiteLine> line = FindSiteLine(connection, InTables(name, encoding));
    if (!line) {
        throw Failure(kUsage, "there is no line \"" + name + "\"; " +
                                  ListNames("lines", LineNames(connection), encoding));
    }
    return *std::move(line);
}

void AddLine(CLI::App& app, Program& program) {
    CLI::App* const command =
        app.add_subcommand("line", "Show lines, try one, take one out of service, put it back");
    command->require_subcommand(1);
    command->fallthrough();
    AddLineList(*command, program);
    AddPausing(*command, program, "pause", "Take a line out of service", true,
               "It finishes the page that is on it. Its other pages go to other lines, but for "
               "those whose\n"
               "pagers are bound to it, which wait. Its device is free then.\n\n"
               "Example:\n"
               "  pagerfwd line pause \"COM 2\"\n");
    AddPausing(*command, program, "resume", "Put a line back into service", false,
               "Example:\n"
               "  pagerfwd line resume \"COM 2\"\n");
    AddLineTest(*command, program);
}

}  // namespace host
