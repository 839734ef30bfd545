// Common parts of the commands. Tested by tests/unit/host/cli_test.cpp.
#include "host/cli/program.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace host {
namespace {

struct Meaning {
    ExitCode code;
    const char* text;
};
constexpr Meaning kMeanings[] = {
    {kDone, "done: the page was sent, the hour is allowed, the file has no mistakes"},
    {kNo, "the answer is no: the hour is barred, the file has mistakes"},
    {kUsage, "the command line is wrong, or names a pager or hours that don't exist"},
    {kCannot, "the database, the library or a file can't be used"},
    {kNoLine, "test: no line, since the port is unknown, taken, or refused to open"},
    {kDialFailed, "test: dialling failed"},
    {kTransferFailed, "test: the paging centre didn't take the page"},
    {kNoModem, "test: the modem didn't answer"},
};

constexpr const char* kTraceFile = "pageprot.txt";
constexpr const char* kTraceSwitch = "NX_PAGEPROT";

}  // namespace

std::string ExitCodeHelp() {
    std::string help = "Exit codes:\n";
    for (const Meaning& meaning : kMeanings) {
        help += "  " + std::to_string(meaning.code) + "  " + meaning.text + "\n";
    }
    return help;
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    // A folder opens, and fails only when it is read.
    if (!file || (file.peek() != std::ifstream::traits_type::eof() && !(text << file.rdbuf())) ||
        file.bad()) {
        throw Failure(kCannot, path + ": can't be read: " + std::strerror(errno));
    }
    return text.str();
}

void StartTrace(const Program& program) {
    if (!program.trace) {
        return;
    }
    if (!std::ofstream(kTraceFile, std::ios::app)) {
        throw Failure(kCannot,
                      std::string(kTraceFile) +
                          ": the trace can't be written in this folder: " + std::strerror(errno));
    }
    setenv(kTraceSwitch, "1", 1);
}

}  // namespace host
