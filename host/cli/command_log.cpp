// pagerfwd log: the story of an alarm. Tested by tests/unit/host/cli_status_test.cpp and
// tests/e2e/run_test.cpp.
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "host/cli/names.h"
#include "host/cli/program.h"
#include "host/pages/alarm_story.h"
#include "host/site/site_tables.h"
#include "host/store/look.h"
#include "host/text/json.h"
#include "host/text/text_table.h"
#include "host/text/times.h"

namespace host {
namespace {

Json ToJson(const Alarm& alarm, const std::vector<StoryLine>& story, Encoding encoding) {
    Json lines = Json::array();
    for (const StoryLine& line : story) {
        lines.push_back({{"at", LocalTime(line.at)},
                         {"pager", Decode(line.pager, encoding)},
                         {"what", line.what},
                         {"more", Decode(line.more, encoding)}});
    }
    return {{"alarm", Decode(alarm.number, encoding)},
            {"group", Decode(alarm.group, encoding)},
            {"details", Decode(alarm.details, encoding)},
            {"story", lines}};
}

constexpr size_t kLongestText = 400;  // places

// Names and texts may have any length; --json has all of them.
std::string ShownName(const std::string& text, Encoding encoding) {
    return Shortened(Shown(text, encoding), TextTable::kWidest);
}
std::string ShownText(const std::string& text, Encoding encoding) {
    return Shortened(Shown(text, encoding), kLongestText);
}

void Print(const Alarm& alarm, const std::vector<StoryLine>& story, Encoding encoding) {
    std::cout << "alarm " << ShownName(alarm.number, encoding) << ", "
              << ShownName(alarm.group, encoding) << ", from " << ShownName(alarm.server, encoding)
              << ": " << ShownText(alarm.details, encoding) << "\n";
    for (const StoryLine& line : story) {
        std::cout << LocalTime(line.at) << "  ";
        if (!line.pager.empty()) {
            std::cout << '"' << ShownName(line.pager, encoding) << "\": ";
        }
        std::cout << line.what;
        if (!line.more.empty()) {
            std::cout << " (" << ShownText(line.more, encoding) << ")";
        }
        std::cout << "\n";
    }
}

struct Told {
    Encoding encoding;
    Alarm alarm;
    std::vector<StoryLine> story;
};

ExitCode Log(const Program& program, int64_t number, bool json) {
    const Told told = Look(program.database, [number](Connection& database) {
        const std::optional<Alarm> alarm = FindAlarm(database, std::to_string(number));
        if (!alarm) {
            throw Failure(kNo, "there is no alarm " + std::to_string(number) +
                                   "; pagerfwd alarm list shows the last ones");
        }
        return Told{EncodingOf(database), *alarm, TellAlarm(database, *alarm)};
    });
    if (json) {
        std::cout << Written(ToJson(told.alarm, told.story, told.encoding)) << "\n";
    } else {
        Print(told.alarm, told.story, told.encoding);
    }
    return kDone;
}

}  // namespace

void AddLog(CLI::App& app, Program& program) {
    CLI::App* const command = app.add_subcommand("log", "Tell what became of an alarm");
    const auto number = std::make_shared<int64_t>();
    const auto json = std::make_shared<bool>(false);
    command->add_option("ALARM", *number, "Its number, as \"alarm list\" prints it")->required();
    command->add_flag("--json", *json, "As JSON");
    command->footer(
        "Every sending of each of its pages: those that got through, those that failed, with the\n"
        "reason, and those that were skipped since the pager's hours barred them.\n\n"
        "Example:\n"
        "  pagerfwd --database site.db log 978944400\n");
    command->callback([number, json, &program] {
        program.command = [number, json, &program] { return Log(program, *number, *json); };
    });
}

}  // namespace host
