// Mistakes in a command line. Tested by tests/unit/host/cli_usage_test.cpp.
#include "host/cli/usage_error.h"

#include <vector>

#include "host/cli/suggestion.h"

namespace host {
namespace {

// The last command that the words before the mistake lead to.
const CLI::App& Innermost(const CLI::App& app) {
    const std::vector<CLI::App*> commands = app.get_subcommands();
    return commands.empty() ? app : Innermost(*commands.back());
}

std::vector<std::string> CommandsOf(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* const command :
         app.get_subcommands([](const CLI::App*) { return true; })) {
        if (!command->get_group().empty()) {
            names.push_back(command->get_name());
        }
    }
    return names;
}

// Also those of the commands around it.
std::vector<std::string> OptionsOf(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* around = &app; around != nullptr; around = around->get_parent()) {
        for (const CLI::Option* const option : around->get_options()) {
            for (const std::string& name : option->get_lnames()) {
                names.push_back("--" + name);
            }
        }
    }
    return names;
}

std::string Called(const CLI::App& command) {
    const std::string& name = command.get_name();
    return command.get_parent() == nullptr ? name : Called(*command.get_parent()) + " " + name;
}

std::string Meant(const std::string& word, const std::vector<std::string>& known) {
    const std::string nearest = NearestWord(word, known);
    return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

// The first word that nothing is known about; empty where all are known.
std::string UnknownWord(const CLI::App& app) {
    const std::vector<std::string> words = app.remaining(true);
    return words.empty() ? std::string() : words.front();
}

std::string Mistake(const CLI::App& app, const CLI::App& command, const CLI::ParseError& error) {
    const std::string word = UnknownWord(app);
    const std::vector<std::string> commands = CommandsOf(command);
    if (word.empty()) {
        const bool lacks_command = !commands.empty() && command.get_subcommands().empty();
        return lacks_command ? "a command is missing" : error.what();
    }
    if (word[0] == '-' && word.size() > 1) {
        return "there is no option " + word + Meant(word, OptionsOf(command));
    }
    return commands.empty() ? "\"" + word + "\" is one word too many"
                            : "there is no command \"" + word + "\"" + Meant(word, commands);
}

}  // namespace

std::string UsageError(const CLI::App& app, const CLI::ParseError& error) {
    const CLI::App& command = Innermost(app);
    return Mistake(app, command, error) + "\nTo see what there is: " + Called(command) + " --help";
}

}  // namespace host
