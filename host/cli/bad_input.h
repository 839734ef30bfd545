// What a command line or standard input says, and can't be taken in, as a command's failure.
#ifndef PAGERFWD_HOST_CLI_BAD_INPUT_H
#define PAGERFWD_HOST_CLI_BAD_INPUT_H

#include "host/alarms/incoming.h"
#include "host/cli/program.h"

namespace host {

// What the command returns. Throws Failure for what is a BadField, with the field in front unless
// the text names it already.
template <typename Command>
ExitCode WithBadInputSaid(Command command) {
    try {
        return command();
    } catch (const BadField& error) {
        const bool is_said = std::string(error.what()).find(error.Field()) != std::string::npos;
        throw Failure(kUsage, (is_said ? "" : error.Field() + ": ") + error.what());
    }
}

}  // namespace host

#endif
