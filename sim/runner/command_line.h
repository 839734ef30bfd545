// What the command lines of pagersim and its subcommands share.
#ifndef PAGERFWD_SIM_RUNNER_COMMAND_LINE_H
#define PAGERFWD_SIM_RUNNER_COMMAND_LINE_H

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace pagersim {

// The exit status of a mistake in the command line or a file: nothing was run.
constexpr int kUsageError = 2;

// Something that the user has to mend before anything can run.
class UsageError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

void AddExchangeOption(CLI::App& app, std::string& file);

// What stands before the first "--", and the command behind it; the name of the program, and of the
// subcommand if there is one, is not among them.
struct CommandLine {
    std::vector<std::string> options;
    std::vector<std::string> command;
};
CommandLine Split(int count, const char* const* arguments);

// Parses, and answers --help and mistakes itself: then the exit status.
std::optional<int> Parse(CLI::App& app, const std::vector<std::string>& options);

// Runs it; an exception is told, and is a mistake of the user's. Returns the exit status.
int Guarded(const std::function<int()>& deed);

}  // namespace pagersim

#endif
