// pagerfwd hours: weeks shown and edited as grids. Tested by tests/unit/host/cli_hours_test.cpp.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "host/cli/names.h"
#include "host/cli/program.h"
#include "host/cli/text_editor.h"
#include "host/site/site_tables.h"
#include "host/site/week_grid.h"
#include "host/store/look.h"
#include "host/store/pool.h"
#include "host/store/tables/time_models.h"
#include "host/text/colours.h"
#include "host/text/json.h"
#include "host/text/printable.h"

namespace host {
namespace {

[[noreturn]] void RefuseName(Connection& connection, const std::string& name, Encoding encoding,
                             const char* remedy) {
    throw Failure(kUsage, "there are no hours \"" + name + "\"; " +
                              ListNames("hours", TimeModelNames(connection), encoding) + remedy);
}

// The allowed hours in colour.
std::string Painted(const std::string& grid) {
    const Colours colours = Colours::For(STDOUT_FILENO);
    if (!colours.On()) {
        return grid;
    }
    std::string painted;
    for (const char c : grid) {
        painted += c == 'x' ? colours.Green("x") : std::string(1, c);
    }
    return painted;
}

Json WeekAsJson(const NamedWeek& named, Encoding encoding) {
    Json week = Json::object();
    for (size_t day = 0; day < kDaysInWeek; ++day) {
        week[std::string(NameOfDay(day))] = WriteHours(DayOf(named.week, day));
    }
    return {{"name", Decode(named.name, encoding)}, {"week", std::move(week)}};
}

bool Has(const std::vector<NamedWeek>& weeks, const std::string& name) {
    return std::any_of(weeks.begin(), weeks.end(),
                       [&name](const NamedWeek& week) { return week.name == name; });
}

ExitCode Show(const Program& program, const std::string& name, bool json) {
    const auto [encoding, weeks] = Look(program.database, [&name](Connection& database) {
        const Encoding of_site = EncodingOf(database);
        std::vector<NamedWeek> found = ReadWeeks(database);
        if (!name.empty() && !Has(found, InTables(name, of_site))) {
            RefuseName(database, name, of_site, "");
        }
        return std::pair(of_site, std::move(found));
    });
    const std::string wanted = InTables(name, encoding);
    Json list = Json::array();
    std::string text;
    for (const NamedWeek& named : weeks) {
        if (name.empty() || named.name == wanted) {
            list.push_back(WeekAsJson(named, encoding));
            text += (text.empty() ? "" : "\n") + std::string("hours \"") +
                    Shown(named.name, encoding) + "\"\n" + Painted(WriteGrid(named.week));
        }
    }
    std::cout << (json ? Written(list) + "\n" : text);
    return kDone;
}

struct EditOptions {
    std::string name;
    std::vector<std::string> set;
    bool create = false;
};

Week WithHoursSet(Week week, const std::vector<std::string>& set) {
    for (const std::string& hours : set) {
        try {
            SetHours(week, hours);
        } catch (const NoHours& reason) {
            throw Failure(kUsage, std::string("--set: ") + reason.what());
        }
    }
    return week;
}

Week EditedByHand(const Week& week, const std::string& name) {
    EditedText text("# Hours \"" + Printable(name) +
                    "\": x where a page may leave, a dot where none does.\n" + WriteGrid(week));
    const std::string edited = text.Edit();
    try {
        return ParseGrid(edited);
    } catch (const NoHours& reason) {
        throw Failure(kUsage, std::string(reason.what()) +
                                  "; nothing is changed, and the text is kept in " + text.Keep());
    }
}

ExitCode Edit(const Program& program, const EditOptions& options) {
    Lease lease(program.database);
    const Encoding encoding = EncodingOf(lease.Database());
    const std::string name = InTables(options.name, encoding);
    if (name.empty()) {
        throw Failure(kUsage, "no hours of this site can have the name \"" + options.name + "\"");
    }
    const std::optional<Week> stored = FindWeek(lease.Database(), name);
    if (!stored && !options.create) {
        RefuseName(lease.Database(), options.name, encoding, "; to add these, say so: --create");
    }
    const Week before = stored.value_or(Week());
    const Week after = options.set.empty() ? EditedByHand(before, options.name)
                                           : WithHoursSet(before, options.set);
    const std::string shown = "hours \"" + Printable(options.name) + "\"";
    if (stored && before == after) {
        std::cout << shown << ": unchanged\n";
        return kDone;
    }
    StoreWeek(lease.Database(), name, after);
    std::cout << shown << "\n" << Painted(WriteGrid(after));
    if (after.none()) {
        std::cerr << "warning: " << shown
                  << " allow no hour: every page counts as sent, and none is ever sent\n";
    }
    return kDone;
}

void AddShow(CLI::App& hours, Program& program) {
    CLI::App* const command = hours.add_subcommand("show", "Show hours as a grid of the week");
    const auto name = std::make_shared<std::string>();
    const auto json = std::make_shared<bool>(false);
    command->add_option("NAME", *name, "Whose; without it, all");
    command->add_flag("--json", *json, "As JSON");
    command->footer(
        "Example:\n"
        "  pagerfwd hours show office\n");
    command->callback([name, json, &program] {
        program.command = [name, json, &program] { return Show(program, *name, *json); };
    });
}

void AddEdit(CLI::App& hours, Program& program) {
    CLI::App* const command =
        hours.add_subcommand("edit", "Change hours, by options or in your editor");
    const auto options = std::make_shared<EditOptions>();
    command->add_option("NAME", options->name, "Whose")->required();
    command->add_option("--set", options->set, "These days get these hours; may be given again")
        ->type_name("\"DAYS HOURS\"")
        ->type_size(1)
        ->allow_extra_args(false);
    command->add_flag("--create", options->create, "Add them where there are none of this name");
    command->footer(
        "Without --set, the week opens as a grid in the editor that VISUAL or EDITOR names: x\n"
        "where a page may leave, a dot where none does. An engine that runs takes the change up\n"
        "with the next page. The site file isn't changed: write it anew with pagerfwd export.\n\n"
        "Examples:\n"
        "  pagerfwd hours edit office\n"
        "  pagerfwd hours edit office --set \"Mon-Fri 08-17\" --set \"Sat,Sun none\"\n"
        "  pagerfwd hours edit night --create --set \"mon-sun 0-6,22-24\"\n");
    command->callback([options, &program] {
        program.command = [options, &program] { return Edit(program, *options); };
    });
}

}  // namespace

void AddHours(CLI::App& app, Program& program) {
    CLI::App* const command =
        app.add_subcommand("hours", "Show and change the hours in which pagers may be paged");
    command->require_subcommand(1);
    command->footer(
        "Examples:\n"
        "  pagerfwd hours show\n"
        "  pagerfwd hours edit office --set \"Mon-Fri 08-17\"\n");
    AddShow(*command, program);
    AddEdit(*command, program);
}

}  // namespace host
