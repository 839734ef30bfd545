// How a program gets the simulation: the libraries to load before its own.
#ifndef PAGERFWD_SIM_RUNNER_PRELOAD_H
#define PAGERFWD_SIM_RUNNER_PRELOAD_H

#include <optional>
#include <string>

namespace pagersim {

// libpagersim-preload.so: what PAGERSIM_PRELOAD names, else beside this program, in ../lib, as in a
// build folder, or where it is installed, seen from this program.
std::optional<std::string> FindPreload();

// The value of LD_PRELOAD: the runtime of the sanitizer that this program itself runs with, if any,
// which has to come first; the preload; what LD_PRELOAD already says. Where there is one for the
// other word size, too, beside `preload`, the loader finds each by links that are made in `folder`;
// as when the path has a character that the loader can't read (blanks and colons separate there).
//
// Errors     Throws std::system_error when the links can't be made.
std::string PreloadList(const std::string& preload, const std::string& folder);

// Whether programs of that word size take what such a list says. 0: of none, see WordSizeOf.
bool Serves(const std::string& list, int word_size);

}  // namespace pagersim

#endif
