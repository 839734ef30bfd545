// Names of pagers and hours, between the terminal (UTF-8) and the tables (the site's encoding).
#ifndef PAGERFWD_HOST_CLI_NAMES_H
#define PAGERFWD_HOST_CLI_NAMES_H

#include <string>
#include <string_view>
#include <vector>

#include "host/text/encoding.h"

namespace host {

// A name from the command line, as the tables have it. One that the encoding can't have is in no
// table: it comes out empty, which no name is.
std::string InTables(std::string_view name, Encoding encoding);

// A text from the tables, for a terminal.
std::string Shown(std::string_view text, Encoding encoding);

// "there are \"duty\" and \"night\"", for someone who named another; kind: "pager".
std::string ListNames(const char* kind, const std::vector<std::string>& names, Encoding encoding);

}  // namespace host

#endif
