// pagerfwd alarm: the alarm log. Tested by tests/unit/host/cli_alarm_test.cpp.
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/alarms/mending.h"
#include "host/cli/alarm_commands.h"
#include "host/cli/names.h"
#include "host/cli/numbers.h"
#include "host/cli/program.h"
#include "host/pages/page_words.h"
#include "host/site/site_tables.h"
#include "host/site/words.h"
#include "host/store/look.h"
#include "host/store/tables/alarm_log.h"
#include "host/text/json.h"
#include "host/text/text_table.h"
#include "host/text/times.h"

namespace host {
namespace {

constexpr int64_t kListed = 20;

struct ListOptions {
    bool open = false;
    bool json = false;
    int64_t count = kListed;
};

std::string SeverityWord(const std::string& cell) {
    const char* const word = WordFor(kSeverities, cell);
    return word == nullptr ? cell : word;
}

struct Listed {
    Alarm alarm;
    std::string outcome;
};

void PrintTable(const std::vector<Listed>& alarms, Encoding encoding) {
    TextTable table({"ALARM", "RAISED", "SEVERITY", "GROUP", "SERVER", "STATE", "TEXT"});
    for (const auto& [alarm, outcome] : alarms) {
        table.Add({Shown(alarm.number, encoding), LocalTime(alarm.raised),
                   SeverityWord(alarm.severity), Shown(alarm.group, encoding),
                   Shown(alarm.server, encoding), Shown(outcome, encoding),
                   Shown(alarm.details, encoding)});
    }
    std::cout << (alarms.empty() ? "no alarms\n" : table.Text());
}

Json ToJson(const Listed& listed, Encoding encoding) {
    const Alarm& alarm = listed.alarm;
    return {{"alarm", Decode(alarm.number, encoding)},
            {"raised", LocalTime(alarm.raised)},
            {"severity", SeverityWord(alarm.severity)},
            {"group", Decode(alarm.group, encoding)},
            {"server", Decode(alarm.server, encoding)},
            {"state", Decode(StateOf(alarm), encoding)},
            {"outcome", Decode(listed.outcome, encoding)},
            {"details", Decode(alarm.details, encoding)},
            {"source", alarm.source},
            {"key", alarm.key},
            {"times", alarm.times_raised}};
}

std::vector<Listed> ReadAlarms(Connection& database, const ListOptions& options,
                               Encoding encoding) {
    std::vector<Listed> list;
    for (Alarm& alarm : options.open ? OpenAlarms(database) : LastAlarms(database, options.count)) {
        std::string outcome = OutcomeOf(database, alarm);
        list.push_back({Mended(std::move(alarm), encoding), std::move(outcome)});
    }
    return list;
}

ExitCode List(const Program& program, const ListOptions& options) {
    const auto [encoding, alarms] = Look(program.database, [&options](Connection& database) {
        const Encoding read = EncodingOf(database);
        return std::pair(read, ReadAlarms(database, options, read));
    });
    if (!options.json) {
        PrintTable(alarms, encoding);
        return kDone;
    }
    auto list = Json::array();
    for (const Listed& alarm : alarms) {
        list.push_back(ToJson(alarm, encoding));
    }
    std::cout << Written(list) << "\n";
    return kDone;
}

void AddList(CLI::App& alarm, Program& program) {
    CLI::App* const command = alarm.add_subcommand("list", "Show the last alarms");
    const auto options = std::make_shared<ListOptions>();
    command->add_flag("--open", options->open, "All that are still being paged, and only these");
    command->add_option("--count", options->count, "How many")
        ->capture_default_str()
        ->check(NumberFrom(1));
    command->add_flag("--json", options->json, "As JSON");
    command->footer("Example:\n  pagerfwd alarm list --open\n");
    command->callback([options, &program] {
        program.command = [options, &program] { return List(program, *options); };
    });
}

}  // namespace

void AddAlarm(CLI::App& app, Program& program) {
    CLI::App* const command =
        app.add_subcommand("alarm", "Raise, acknowledge, withdraw and list alarms");
    command->require_subcommand(1);
    command->fallthrough();
    AddAlarmRaise(*command, program);
    AddAlarmAck(*command, program);
    AddAlarmWithdraw(*command, program);
    AddList(*command, program);
}

}  // namespace host
