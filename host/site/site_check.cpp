// All rules. Tested by tests/unit/host/site_check_test.cpp.
#include "host/site/site_check.h"

#include "host/site/rules.h"

namespace host {

void CheckSite(const Site& site, Findings& findings) {
    CheckNodes(site, findings);
    CheckPorts(site, findings);
    CheckPagers(site, findings);
    CheckTimeModels(site, findings);
    CheckRoutes(site, findings);
    CheckSending(site, findings);
    CheckHangingUp(site, findings);
    CheckCommands(site, findings);
    CheckAlertmanager(site, findings);
    CheckTexts(site, findings);
}

}  // namespace host
