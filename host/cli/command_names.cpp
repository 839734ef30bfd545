// pagerfwd names: what the completion of shells offers, a line each. No command for people, so the
// help leaves it out. Tested by tests/unit/host/completion_test.sh.
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "host/cli/names.h"
#include "host/cli/program.h"
#include "host/site/site_tables.h"
#include "host/site/words.h"
#include "host/store/look.h"
#include "host/store/tables/alarm_log.h"
#include "host/store/tables/lines.h"
#include "host/store/tables/nodes.h"
#include "host/store/tables/pagers.h"
#include "host/store/tables/time_models.h"

namespace host {
namespace {

constexpr int64_t kMostAlarms = 100;

std::vector<std::string> Numbers(const std::vector<Alarm>& alarms) {
    std::vector<std::string> numbers;
    numbers.reserve(alarms.size());
    for (const Alarm& alarm : alarms) {
        numbers.push_back(alarm.number);
    }
    return numbers;
}

std::vector<std::string> Severities() {
    std::vector<std::string> words;
    for (const Word& severity : kSeverities) {
        words.emplace_back(severity.word);
    }
    return words;
}

std::vector<std::string> NamesIn(Connection& connection, const std::string& kind) {
    if (kind == "pagers") {
        return PagerNames(connection);
    }
    if (kind == "hours") {
        return TimeModelNames(connection);
    }
    if (kind == "lines") {
        return LineNames(connection);
    }
    if (kind == "nodes") {
        std::vector<std::string> names;
        for (const NodeState& node : ReadNodes(connection)) {
            names.push_back(node.node);
        }
        return names;
    }
    if (kind == "open-alarms") {
        return Numbers(OpenAlarms(connection));
    }
    if (kind == "alarms") {
        return Numbers(LastAlarms(connection, kMostAlarms));
    }
    throw Failure(kUsage, "there are no names of \"" + kind + "\"");
}

ExitCode PrintNames(const Program& program, const std::string& kind) {
    if (kind == "severities") {
        for (const std::string& word : Severities()) {
            std::cout << word << "\n";
        }
        return kDone;
    }
    const std::vector<std::string> names = Look(program.database, [&kind](Connection& database) {
        std::vector<std::string> shown;
        for (const std::string& name : NamesIn(database, kind)) {
            shown.push_back(Shown(name, EncodingOf(database)));
        }
        return shown;
    });
    for (const std::string& name : names) {
        std::cout << name << "\n";
    }
    return kDone;
}

}  // namespace

void AddNames(CLI::App& app, Program& program) {
    CLI::App* const command = app.add_subcommand("names", "List names, for completion");
    command->group("");
    const auto kind = std::make_shared<std::string>();
    command->add_option("KIND", *kind, "Of what")->required();
    command->callback([kind, &program] {
        program.command = [kind, &program] { return PrintNames(program, *kind); };
    });
}

}  // namespace host
