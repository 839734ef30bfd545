// Reading a site file: TOML, UTF-8.
#ifndef PAGERFWD_HOST_SITE_SITE_FILE_H
#define PAGERFWD_HOST_SITE_SITE_FILE_H

#include <string_view>

#include "host/site/findings.h"
#include "host/site/site.h"

namespace host {

struct ReadSite {
    Site site;
    // Where the text is no TOML, a key is unknown or has a value of another kind. What could not be
    // read has its default in the site.
    Findings findings;
    bool is_toml = true;
};

// Never fails: what is wrong with the text is a finding. Text that is no TOML gives one finding and
// an empty site, in which it makes no sense to look for more.
ReadSite ParseSite(std::string_view text);

}  // namespace host

#endif
