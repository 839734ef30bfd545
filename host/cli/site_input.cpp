// Site files of the command line. Tested by tests/unit/host/cli_test.cpp.
#include "host/cli/site_input.h"

#include <ostream>

#include "host/cli/program.h"
#include "host/site/site_check.h"
#include "host/text/printable.h"

namespace host {

std::string NameOfFile(const std::string& path) {
    return path == "-" ? "standard input" : path;
}

ReadSite LoadSite(const std::string& path) {
    ReadSite read = ParseSite(ReadFile(path));
    if (read.is_toml) {
        CheckSite(read.site, read.findings);
    }
    return read;
}

void PrintFindings(std::ostream& out, const std::string& path, const Findings& findings) {
    for (const Finding& finding : findings.All()) {
        out << Describe(path, finding);
    }
    if (!findings.All().empty()) {
        out << Printable(path) << ": " << Summary(findings) << "\n";
    }
}

}  // namespace host
