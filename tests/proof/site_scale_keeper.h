// Keeps a site of many nodes inside a simulated world: raises its alarms, kills nodes and starts
// them again, and looks at all processes at the beginning and at the end.
#ifndef PAGERFWD_TESTS_PROOF_SITE_SCALE_KEEPER_H
#define PAGERFWD_TESTS_PROOF_SITE_SCALE_KEEPER_H

#include <string>

namespace proof::site_scale {

// In the site's folder. The ledger tells what was done. Errors: std::runtime_error.
void KeepSite(int alarms, const std::string& program, const std::string& library);

}  // namespace proof::site_scale

#endif
