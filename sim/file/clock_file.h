// A file that carries the virtual time from one program of a command to the next.
#ifndef PAGERFWD_SIM_FILE_CLOCK_FILE_H
#define PAGERFWD_SIM_FILE_CLOCK_FILE_H

#include <ctime>
#include <optional>
#include <string>

#include "sim/far_end.h"

namespace pagersim {

// "2001-02-03 04:05:06", local time. None for another text.
std::optional<std::time_t> ParseInstant(const std::string& text);
std::string FormatInstant(std::time_t instant);

// What the file says; none when it isn't there or says nothing that is an instant.
std::optional<std::time_t> ReadClock(const std::string& path);

// Writes an instant, unless the file has a later one. False: it couldn't be written.
bool AdvanceClock(const std::string& path, std::time_t instant);

// The first full second that hasn't been shown yet, so long after `start`.
std::time_t NextSecond(std::time_t start, Milliseconds elapsed);

}  // namespace pagersim

#endif
