// The rules of CheckSite, by subject.
#ifndef PAGERFWD_HOST_SITE_RULES_H
#define PAGERFWD_HOST_SITE_RULES_H

#include <string>

#include "host/site/findings.h"
#include "host/site/site.h"

namespace host {

void CheckRoutes(const Site& site, Findings& findings);
void CheckPorts(const Site& site, Findings& findings);
void CheckPagers(const Site& site, Findings& findings);
void CheckTimeModels(const Site& site, Findings& findings);
void CheckSending(const Site& site, Findings& findings);
void CheckHangingUp(const Site& site, Findings& findings);
void CheckCommands(const Site& site, Findings& findings);
void CheckAlertmanager(const Site& site, Findings& findings);
void CheckNodes(const Site& site, Findings& findings);
void CheckTexts(const Site& site, Findings& findings);

inline std::string InQuotes(const std::string& text) {
    return "\"" + text + "\"";
}

}  // namespace host

#endif
