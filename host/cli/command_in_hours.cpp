// pagerfwd in-hours: may a page leave now? Tested by tests/unit/host/cli_test.cpp.
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>

#include "host/cli/names.h"
#include "host/cli/program.h"
#include "host/library/library.h"
#include "host/site/site_tables.h"
#include "host/store/pool.h"
#include "host/store/tables/time_models.h"
#include "host/text/json.h"
#include "host/text/printable.h"

namespace host {
namespace {

constexpr int32_t kAllowed = 0;
constexpr int32_t kBarred = 1;

ExitCode Answer(const std::string& name, bool allowed, bool json) {
    if (json) {
        std::cout << Written({{"hours", name}, {"allowed", allowed}}) << "\n";
    } else {
        std::cout << "hours \"" << Printable(name)
                  << "\": " << (allowed ? "a page may leave now" : "no page leaves in this hour")
                  << "\n";
    }
    return allowed ? kDone : kNo;
}

ExitCode InHours(const Program& program, const std::string& name, bool json) {
    Lease lease(program.database);
    const Encoding encoding = EncodingOf(lease.Database());
    const Library library(program.library);
    switch (library.NXIsInTimeModel(program.database.c_str(), InTables(name, encoding).c_str())) {
        case kAllowed:
            return Answer(name, true, json);
        case kBarred:
            return Answer(name, false, json);
        default:
            throw Failure(kUsage,
                          "there are no hours \"" + name + "\"; " +
                              ListNames("hours", TimeModelNames(lease.Database()), encoding));
    }
}

}  // namespace

void AddInHours(CLI::App& app, Program& program) {
    CLI::App* const command =
        app.add_subcommand("in-hours", "Say whether a page may leave in the current hour");
    const auto name = std::make_shared<std::string>();
    command->add_option("MODEL", *name, "The name of hours in the site file")->required();
    const auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "The answer as JSON");
    command->footer(
        "The local time counts.\n\n"
        "Example:\n"
        "  pagerfwd --database site.db in-hours office && echo page away\n");
    command->callback([name, json, &program] {
        program.command = [name, json, &program] { return InHours(program, *name, *json); };
    });
}

}  // namespace host
