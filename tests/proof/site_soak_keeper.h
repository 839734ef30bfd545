// Keeps a site for a month inside a simulated world: raises and acknowledges alarms, lets lines
// fail and come back, and looks at the memory and descriptors of each process every hour.
#ifndef PAGERFWD_TESTS_PROOF_SITE_SOAK_KEEPER_H
#define PAGERFWD_TESTS_PROOF_SITE_SOAK_KEEPER_H

#include <string>

namespace proof::site_soak {

// In the site's folder. The ledger tells what was done. Errors: std::runtime_error.
void KeepSite(int days, const std::string& program, const std::string& library);

}  // namespace proof::site_soak

#endif
