// What the commands of a site have to be. Tested by tests/unit/host/site_check_test.cpp.
#include <string>

#include "host/site/rules.h"

namespace host {
namespace {

void CheckCommand(const char* part, const Command& command, Findings& findings) {
    if (command.empty()) {
        return;
    }
    const SaidText& program = command.front();
    if (program.value.empty()) {
        findings.Error(program.line, std::string(part) + ": the command names no program",
                       "Nothing could be run.",
                       "Write the program first, then its arguments, each as a text of its own.");
    } else if (program.value.front() != '/' && program.value.find('/') != std::string::npos) {
        findings.Error(program.line,
                       std::string(part) + ": " + InQuotes(program.value) +
                           " is looked for in the folder where the engine happens to run",
                       "It may not be found, or be another program.",
                       "Write its whole path, or its name alone: it is then looked for in PATH.");
    }
}

}  // namespace

void CheckCommands(const Site& site, Findings& findings) {
    CheckCommand("[notify]", site.notify, findings);
    CheckCommand("[heartbeat]", site.heartbeat, findings);
}

}  // namespace host
