// What happens in a world whose system fails; the site and its ledger are those of kill_scenario.h.
#ifndef PAGERFWD_TESTS_PROOF_FAULT_SCENARIO_H
#define PAGERFWD_TESTS_PROOF_FAULT_SCENARIO_H

#include <array>

namespace proof::kills {

// Seconds since the world began.
constexpr std::array<int, 6> kAlarmsAt = {3, 4, 5, 60, 100, 240};
constexpr int kEndOfFaults = 300;
constexpr int kAfterwards = 240;  // until the lines have gone on
constexpr int kForAWhile = 20 * 60;

constexpr const char* kCounts = "counts";  // of calls, by process and kind; and how many failed

}  // namespace proof::kills

#endif
