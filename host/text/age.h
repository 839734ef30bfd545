// How old something is, as the command line and the log say it.
#ifndef PAGERFWD_HOST_TEXT_AGE_H
#define PAGERFWD_HOST_TEXT_AGE_H

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace host {

// "90m", "12h" or "3d"; below 100,000 of each. None: it is no age.
std::optional<std::chrono::seconds> ParseAge(std::string_view text);

// "119 minutes", "47 hours" or "3 days": whole ones, and two at least of the larger.
std::string AgeInWords(std::chrono::seconds age);

}  // namespace host

#endif
