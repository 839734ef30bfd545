// Common parts of the commands. Tested by tests/unit/host/cli_test.cpp.
#include "host/cli/program.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "host/files/shared_file.h"
#include "host/line/trace_switch.h"
#include "host/lines/line_folder.h"

namespace host {
namespace {

struct Meaning {
    ExitCode code;
    const char* text;
};
constexpr Meaning kMeanings[] = {
    {kDone, "done: the page was sent, the hour is allowed, the file has no mistakes"},
    {kNo, "the answer is no: the hour is barred, the file has mistakes, nobody would be paged"},
    {kUsage, "the command line is wrong, or names a pager or hours that don't exist"},
    {kCannot, "the database, the library or a file can't be used"},
    {kNoLine, "test: no line, since the port is unknown, taken, or refused to open"},
    {kDialFailed, "test: dialling failed"},
    {kTransferFailed, "test: the paging centre didn't take the page"},
    {kNoModem, "test: the modem didn't answer"},
};

constexpr mode_t kOfOthers = 0007;

}  // namespace

std::string ExitCodeHelp() {
    std::string help = "Exit codes:\n";
    for (const Meaning& meaning : kMeanings) {
        help += "  " + std::to_string(meaning.code) + "  " + meaning.text + "\n";
    }
    return help;
}

std::string ReadFile(const std::string& path) {
    if (path == kStandardInput) {
        return {std::istreambuf_iterator<char>(std::cin), {}};
    }
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    // A folder opens, and fails only when it is read.
    if (!file || (file.peek() != std::ifstream::traits_type::eof() && !(text << file.rdbuf())) ||
        file.bad()) {
        throw Failure(kCannot, path + ": can't be read: " + std::strerror(errno));
    }
    return text.str();
}

void Warn(const std::string& text) {
    std::cerr << "pagerfwd: warning: " << text << "\n";
}

void KeepFilesPrivate() {
    umask(umask(0) | kOfOthers);
}

void StartTrace(const Program& program) {
    if (!program.trace) {
        return;
    }
    try {
        TurnTraceOn();
    } catch (const FileError& error) {
        throw Failure(kCannot, std::string(kTraceFile) + ": " + error.what());
    }
}

}  // namespace host
