// The severity that a command line names.
#ifndef PAGERFWD_HOST_CLI_SEVERITIES_H
#define PAGERFWD_HOST_CLI_SEVERITIES_H

#include <string>

#include "host/cli/program.h"
#include "host/site/words.h"

namespace host {

// Its cell in the tables: "1" for "critical". Throws Failure.
inline std::string SeverityFor(const std::string& word) {
    const char* const cell = CellFor(kSeverities, word);
    if (cell == nullptr) {
        throw Failure(kUsage,
                      "there is no severity \"" + word + "\"; write " + ListOf(kSeverities));
    }
    return cell;
}

}  // namespace host

#endif
