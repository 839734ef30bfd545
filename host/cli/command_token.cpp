// pagerfwd token. Tested by tests/unit/host/cli_token_test.cpp.
#include <CLI/CLI.hpp>
#include <ctime>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "host/cli/numbers.h"
#include "host/cli/program.h"
#include "host/cli/user_name.h"
#include "host/store/look.h"
#include "host/store/pool.h"
#include "host/store/tables/tokens.h"
#include "host/store/tables/trail.h"
#include "host/text/json.h"
#include "host/text/printable.h"
#include "host/text/text_table.h"
#include "host/text/times.h"
#include "host/web/token.h"

namespace host {
namespace {

constexpr std::time_t kDay = 24 * 60 * 60;
constexpr size_t kLongestName = 64;

struct NewToken {
    std::string name;
    std::string may;
    int64_t days = 0;
};

void CheckName(const std::string& name) {
    if (name.empty() || name.size() > kLongestName || Printable(name) != name) {
        throw Failure(kUsage, "a token's name has 1 to 64 bytes, and no control characters");
    }
}

Token TokenOf(const NewToken& asked) {
    CheckName(asked.name);
    const std::optional<std::string> may = RightsIn(asked.may);
    if (!may) {
        throw Failure(kUsage,
                      "--may takes raise, acknowledge, look and manage, with commas between them");
    }
    const std::time_t now = std::time(nullptr);
    const std::time_t expires =
        asked.days == 0 ? 0 : now + static_cast<std::time_t>(asked.days) * kDay;
    return {asked.name, *may, expires, now};
}

bool IsThere(Connection& connection, const std::string& name) {
    for (const Token& token : ReadTokens(connection)) {
        if (token.name == name) {
            return true;
        }
    }
    return false;
}

ExitCode Add(const Program& program, const NewToken& asked) {
    const Token token = TokenOf(asked);
    Lease lease(program.database);
    WriteTransaction transaction(lease.Database());
    if (IsThere(lease.Database(), token.name)) {
        throw Failure(kNo, "there is a token \"" + token.name + "\" already; revoke it first");
    }
    const std::string text = MakeToken(lease.Database(), token);
    NoteInTrail(lease.Database(),
                {0, token.made, UserName(), "token added", "", token.name + ": " + token.may});
    transaction.Commit();
    std::cout << text << std::endl;
    std::cerr << "pagerfwd: this is shown once; who has it may " << token.may << "\n";
    return kDone;
}

ExitCode Revoke(const Program& program, const std::string& name) {
    Lease lease(program.database);
    WriteTransaction transaction(lease.Database());
    if (!RemoveToken(lease.Database(), name)) {
        throw Failure(kNo, "there is no token \"" + name + "\"");
    }
    NoteInTrail(lease.Database(), {0, std::time(nullptr), UserName(), "token revoked", "", name});
    transaction.Commit();
    std::cout << "token \"" << Printable(name) << "\": revoked\n";
    return kDone;
}

Json ToJson(const Token& token) {
    const auto instant = [](std::time_t at) { return at == 0 ? Json() : Json(LocalTime(at)); };
    return {{"name", token.name},
            {"may", token.may},
            {"made", instant(token.made)},
            {"used", instant(token.used)},
            {"expires", instant(token.expires)}};
}

ExitCode List(const Program& program, bool as_json) {
    const std::vector<Token> tokens =
        Look(program.database, [](Connection& database) { return ReadTokens(database); });
    if (as_json) {
        Json list = Json::array();
        for (const Token& token : tokens) {
            list.push_back(ToJson(token));
        }
        std::cout << Written(list) << "\n";
        return kDone;
    }
    TextTable table({"TOKEN", "MAY", "MADE", "LAST USED", "EXPIRES"});
    for (const Token& token : tokens) {
        table.Add({Printable(token.name), token.may, LocalTime(token.made), LocalTime(token.used),
                   LocalTime(token.expires)});
    }
    std::cout << (tokens.empty() ? "no tokens\n" : table.Text());
    return kDone;
}

void AddAdd(CLI::App& token, Program& program) {
    CLI::App* const command = token.add_subcommand("add", "Make a token, and print it once");
    const auto asked = std::make_shared<NewToken>();
    command->add_option("NAME", asked->name, "Of the program or person that gets it")->required();
    command
        ->add_option("--may", asked->may,
                     "What it is good for: raise, acknowledge, look, manage; several with commas")
        ->required();
    command->add_option("--days", asked->days, "How long it is valid (without it: until revoked)")
        ->check(NumberFrom(1));
    command->footer("Example:\n  pagerfwd token add icinga --may raise,acknowledge\n");
    command->callback([asked, &program] {
        program.command = [asked, &program] { return Add(program, *asked); };
    });
}

void AddList(CLI::App& token, Program& program) {
    CLI::App* const command = token.add_subcommand("list", "Show who has tokens");
    const auto as_json = std::make_shared<bool>(false);
    command->add_flag("--json", *as_json, "As JSON");
    command->callback([as_json, &program] {
        program.command = [as_json, &program] { return List(program, *as_json); };
    });
}

void AddRevoke(CLI::App& token, Program& program) {
    CLI::App* const command =
        token.add_subcommand("revoke", "Take a token back: its next request is refused");
    const auto name = std::make_shared<std::string>();
    command->add_option("NAME", *name, "As \"token list\" shows it")->required();
    command->callback([name, &program] {
        program.command = [name, &program] { return Revoke(program, *name); };
    });
}

}  // namespace

void AddTokens(CLI::App& app, Program& program) {
    CLI::App* const command =
        app.add_subcommand("token", "Let programs and people in that come over HTTP");
    command->require_subcommand(1);
    command->fallthrough();
    AddAdd(*command, program);
    AddList(*command, program);
    AddRevoke(*command, program);
}

}  // namespace host
