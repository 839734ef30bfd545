// What happens at the site of the soak in a month: its lines and what befalls them, its pagers, and
// the words of its ledger. The program that keeps the site and the one that judges share this.
#ifndef PAGERFWD_TESTS_PROOF_SITE_SOAK_SCENARIO_H
#define PAGERFWD_TESTS_PROOF_SITE_SOAK_SCENARIO_H

#include <array>
#include <ctime>
#include <string>
#include <vector>

#include "tests/proof/soak_site.h"

namespace proof::site_soak {

constexpr std::time_t kStart = 978948000;  // what the world's clock shows at first
constexpr int kHour = 3600;

// The last one never fails, so that its process lives for all of the month.
constexpr std::array<const char*, 4> kLines = {"north", "east", "south", "west"};

// The file that is a line's device: a link to a port of the simulation's, or nothing.
inline std::string DeviceOf(const std::string& line) {
    return line + ".device";
}

// What a line's device leads to; a port of its own for each line.
enum class Modem { kGood, kSilent, kWithoutTone };
constexpr int kModems = 3;
inline int PortOf(size_t line, Modem modem) {
    return 1 + static_cast<int>(line) * kModems + static_cast<int>(modem);
}

// Twenty, of all types; the centre of one is always engaged, and that of another hangs up in the
// midst of each page.
inline std::vector<soak::Pager> SitePagers() {
    constexpr size_t kEngaged = 7;
    constexpr size_t kHungUpOn = 6;
    std::vector<soak::Pager> pagers = soak::Pagers();
    pagers.at(kEngaged).number = "5550109@5550207";
    pagers.at(kHungUpOn).number = "5550110@5550206";
    return pagers;
}

// Alarms of the group "G3/..." are for the pagers 3 and 13.
constexpr int kGroups = 10;

// --- The ledger: a file, a line for each. WALL: as time() has it.
//
//   raised ALARM GROUP
//   acknowledged ALARM
//   killed WALL LINE           its process
//   trouble LINE
//   node STATUS                as of waitpid
//   sample NAME HOUR PAGES DESCRIPTORS
//   end

constexpr const char* kLedger = "ledger";

}  // namespace proof::site_soak

#endif
