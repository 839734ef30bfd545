// pagerfwd import: a site file into the tables. Tested by tests/unit/host/cli_test.cpp.
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>

#include "host/cli/program.h"
#include "host/cli/site_input.h"
#include "host/site/site_tables.h"
#include "host/store/database_name.h"
#include "host/store/pool.h"
#include "host/text/printable.h"

namespace host {
namespace {

std::string Counted(size_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

ExitCode Import(const Program& program, const std::string& path) {
    const ReadSite read = LoadSite(path);
    PrintFindings(std::cerr, NameOfFile(path), read.findings);
    if (read.findings.HasErrors()) {
        std::cerr << "nothing is imported\n";
        return kNo;
    }
    Lease lease(program.database);
    StoreSite(lease.Database(), read.site);
    std::cout << Printable(ShownName(program.database)) << ": now has "
              << Counted(read.site.ports.size(), "port") << " and "
              << Counted(read.site.pagers.size(), "pager") << "\n";
    return kDone;
}

}  // namespace

void AddImport(CLI::App& app, Program& program) {
    CLI::App* const command = app.add_subcommand(
        "import", "Put the ports, pagers and hours of a site file into the database");
    const auto path = std::make_shared<std::string>();
    command->add_option("FILE", *path, "The site file (TOML); - is standard input")->required();
    command->footer(
        "What the database knew of the site before is replaced, all or nothing. Alarms and "
        "pending\n"
        "pages stay. An engine that runs sees pagers and hours at once, ports at its next "
        "start.\n\n"
        "Example:\n"
        "  pagerfwd --database site.db import site.toml\n");
    command->callback([path, &program] {
        program.command = [path, &program] { return Import(program, *path); };
    });
}

}  // namespace host
