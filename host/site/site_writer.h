// Writing a site file.
#ifndef PAGERFWD_HOST_SITE_SITE_WRITER_H
#define PAGERFWD_HOST_SITE_SITE_WRITER_H

#include <string>
#include <string_view>

#include "host/site/site.h"

namespace host {

// TOML, UTF-8. Every key is written, also where it has its default: what ParseSite makes of the
// text is this site, and the text of that is this text.
std::string WriteSite(const Site& site);

// A text between double quotes, as TOML has it. Bytes that are not UTF-8 become U+FFFD, which no
// encoding of a site has, so that it can't be imported unnoticed.
std::string TomlText(std::string_view utf8);

}  // namespace host

#endif
