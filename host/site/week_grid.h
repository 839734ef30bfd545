// A week as a grid of 7 days and 24 hours: for eyes, and for an editor.
//
//   #     0        8        16
//   mon   ........ xxxxxxxx xx......
//
// x: a page may leave in this hour; a dot: none does.
#ifndef PAGERFWD_HOST_SITE_WEEK_GRID_H
#define PAGERFWD_HOST_SITE_WEEK_GRID_H

#include <string>
#include <string_view>

#include "host/site/hours.h"

namespace host {

std::string WriteGrid(const Week& week);

// Blanks between the marks, empty lines and what stands behind a # don't count; days may come in
// any order, each once. Throws NoHours, whose text names the line.
Week ParseGrid(std::string_view text);

// "mon-fri 8-17", "Sat,Sun none": these days get these hours, the others keep theirs. Throws
// NoHours.
void SetHours(Week& week, std::string_view text);

}  // namespace host

#endif
