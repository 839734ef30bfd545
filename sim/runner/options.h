// The command line of pagersim.
#ifndef PAGERFWD_SIM_RUNNER_OPTIONS_H
#define PAGERFWD_SIM_RUNNER_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

namespace pagersim {

struct RunnerOptions {
    std::string exchange = "exchange.toml";
    std::string start;       // "2001-02-03 04:05:06"; empty: not given
    int step_ms = 10;        // at most this long does a look at the time on a quiet line take
    std::string transcript;  // a file, "-" or empty
    std::string report;      // a file, "-" or empty
    std::string clock;       // a file or empty
    std::vector<std::string> expectations;
    bool quiet = false;
    std::vector<std::string> command;
};

// Parses, and answers --help and mistakes itself: then `exit_status` has a value.
struct ParsedOptions {
    RunnerOptions options;
    std::optional<int> exit_status;
};
ParsedOptions ParseOptions(int count, const char* const* arguments);

}  // namespace pagersim

#endif
