// What the commands below `pagerfwd line` share.
#ifndef PAGERFWD_HOST_CLI_LINE_COMMANDS_H
#define PAGERFWD_HOST_CLI_LINE_COMMANDS_H

#include <string>

#include "host/cli/program.h"
#include "host/lines/site_lines.h"
#include "host/text/encoding.h"

namespace host {

// name: from the command line. Throws Failure where the site has no such line.
SiteLine FindNamedLine(Connection& connection, const std::string& name, Encoding encoding);

void AddLineTest(CLI::App& line, Program& program);

}  // namespace host

#endif
