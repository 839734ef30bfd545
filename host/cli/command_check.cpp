// pagerfwd check: every mistake in a site file, or in a database. Tested by
// tests/unit/host/cli_test.cpp and cli_export_test.cpp.
#include <CLI/CLI.hpp>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/cli/findings_json.h"
#include "host/cli/program.h"
#include "host/cli/site_input.h"
#include "host/site/database_check.h"
#include "host/site/ports_of_pager.h"
#include "host/site/sending_rules.h"
#include "host/store/commit_risks.h"
#include "host/store/database_name.h"
#include "host/store/look.h"
#include "host/text/printable.h"

namespace host {
namespace {

// What a site with dead numbers has to expect: no mistake, and worth knowing.
void PrintCost(const Site& site) {
    if (const Pager* const pager = CostliestPager(site)) {
        const DeadNumber cost = CostOfDeadNumber(site, *pager);
        std::cout << "note: an alarm whose number has gone dead takes up to "
                  << (cost.Seconds() + 59) / 60 << " minutes of the line (pager \""
                  << Printable(pager->description.value) << "\": " << cost.calls
                  << " calls of up to " << cost.seconds_each << " s)\n";
    }
}

// Whose pages no other line takes over; by port, in the order of the pagers.
void PrintOnlyPorts(const Site& site) {
    std::map<std::string, std::string> pagers;
    for (const OnlyPort& only : PagersOfOnePort(site)) {
        std::string& names = pagers[only.port->name.value];
        names += (names.empty() ? "\"" : ", \"") + only.pager->description.value + "\"";
    }
    for (const auto& [port, names] : pagers) {
        std::cout << "note: over port \"" << Printable(port)
                  << "\" only, so that nothing reaches them while its line is out: "
                  << Printable(names) << "\n";
    }
}

Json OnlyPortsAsJson(const Site& site) {
    Json list = Json::array();
    for (const OnlyPort& only : PagersOfOnePort(site)) {
        list.push_back({{"pager", only.pager->description.value}, {"port", only.port->name.value}});
    }
    return list;
}

void PrintRisks(const std::vector<std::string>& risks) {
    for (const std::string& risk : risks) {
        std::cout << "warning: " << risk << "\n";
    }
}

// risks: of the database, where it is one.
ExitCode Report(const std::string& name, const Site& site, const Findings& findings,
                const std::vector<std::string>& risks, bool json) {
    if (json) {
        Json report = FindingsAsJson(name, findings);
        report["one_port_only"] = OnlyPortsAsJson(site);
        report["commit_risks"] = risks;
        std::cout << Written(report) << "\n";
        return findings.HasErrors() ? kNo : kDone;
    }
    if (findings.All().empty()) {
        std::cout << Printable(name) << ": no mistakes\n";
        PrintCost(site);
    } else {
        PrintFindings(std::cout, name, findings);
    }
    PrintRisks(risks);
    if (findings.HasErrors()) {
        return kNo;
    }
    PrintOnlyPorts(site);
    return kDone;
}

ExitCode CheckFile(const std::string& path, bool json) {
    const ReadSite read = LoadSite(path);
    return Report(NameOfFile(path), read.site, read.findings, {}, json);
}

ExitCode CheckTables(const std::string& database, bool json) {
    const ReadBack read = Look(database, CheckDatabase);
    const std::vector<std::string> risks = Look(database, CommitRisks);
    const ExitCode code = Report(ShownName(database), read.site, read.findings, risks, json);
    if (!json && code == kNo) {
        std::cout
            << "To mend them: pagerfwd export site.toml, edit it, pagerfwd import site.toml\n";
    }
    return code;
}

}  // namespace

void AddCheck(CLI::App& app, Program& program) {
    CLI::App* const command = app.add_subcommand(
        "check", "Say every mistake in a site file or, without one, in the database");
    const auto path = std::make_shared<std::string>();
    const auto json = std::make_shared<bool>(false);
    command->add_option("FILE", *path, "The site file (TOML); - is standard input");
    command->add_flag("--json", *json, "The findings as JSON");
    command->footer(
        "Each mistake is said with its line or row, what would come of it, and what to do. Errors\n"
        "keep a file from being imported; warnings don't. No modem is touched; of a database also\n"
        "its tables, and the texts of pages that are pending, are looked at. Notes say what a "
        "dead\n"
        "number costs, and whose pages no other line takes over; warnings, by what the database "
        "may\n"
        "lose pages.\n\n"
        "Examples:\n"
        "  pagerfwd check site.toml\n"
        "  pagerfwd --database site.db check\n"
        "  pagerfwd export | pagerfwd check -\n"
        "  pagerfwd check site.toml --json | jq -r '.findings[].what'\n");
    command->callback([path, json, &program] {
        program.command = [path, json, &program] {
            return path->empty() ? CheckTables(program.database, *json) : CheckFile(*path, *json);
        };
    });
}

}  // namespace host
