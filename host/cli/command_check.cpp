// pagerfwd check: every mistake in a site file. Tested by tests/unit/host/cli_test.cpp.
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>

#include "host/cli/program.h"
#include "host/cli/site_input.h"
#include "host/text/printable.h"

namespace host {
namespace {

ExitCode Check(const std::string& path) {
    const ReadSite read = LoadSite(path);
    if (read.findings.All().empty()) {
        std::cout << Printable(path) << ": no mistakes\n";
        return kDone;
    }
    PrintFindings(std::cout, path, read.findings);
    return read.findings.HasErrors() ? kNo : kDone;
}

}  // namespace

void AddCheck(CLI::App& app, Program& program) {
    CLI::App* const command =
        app.add_subcommand("check", "Say every mistake in a site file, with its line");
    const auto path = std::make_shared<std::string>();
    command->add_option("FILE", *path, "The site file (TOML)")->required();
    command->footer(
        "Neither a database nor a modem is touched. Errors keep the file from being imported;\n"
        "warnings don't.\n\n"
        "Example:\n"
        "  pagerfwd check site.toml\n");
    command->callback([path, &program] { program.command = [path] { return Check(*path); }; });
}

}  // namespace host
