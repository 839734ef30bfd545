// The site that a database holds, in the words of the site file.
//
// Cells are taken as the library takes them: of a flow control, a parity or a mark its first letter
// counts, of a number its digits. What no word stands for stays as it is, for CheckSite to find.
#ifndef PAGERFWD_HOST_SITE_READ_BACK_H
#define PAGERFWD_HOST_SITE_READ_BACK_H

#include "host/site/findings.h"
#include "host/site/site.h"
#include "host/site/stored_tables.h"
#include "host/store/connection.h"

namespace host {

struct ReadBack {
    Site site;
    // What a site file can't say: tables and columns that are missing, cells that are no numbers.
    // It names the rows in place of lines, and goes on to do so for what CheckSite finds.
    Findings findings;
};

// Throws StoreError where nothing can be read at all.
ReadBack ReadSiteBack(Connection& connection);

// The same, with `tables` to go on reading from.
ReadBack ReadSiteBack(Connection& connection, StoredTables& tables);

}  // namespace host

#endif
