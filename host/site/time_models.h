// Time models as the site file says them, and the week that they mean.
#ifndef PAGERFWD_HOST_SITE_TIME_MODELS_H
#define PAGERFWD_HOST_SITE_TIME_MODELS_H

#include <string_view>

#include "host/site/hours.h"
#include "host/site/site.h"

namespace host {

// The first of this name; null when the file has none.
const TimeModel* FindTimeModel(const Site& site, std::string_view name);

// The hours that the model allows. What it says wrongly, which CheckSite finds, allows none.
Week WeekOf(const TimeModel& model);

}  // namespace host

#endif
