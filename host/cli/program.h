// What the commands of `pagerfwd` share.
#ifndef PAGERFWD_HOST_CLI_PROGRAM_H
#define PAGERFWD_HOST_CLI_PROGRAM_H

#include <functional>
#include <stdexcept>
#include <string>

namespace CLI {
class App;
}

namespace host {

inline constexpr const char* kPasswordShown =
    "everybody may see a password that is an argument; put it into PAGERFWD_DATABASE, or a file "
    "for "
    "PGPASSFILE";

// How the program ends. The help and the manual list them from one table.
enum ExitCode : int {
    kDone = 0,
    kNo = 1,
    kUsage = 2,
    kCannot = 3,
    // From 5 on, the library's own results of a page.
    kNoLine = 5,
    kDialFailed = 6,
    kTransferFailed = 7,
    kNoModem = 8,
};

// The table, as text for the help.
std::string ExitCodeHelp();

// Ends the command: its text goes to standard error.
class Failure : public std::runtime_error {
 public:
    Failure(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
    ExitCode Code() const { return code_; }

 private:
    ExitCode code_;
};

struct Program {
    std::string database;
    std::string library;  // empty: searched for
    std::string locks;    // the folder of the locks of serial devices; empty: the usual one
    std::string
        state;  // the folder of what belongs to a database on a server; empty: the usual one
    bool trace = false;

    std::function<ExitCode()> command;  // what the command line asks for
};

// Each adds a command, which puts its own work into program.command.
void AddAlarm(CLI::App& app, Program& program);
void AddCheck(CLI::App& app, Program& program);
void AddCopy(CLI::App& app, Program& program);
void AddExplain(CLI::App& app, Program& program);
void AddExport(CLI::App& app, Program& program);
void AddHours(CLI::App& app, Program& program);
void AddImport(CLI::App& app, Program& program);
void AddInHours(CLI::App& app, Program& program);
void AddInit(CLI::App& app, Program& program);
void AddLine(CLI::App& app, Program& program);
void AddLog(CLI::App& app, Program& program);
void AddNames(CLI::App& app, Program& program);
void AddNode(CLI::App& app, Program& program);
void AddNotify(CLI::App& app, Program& program);
void AddPorts(CLI::App& app, Program& program);
void AddPage(CLI::App& app, Program& program);
void AddRoutes(CLI::App& app, Program& program);
void AddRun(CLI::App& app, Program& program);
void AddServeLine(CLI::App& app, Program& program);
void AddStatus(CLI::App& app, Program& program);
void AddWatch(CLI::App& app, Program& program);
void AddTest(CLI::App& app, Program& program);
void AddTokens(CLI::App& app, Program& program);
void AddTrace(CLI::App& app, Program& program);
void AddWeb(CLI::App& app, Program& program);

// To standard error; text: fit for a terminal.
void Warn(const std::string& text);

inline constexpr const char* kStandardInput = "-";  // in the place of a file's name

// The text of a file, or standard input. Throws Failure.
std::string ReadFile(const std::string& path);

// Lets nobody but owner and group read what is written from now on, by the library too: it holds
// numbers and texts.
void KeepFilesPrivate();

// Turns the library's trace on, in the working directory. Throws Failure where it can't be written:
// the library would stop at the first line of its trace. Does nothing without --trace.
void StartTrace(const Program& program);

}  // namespace host

#endif
