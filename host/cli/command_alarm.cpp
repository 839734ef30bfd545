// pagerfwd alarm: the alarm log. Tested by tests/unit/host/cli_alarm_test.cpp.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <array>
#include <climits>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/alarms/mending.h"
#include "host/cli/names.h"
#include "host/cli/numbers.h"
#include "host/cli/program.h"
#include "host/cli/raise_warnings.h"
#include "host/cli/severities.h"
#include "host/cli/times.h"
#include "host/cli/user_name.h"
#include "host/pages/page_words.h"
#include "host/site/site_tables.h"
#include "host/site/words.h"
#include "host/store/look.h"
#include "host/store/pool.h"
#include "host/store/tables/alarm_log.h"
#include "host/text/json.h"
#include "host/text/nearest.h"
#include "host/text/text_table.h"

namespace host {
namespace {

constexpr int64_t kListed = 20;

struct RaiseOptions {
    std::string details;
    std::string group = "ALARM/000";
    std::string severity = "critical";
    std::string server;
};

struct ListOptions {
    bool open = false;
    bool json = false;
    int64_t count = kListed;
};

std::string HostName() {
    std::array<char, HOST_NAME_MAX + 1> name{};
    return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

void Warn(const std::string& text) {
    std::cerr << "pagerfwd: warning: " << text << "\n";
}

// A text of a new alarm, as the tables have it: an alarm isn't refused for its letters.
std::string EncodeText(const char* what, const std::string& text, Encoding encoding) {
    std::string bytes = EncodeNearest(text, encoding);
    if (Decode(bytes, encoding) != text) {
        Warn(std::string(what) + " is written \"" + Shown(bytes, encoding) +
             "\": " + std::string(WordFor(encoding)) +
             ", the encoding of this site, lacks some of its characters");
    }
    return bytes;
}

ExitCode Raise(const Program& program, const RaiseOptions& options) {
    const std::string severity = SeverityFor(options.severity);
    Lease lease(program.database);
    const Encoding encoding = EncodingOf(lease.Database());
    const NewAlarm alarm{
        EncodeText("the group", options.group, encoding), severity,
        EncodeText("the server", options.server.empty() ? HostName() : options.server, encoding),
        EncodeText("the text", options.details, encoding)};
    if (alarm.details.find_first_not_of(' ') == std::string::npos) {
        throw Failure(kUsage, "the text is empty: say what has happened");
    }
    std::cout << RaiseAlarm(lease.Database(), alarm, std::time(nullptr)) << std::endl;
    for (const std::string& warning : WarningsFor(lease.Database(), alarm, encoding)) {
        Warn(warning);
    }
    return kDone;
}

ExitCode Ack(const Program& program, const std::vector<int64_t>& numbers) {
    Lease lease(program.database);
    bool known = true;
    for (const int64_t number : numbers) {
        const std::string name = "alarm " + std::to_string(number);
        switch (AcknowledgeAlarm(lease.Database(), number, std::time(nullptr), UserName())) {
            case Acknowledged::kNow:
                std::cout << name << ": acknowledged; no further page leaves\n";
                break;
            case Acknowledged::kBefore:
                std::cout << name << ": was acknowledged before\n";
                break;
            case Acknowledged::kUnknown:
                std::cerr << "pagerfwd: there is no " << name << "\n";
                known = false;
                break;
        }
    }
    return known ? kDone : kNo;
}

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
            {"details", Decode(alarm.details, encoding)}};
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

void AddRaise(CLI::App& alarm, Program& program) {
    CLI::App* const command = alarm.add_subcommand("raise", "Add an alarm, and print its number");
    const auto options = std::make_shared<RaiseOptions>();
    command->add_option("TEXT", options->details, "What has happened")->required();
    command
        ->add_option("--group", options->group,
                     "Its group: routes go by it, and pages begin with it, up to the first /")
        ->capture_default_str();
    command->add_option("--severity", options->severity, "How bad it is")->capture_default_str();
    command->add_option("--server", options->server, "Who raises it (without it: this machine)");
    command->footer(
        "A running \"pagerfwd run\" takes it up within a second; otherwise the next one does. Its "
        "number\n"
        "goes to standard output, and to standard error a warning where no engine runs, no route\n"
        "leads to a pager, or a pager gets only a part of the text. Letters that the site's "
        "encoding\n"
        "lacks become the nearest ones, control characters blanks.\n\n"
        "Example:\n"
        "  pagerfwd alarm raise --group plant/017 --severity major \"Pump 3 stands still\"\n");
    command->callback([options, &program] {
        program.command = [options, &program] { return Raise(program, *options); };
    });
}

void AddAck(CLI::App& alarm, Program& program) {
    CLI::App* const command =
        alarm.add_subcommand("ack", "Acknowledge alarms: no further page leaves");
    const auto numbers = std::make_shared<std::vector<int64_t>>();
    command->add_option("NUMBER", *numbers, "As \"alarm raise\" and \"alarm list\" print it")
        ->required();
    command->footer(
        "A page that is on the line at this moment is finished.\n\n"
        "Example:\n"
        "  pagerfwd alarm ack 978944400\n");
    command->callback([numbers, &program] {
        program.command = [numbers, &program] { return Ack(program, *numbers); };
    });
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
    CLI::App* const command = app.add_subcommand("alarm", "Raise, acknowledge and list alarms");
    command->require_subcommand(1);
    command->fallthrough();
    AddRaise(*command, program);
    AddAck(*command, program);
    AddList(*command, program);
}

}  // namespace host
