// Everything that can be told to go wrong with a site before the first page.
#ifndef PAGERFWD_HOST_SITE_SITE_CHECK_H
#define PAGERFWD_HOST_SITE_SITE_CHECK_H

#include "host/site/findings.h"
#include "host/site/site.h"

namespace host {

// Adds a finding for each mistake: for what the library, the serial line driver, the modem or the
// tables would make of the site.
void CheckSite(const Site& site, Findings& findings);

}  // namespace host

#endif
