// The list of findings and its printed form. Tested by tests/unit/host/site_check_test.cpp.
#include "host/site/findings.h"

#include <algorithm>

#include "host/text/printable.h"

namespace host {
namespace {

std::string Counted(size_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace

void Findings::Add(int line, Finding::Severity severity, std::string what, std::string consequence,
                   std::string remedy) {
    const auto behind =
        std::upper_bound(findings_.begin(), findings_.end(), line,
                         [](int wanted, const Finding& finding) { return wanted < finding.line; });
    findings_.insert(behind, {line, severity, std::move(what), std::move(consequence),
                              std::move(remedy), name_ ? name_(line) : std::string()});
}

std::string Findings::Where(int line) const {
    return name_ ? "in " + name_(line) : "on line " + std::to_string(line);
}

size_t Findings::Count(Finding::Severity severity) const {
    return static_cast<size_t>(
        std::count_if(findings_.begin(), findings_.end(),
                      [severity](const Finding& finding) { return finding.severity == severity; }));
}

std::string Describe(const std::string& file, const Finding& finding) {
    const char* severity = finding.severity == Finding::Severity::kError ? "error" : "warning";
    const std::string place =
        finding.place.empty() ? ":" + std::to_string(finding.line) : ": " + finding.place;
    return Printable(file) + place + ": " + severity + ": " + Printable(finding.what) + "\n    " +
           Printable(finding.consequence) + "\n    " + Printable(finding.remedy) + "\n";
}

std::string Summary(const Findings& findings) {
    return Counted(findings.Count(Finding::Severity::kError), "error") + ", " +
           Counted(findings.Count(Finding::Severity::kWarning), "warning");
}

}  // namespace host
