// A line of SNPP, taken apart (RFC 1861, chapter 4): a command, of which the first four letters
// count, in either case, and what follows it.
#ifndef PAGERFWD_HOST_SNPP_COMMAND_H
#define PAGERFWD_HOST_SNPP_COMMAND_H

#include <string>
#include <string_view>

namespace host {

struct SnppCommand {
    std::string name;      // "PAGE"; shorter where no more came
    std::string argument;  // without blanks around it; may be empty
};

// line: without its end.
SnppCommand ParseSnppLine(std::string_view line);

// The first word of a text, which then holds the rest.
std::string FirstWordOf(std::string& text);

}  // namespace host

#endif
