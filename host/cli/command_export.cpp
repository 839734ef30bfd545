// pagerfwd export: the tables as a site file. Tested by tests/unit/host/cli_export_test.cpp.
#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "host/cli/program.h"
#include "host/cli/site_input.h"
#include "host/files/whole_file.h"
#include "host/site/read_back.h"
#include "host/site/site_check.h"
#include "host/site/site_writer.h"
#include "host/store/database_name.h"
#include "host/store/look.h"
#include "host/text/printable.h"

namespace host {
namespace {

ExitCode Export(const Program& program, const std::string& path, bool force) {
    ReadBack read =
        Look(program.database, [](Connection& database) { return ReadSiteBack(database); });
    const std::string text = WriteSite(read.site);
    if (path.empty()) {
        std::cout << text;
    } else if (!force && std::filesystem::exists(path)) {
        throw Failure(kUsage, path + ": is there already; to replace it, say so: --force");
    } else {
        WriteWhole(path, text, kPrivate);
        std::cout << Printable(path) << ": written\n";
    }
    CheckSite(read.site, read.findings);
    if (read.findings.HasErrors()) {
        PrintFindings(std::cerr, ShownName(program.database), read.findings);
        std::cerr << "the file can't be imported before these are mended in it\n";
        return kNo;
    }
    return kDone;
}

}  // namespace

void AddExport(CLI::App& app, Program& program) {
    CLI::App* const command =
        app.add_subcommand("export", "Write what the database knows of the site as a site file");
    const auto path = std::make_shared<std::string>();
    const auto force = std::make_shared<bool>(false);
    command->add_option("FILE", *path, "Where to; without it, standard output");
    command->add_flag("--force", *force, "Replace a file that is there already");
    command->footer(
        "Importing the file puts the same rows into the tables, and exporting them again gives\n"
        "the same file. Alarms and pending pages are not in it.\n\n"
        "Examples:\n"
        "  pagerfwd --database site.db export site.toml\n"
        "  pagerfwd --database site.db export | diff site.toml -\n");
    command->callback([path, force, &program] {
        program.command = [path, force, &program] { return Export(program, *path, *force); };
    });
}

}  // namespace host
