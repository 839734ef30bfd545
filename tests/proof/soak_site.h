// The busy site of the soak: its pagers, and centres that are good, busy, silent and failing.
#ifndef PAGERFWD_TESTS_PROOF_SOAK_SITE_H
#define PAGERFWD_TESTS_PROOF_SOAK_SITE_H

#include <random>
#include <string>
#include <vector>

#include "sim/phone/exchange.h"
#include "sim/phone/faults.h"

namespace proof::soak {

struct Pager {
    std::string name;
    int type;
    std::string number;
    int retries;
    int delay_minutes;
};

// Twenty, of all types.
const std::vector<Pager>& Pagers();
const Pager& PagerNamed(const std::string& name);

// A site of these pagers: the keys of its ports behind "[[port]]", of one each.
std::string SiteText(const std::vector<std::string>& ports, const std::vector<Pager>& pagers);

// Writes the tables of a site of one port, without an alarm.
void MakeDatabase(const char* path);

// What becomes of each call, as a seed decides it.
//
// Threads    As in sim/far_end.h.
class Weather {
 public:
    explicit Weather(unsigned seed) : random_(seed) {}

    void AddCentres(pagersim::Exchange& exchange);

    // The call that was answered last: whether something was planned to go wrong with it.
    bool LatestIsFaulty() const { return latest_is_faulty_; }

 private:
    pagersim::Fate NextFate();
    pagersim::Faults NextFaults();
    unsigned Roll(unsigned sides) { return static_cast<unsigned>(random_() % sides); }

    std::minstd_rand random_;
    bool latest_is_faulty_ = false;
};

}  // namespace proof::soak

#endif
