// pagerfwd alarm ack, pagerfwd alarm withdraw. Tested by tests/unit/host/cli_alarm_test.cpp and
// cli_alarm_key_test.cpp.
#include <CLI/CLI.hpp>
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
#include "host/cli/user_name.h"
#include "host/intake/alarm_json.h"
#include "host/pages/routes.h"
#include "host/site/site_tables.h"
#include "host/store/pool.h"

namespace host {
namespace {

struct Chosen {
    std::vector<int64_t> numbers;
    std::string group;  // a pattern
    bool all = false;
    std::string by;
    std::string comment;
};

struct ToEnd {
    std::vector<int64_t> numbers;
    std::string source;
    std::string key;
    bool json = false;
    bool spool = false;
};

Doer DoerOf(const Chosen& chosen) {
    CheckComment(chosen.by, chosen.comment);
    return {chosen.by.empty() ? UserName() : chosen.by, std::time(nullptr), chosen.comment};
}

// Those that are still being paged, as the groups say.
std::vector<int64_t> OpenNumbers(Connection& connection, const std::string& pattern) {
    const Encoding encoding = EncodingOf(connection);
    std::vector<int64_t> numbers;
    for (const Alarm& alarm : OpenAlarms(connection)) {
        if (IsLibraryNumber(alarm.number) && FitsGroup(pattern, Decode(alarm.group, encoding))) {
            numbers.push_back(std::stoll(alarm.number));
        }
    }
    return numbers;
}

void RequireOneChoice(const Chosen& chosen) {
    const int ways =
        (chosen.numbers.empty() ? 0 : 1) + (chosen.group.empty() ? 0 : 1) + (chosen.all ? 1 : 0);
    if (ways != 1) {
        throw Failure(kUsage, "say which alarms: by their numbers, or --group, or --all");
    }
}

// What became of alarms: told when it is committed.
struct Outcomes {
    std::string done;
    std::string unknown;

    ExitCode Tell() const {
        std::cout << done;
        std::cerr << unknown;
        return unknown.empty() ? kDone : kNo;
    }
};

void Acknowledge(Connection& connection, int64_t number, const Doer& doer, Outcomes& outcomes) {
    const std::string name = "alarm " + std::to_string(number);
    switch (AcknowledgeBy(connection, number, doer)) {
        case Acknowledged::kNow:
            outcomes.done += name + ": acknowledged; no further page leaves\n";
            break;
        case Acknowledged::kBefore:
            outcomes.done += name + ": was acknowledged before\n";
            break;
        case Acknowledged::kUnknown:
            outcomes.unknown += "pagerfwd: there is no " + name + "\n";
            break;
    }
}

ExitCode Ack(const Program& program, const Chosen& chosen) {
    RequireOneChoice(chosen);
    Lease lease(program.database);
    Connection& connection = lease.Database();
    const Doer doer = DoerOf(chosen);
    Outcomes outcomes;
    WriteTransaction transaction(connection);
    const std::vector<int64_t> numbers =
        chosen.numbers.empty() ? OpenNumbers(connection, chosen.all ? "*" : chosen.group)
                               : chosen.numbers;
    for (const int64_t number : numbers) {
        Acknowledge(connection, number, doer, outcomes);
    }
    transaction.Commit();
    if (numbers.empty()) {
        outcomes.done = "no such alarm is being paged\n";
    }
    return outcomes.Tell();
}

std::vector<ToWithdraw> Withdrawals(const ToEnd& end) {
    if (end.json) {
        return WithdrawalsFromJson(ReadFile(kStandardInput));
    }
    std::vector<ToWithdraw> withdrawals;
    for (const int64_t number : end.numbers) {
        withdrawals.push_back({std::to_string(number), {}});
    }
    if (withdrawals.empty()) {
        withdrawals.push_back({"", CheckedKey(end.source, end.key)});
    }
    return withdrawals;
}

void EndOne(Connection& connection, const ToWithdraw& withdrawal, const Doer& doer,
            Outcomes& outcomes) {
    if (withdrawal.number.empty()) {
        const auto number = WithdrawBy(connection, withdrawal.key, doer);
        outcomes.done += number ? "alarm " + *number + ": resolved; no further page leaves\n"
                                : "no alarm of this key is open\n";
        return;
    }
    const std::string name = "alarm " + withdrawal.number;
    switch (WithdrawBy(connection, withdrawal.number, doer)) {
        case Withdrawn::kNow:
            outcomes.done += name + ": resolved; no further page leaves\n";
            break;
        case Withdrawn::kBefore:
            outcomes.done += name + ": was resolved before\n";
            break;
        case Withdrawn::kUnknown:
            outcomes.unknown += "pagerfwd: there is no " + name + "\n";
            break;
    }
}

ExitCode WithdrawThem(const Program& program, const ToEnd& end) {
    const bool by_key = !end.source.empty() || !end.key.empty();
    if ((end.numbers.empty() ? 0 : 1) + (by_key ? 1 : 0) + (end.json ? 1 : 0) != 1) {
        throw Failure(kUsage, "say which alarms: by their numbers, or --key, or --json");
    }
    Spoolable asked;
    asked.what = {std::time(nullptr), UserName(), {}, Withdrawals(end)};
    asked.at_once = end.spool;
    Outcomes outcomes;
    asked.work = [&](Connection& connection) {
        for (const ToWithdraw& withdrawal : asked.what.withdraw) {
            EndOne(connection, withdrawal, {asked.what.by, asked.what.at}, outcomes);
        }
    };
    asked.done = [&](Connection&) { return outcomes.Tell(); };
    return DoOrKeep(program, asked);
}

}  // namespace

void AddAlarmAck(CLI::App& alarm, Program& program) {
    CLI::App* const command =
        alarm.add_subcommand("ack", "Acknowledge alarms: no further page leaves");
    const auto chosen = std::make_shared<Chosen>();
    command->add_option("NUMBER", chosen->numbers,
                        "As \"alarm raise\" and \"alarm list\" print it");
    command->add_option("--group", chosen->group,
                        "All that are still being paged whose group fits, as in routes: plant/*");
    command->add_flag("--all", chosen->all, "All that are still being paged");
    command->add_option("--by", chosen->by, "Who acknowledges (without it: this user)");
    command->add_option("--comment", chosen->comment, "What he says to it");
    command->footer(
        "A page that is on the line at this moment is finished.\n\n"
        "Examples:\n"
        "  pagerfwd alarm ack 978944400\n"
        "  pagerfwd alarm ack --group \"plant/*\" --by maria --comment \"on my way\"\n");
    command->callback([chosen, &program] {
        program.command = [chosen, &program] {
            return WithBadInputSaid([&] { return Ack(program, *chosen); });
        };
    });
}

void AddAlarmWithdraw(CLI::App& alarm, Program& program) {
    CLI::App* const command = alarm.add_subcommand(
        "withdraw", "Say that what alarms told of is over: no further page leaves");
    const auto end = std::make_shared<ToEnd>();
    command->add_option("NUMBER", end->numbers, "As \"alarm raise\" and \"alarm list\" print it");
    command->add_option("--key", end->key, "The key that it was raised with");
    command->add_option("--source", end->source, "Whose key it is");
    command->add_flag("--json", end->json,
                      "Read them from standard input, as a JSON object or a list of such with "
                      "source and key, or alarm");
    command->add_flag("--spool", end->spool,
                      "Keep it in a file that a running engine takes up within a second");
    command->footer(
        "While the database is away, this waits in a file beside it.\n"
        "That no alarm of the key is open is no mistake: monitoring may say it twice. A page that\n"
        "is on the line at this moment is finished.\n\n"
        "Example:\n"
        "  pagerfwd alarm withdraw --source icinga --key web1!disk\n");
    command->callback([end, &program] {
        program.command = [end, &program] {
            return WithBadInputSaid([&] { return WithdrawThem(program, *end); });
        };
    });
}

}  // namespace host
