// The templates of alerts in a site's database.
#ifndef PAGERFWD_HOST_SITE_STORED_ALERTS_H
#define PAGERFWD_HOST_SITE_STORED_ALERTS_H

#include "host/intake/alertmanager.h"
#include "host/site/site.h"
#include "host/store/connection.h"

namespace host {

// Those that the site has not said are the usual ones. Both throw StoreError.
AlertTemplates ReadAlertTemplates(Connection& connection);
void StoreAlertTemplates(Connection& connection, const AlertmanagerPart& part);

}  // namespace host

#endif
