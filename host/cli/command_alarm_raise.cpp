// pagerfwd alarm raise. Tested by tests/unit/host/cli_alarm_test.cpp and cli_alarm_key_test.cpp.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <array>
#include <climits>
#include <ctime>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "host/alarms/incoming.h"
#include "host/alarms/raising.h"
#include "host/cli/alarm_commands.h"
#include "host/cli/alarm_spool.h"
#include "host/cli/bad_input.h"
#include "host/cli/names.h"
#include "host/cli/raise_warnings.h"
#include "host/cli/user_name.h"
#include "host/intake/alarm_json.h"
#include "host/site/site_tables.h"

namespace host {
namespace {

struct RaiseOptions {
    IncomingAlarm alarm;
    bool json = false;
    bool spool = false;
};

std::string HostName() {
    std::array<char, HOST_NAME_MAX + 1> name{};
    return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

// Of a text that the tables have in other letters: an alarm isn't refused for them.
void WarnOfLetters(const char* what, const std::string& text, const std::string& bytes,
                   Encoding encoding) {
    if (Decode(bytes, encoding) != text) {
        Warn(std::string(what) + " is written \"" + Shown(bytes, encoding) +
             "\": " + std::string(WordFor(encoding)) +
             ", the encoding of this site, lacks some of its characters");
    }
}

void WarnOfLetters(const IncomingAlarm& came, const NewAlarm& alarm, Encoding encoding) {
    WarnOfLetters("the group", came.group, alarm.group, encoding);
    WarnOfLetters("the server", came.server, alarm.server, encoding);
    WarnOfLetters("the text", came.text, alarm.details, encoding);
}

// As the tables have them, for what is said behind the commit.
struct Taken {
    Encoding encoding = Encoding::kLatin1;
    std::vector<NewAlarm> alarms;
    std::vector<Raised> raised;
};

void RaiseAll(Connection& connection, const std::vector<IncomingAlarm>& came, Taken& taken) {
    taken.encoding = EncodingOf(connection);
    taken.alarms = CheckedAlarms(came, taken.encoding);
    for (const NewAlarm& alarm : taken.alarms) {
        taken.raised.push_back(Raise(connection, alarm, std::time(nullptr)));
    }
}

ExitCode SayOne(Connection& connection, const IncomingAlarm& came, const Taken& taken) {
    WarnOfLetters(came, taken.alarms.front(), taken.encoding);
    std::cout << taken.raised.front().number << std::endl;
    if (!taken.raised.front().is_new) {
        return kDone;
    }
    for (const std::string& warning :
         WarningsFor(connection, taken.alarms.front(), taken.encoding)) {
        Warn(warning);
    }
    return kDone;
}

// Many are another program's, which reads numbers and no warnings.
ExitCode SayMany(const Taken& taken) {
    Json answer = Json::array();
    for (const Raised& raised : taken.raised) {
        answer.push_back(ToJson(raised));
    }
    std::cout << Written(answer) << std::endl;
    return kDone;
}

ExitCode RaiseThem(const Program& program, const RaiseOptions& options) {
    Spoolable asked;
    asked.at_once = options.spool;
    asked.what = {std::time(nullptr), UserName(), {options.alarm}, {}};
    if (options.json) {
        asked.what.raise = AlarmsFromJson(ReadFile(kStandardInput), HostName());
    }
    Taken taken;
    asked.work = [&](Connection& connection) { RaiseAll(connection, asked.what.raise, taken); };
    asked.done = [&](Connection& connection) {
        return options.json ? SayMany(taken) : SayOne(connection, options.alarm, taken);
    };
    return DoOrKeep(program, asked);
}

ExitCode RunRaise(const Program& program, RaiseOptions& options, bool has_text) {
    if (options.json == has_text) {
        throw Failure(kUsage, options.json ? "with --json, the alarms are on standard input"
                                           : "TEXT is required");
    }
    if (options.alarm.server.empty()) {
        options.alarm.server = HostName();
    }
    return WithBadInputSaid([&] { return RaiseThem(program, options); });
}

}  // namespace

void AddAlarmRaise(CLI::App& alarm, Program& program) {
    CLI::App* const command = alarm.add_subcommand("raise", "Add an alarm, and print its number");
    const auto options = std::make_shared<RaiseOptions>();
    IncomingAlarm& given = options->alarm;
    const CLI::Option* const text = command->add_option("TEXT", given.text, "What has happened");
    command
        ->add_option("--group", given.group,
                     "Its group: routes go by it, and pages begin with it, up to the first /")
        ->capture_default_str();
    command->add_option("--severity", given.severity, "How bad it is")->capture_default_str();
    command->add_option("--server", given.server, "Who raises it (without it: this machine)");
    command->add_option("--key", given.key,
                        "Which alarm it is: while one of this key is open, it is counted, and "
                        "nobody is paged anew");
    command->add_option("--source", given.source, "Whose key it is, such as icinga");
    command->add_flag("--json", options->json,
                      "Read alarms from standard input, as a JSON object or a list of such with "
                      "text, group, severity, server, source and key; answer in JSON");
    command->add_flag("--spool", options->spool,
                      "Keep it in a file that a running engine takes up within a second, whatever "
                      "the database does; no number is printed");
    command->footer(
        "A running \"pagerfwd run\" takes it up within a second; otherwise the next one does. Its "
        "number\n"
        "goes to standard output, and to standard error a warning where no engine runs, no route\n"
        "leads to a pager, or a pager gets only a part of the text. Letters that the site's "
        "encoding\n"
        "lacks become the nearest ones, control characters blanks.\n\n"
        "While the database is away, the alarm waits in a file beside it, as with --spool.\n"
        "An alarm with a key is open until \"alarm withdraw\" names it, acknowledged or not.\n\n"
        "Examples:\n"
        "  pagerfwd alarm raise --group plant/017 --severity major \"Pump 3 stands still\"\n"
        "  pagerfwd alarm raise --source icinga --key web1!disk \"Disk full\"\n");
    command->callback([options, text, &program] {
        const bool has_text = text->count() > 0;
        program.command = [options, has_text, &program] {
            return RunRaise(program, *options, has_text);
        };
    });
}

}  // namespace host
