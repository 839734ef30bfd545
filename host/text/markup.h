// Texts within HTML and SVG.
#ifndef PAGERFWD_HOST_TEXT_MARKUP_H
#define PAGERFWD_HOST_TEXT_MARKUP_H

#include <string>
#include <string_view>

namespace host {

// What stands for the text between tags, and in the quotes of an attribute. Control characters
// stay: see printable.h.
std::string EscapedMarkup(std::string_view text);

}  // namespace host

#endif
