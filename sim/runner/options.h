// The command lines of pagersim, `pagersim world` and `pagersim join`.
#ifndef PAGERFWD_SIM_RUNNER_OPTIONS_H
#define PAGERFWD_SIM_RUNNER_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

namespace pagersim {

// Of a world, whoever is in it.
struct RunnerOptions {
    std::string exchange = "exchange.toml";
    std::string start;       // "2001-02-03 04:05:06"; empty: not given
    int step_ms = 10;        // at most this long does a look at the time on a quiet line take
    std::string transcript;  // a file, "-" or empty
    std::string report;      // a file, "-" or empty
    std::string clock;       // a file or empty
    std::vector<std::string> expectations;
    bool quiet = false;

    // Of one that begins and ends with its command.
    std::vector<std::string> command;
    std::vector<std::string> beside;  // shell commands that run from the start, too

    // Of one that commands join.
    std::string folder;
    int await = 1;            // time begins when so many have joined
    bool until_left = false;  // it ends when all that have joined have ended
};

struct JoinOptions {
    std::string folder;
    std::vector<std::string> command;
};

// Each parses, and answers --help and mistakes itself: then `exit_status` has a value.
template <typename Options>
struct Parsed {
    Options options;
    std::optional<int> exit_status;
};
Parsed<RunnerOptions> ParseOptions(int count, const char* const* arguments);

// `arguments` begins with the name of the subcommand.
Parsed<RunnerOptions> ParseWorldOptions(int count, const char* const* arguments);
Parsed<JoinOptions> ParseJoinOptions(int count, const char* const* arguments);

}  // namespace pagersim

#endif
