// What the library may be given.
#ifndef PAGERFWD_HOST_TEXT_CONTROLS_H
#define PAGERFWD_HOST_TEXT_CONTROLS_H

#include <string>
#include <string_view>

namespace host {

// The text with a blank in the place of each control character. The library writes texts into its
// trace as they are: a line feed in one would begin a line there that nobody can tell from its own.
// Bytes from 128 up stay, which are letters in the encodings of sites.
std::string WithoutControls(std::string_view text);

}  // namespace host

#endif
