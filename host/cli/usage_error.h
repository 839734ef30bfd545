// What is wrong with a command line, in words.
#ifndef PAGERFWD_HOST_CLI_USAGE_ERROR_H
#define PAGERFWD_HOST_CLI_USAGE_ERROR_H

#include <CLI/CLI.hpp>
#include <string>

namespace host {

// The mistake, the word that may have been meant, and where the help is.
std::string UsageError(const CLI::App& app, const CLI::ParseError& error);

}  // namespace host

#endif
