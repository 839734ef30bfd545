// Everything that can be told to go wrong with the site of a database, and with what is pending.
#ifndef PAGERFWD_HOST_SITE_DATABASE_CHECK_H
#define PAGERFWD_HOST_SITE_DATABASE_CHECK_H

#include "host/site/read_back.h"
#include "host/store/connection.h"

namespace host {

// The site, and all that is wrong: by the rules of a site file, with its tables, and with the texts
// of pages that are pending. Throws StoreError where nothing can be read at all.
ReadBack CheckDatabase(Connection& connection);

}  // namespace host

#endif
