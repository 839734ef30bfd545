// A site file, read and checked, for the commands that take one.
#ifndef PAGERFWD_HOST_CLI_SITE_INPUT_H
#define PAGERFWD_HOST_CLI_SITE_INPUT_H

#include <iosfwd>
#include <string>

#include "host/site/site_file.h"

namespace host {

// What messages call a site file: "-" is standard input.
std::string NameOfFile(const std::string& path);

// The site and everything that is wrong with it. Throws Failure when the file can't be read.
ReadSite LoadSite(const std::string& path);

// Every finding, and how many there are. Prints nothing when there is none.
void PrintFindings(std::ostream& out, const std::string& path, const Findings& findings);

}  // namespace host

#endif
