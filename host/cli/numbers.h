// Numbers on the command line.
#ifndef PAGERFWD_HOST_CLI_NUMBERS_H
#define PAGERFWD_HOST_CLI_NUMBERS_H

#include <CLI/CLI.hpp>
#include <limits>
#include <sstream>
#include <string>

namespace host {

// Takes a number from the least to the most, and says so of any other.
inline CLI::Validator NumberFrom(double least,
                                 double most = std::numeric_limits<double>::infinity()) {
    return CLI::Validator(
        [least, most](const std::string& text) {
            double number = 0;
            if (CLI::detail::lexical_cast(text, number) && number >= least && number <= most) {
                return std::string();
            }
            std::ostringstream wanted;
            wanted << "\"" << text << "\" is no number from " << least;
            if (most < std::numeric_limits<double>::infinity()) {
                wanted << " to " << most;
            } else {
                wanted << " on";
            }
            return wanted.str();
        },
        "");
}

}  // namespace host

#endif
