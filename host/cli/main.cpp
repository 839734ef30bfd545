// pagerfwd: an embedded host of libPagerFwd.so. Tested by tests/unit/host/cli_test.cpp.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <sstream>

#include "host/cli/program.h"
#include "host/cli/usage_error.h"
#include "host/store/connection.h"
#include "host/store/database_name.h"
#include "host/store/pool.h"
#include "host/text/printable.h"

namespace host {
namespace {

constexpr const char* kExamples =
    "\nA first page, from nothing:\n"
    "  pagerfwd init                    makes pagerfwd.db\n"
    "  pagerfwd check site.toml         says what is wrong with the site file\n"
    "  pagerfwd import site.toml        puts its ports, pagers and hours into the database\n"
    "  pagerfwd test \"duty phone\"       sends a test page\n"
    "  pagerfwd run                     sends the pages of alarms, from now on\n"
    "  pagerfwd alarm raise \"No water\"  adds an alarm, from another terminal\n"
    "  pagerfwd status                  shows what became of its pages\n"
    "  pagerfwd COMMAND --help          more on a command\n\n";

void AddOptions(CLI::App& app, Program& program) {
    app.add_option("--database", program.database,
                   "The database: a file, or postgresql://HOST/NAME for one "
                   "on a server")
        ->envname("PAGERFWD_DATABASE")
        ->default_val("./pagerfwd.db")
        ->type_name("FILE");
    app.add_option(
           "--library", program.library,
           "libPagerFwd.so, if it is neither beside this program, nor in ../lib, nor where it "
           "is installed")
        ->type_name("FILE");
    app.add_option("--locks", program.locks,
                   "The folder where engines lock the serial devices that they use (without it: "
                   "/run/pagerfwd, or the user's own run-time folder)")
        ->envname("PAGERFWD_LOCKS")
        ->type_name("FOLDER");
    app.add_option("--state", program.state,
                   "The folder where a database on a server has its locks and the folders of its "
                   "lines (without it: /var/lib/pagerfwd)")
        ->envname("PAGERFWD_STATE")
        ->type_name("FOLDER");
    app.add_flag("--trace", program.trace,
                 "Let the library write every step of a page to pageprot.txt, in this folder");
}

void AddCommands(CLI::App& app, Program& program) {
    AddInit(app, program);
    AddCheck(app, program);
    AddExplain(app, program);
    AddExport(app, program);
    AddImport(app, program);
    AddCopy(app, program);
    AddNotify(app, program);
    AddPorts(app, program);
    AddTest(app, program);
    AddInHours(app, program);
    AddHours(app, program);
    AddRun(app, program);
    AddServeLine(app, program);
    AddAlarm(app, program);
    AddLine(app, program);
    AddNode(app, program);
    AddPage(app, program);
    AddStatus(app, program);
    AddWatch(app, program);
    AddLog(app, program);
    AddRoutes(app, program);
    AddWeb(app, program);
    AddTokens(app, program);
    AddTrace(app, program);
    AddNames(app, program);
}

int Complain(const std::exception& reason, ExitCode code) {
    std::cerr << "pagerfwd: " << Printable(reason.what()) << "\n";
    return code;
}

// What the command line's own messages say; they quote its arguments.
void PrintLines(std::ostream& out, const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        out << Printable(line) << "\n";
    }
}

ExitCode EndParsing(const CLI::App& app, const CLI::ParseError& end) {
    if (end.get_exit_code() == 0) {
        std::ostringstream help;
        app.exit(end, help, help);
        PrintLines(std::cout, help.str());
        return kDone;
    }
    PrintLines(std::cerr, "pagerfwd: " + UsageError(app, end));
    return kUsage;
}

int Run(const Program& program) {
    try {
        const ExitCode code = program.command();
        std::cout.flush();
        if (!std::cout) {
            throw Failure(kCannot, "standard output can't be written");
        }
        return code;
    } catch (const Failure& failure) {
        return Complain(failure, failure.Code());
    } catch (const std::exception& failure) {
        return Complain(failure, kCannot);
    }
}

// From the environment it may have one: that is only this user's to read.
bool ShowsPassword(const std::string& database) {
    const char* const given = std::getenv("PAGERFWD_DATABASE");
    return HasPassword(database) && (given == nullptr || database != given);
}

int Main(int argc, char** argv) {
    KeepFilesPrivate();
    Program program;
    CLI::App app("Forwards alarms to pagers over modems: the host of libPagerFwd.so.", "pagerfwd");
    app.set_version_flag("--version", std::string("pagerfwd " PAGERFWD_VERSION " (SQLite") +
                                          (HasPostgres() ? ", PostgreSQL)" : ")"));
    app.footer(kExamples + ExitCodeHelp());
    app.require_subcommand(1);
    app.fallthrough();
    AddOptions(app, program);
    AddCommands(app, program);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return EndParsing(app, error);
    }
    if (ShowsPassword(program.database)) {
        std::cerr << "pagerfwd: " << kPasswordShown << "\n";
        return kUsage;
    }
    if (!program.state.empty()) {
        setenv("PAGERFWD_STATE", std::filesystem::absolute(program.state).c_str(), 1);
    }
    const int code = Run(program);
    CloseDatabases();
    return code;
}

}  // namespace
}  // namespace host

int main(int argc, char** argv) {
    try {
        return host::Main(argc, argv);
    } catch (...) {
        // Not even the command line could be taken apart.
        std::fputs("pagerfwd: out of memory\n", stderr);
        return host::kCannot;
    }
}
