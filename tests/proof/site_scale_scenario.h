// The site of many nodes: its nodes, lines and pagers, what happens in its day, and the words of
// its ledger. The program that keeps the site and the one that judges share this.
#ifndef PAGERFWD_TESTS_PROOF_SITE_SCALE_SCENARIO_H
#define PAGERFWD_TESTS_PROOF_SITE_SCALE_SCENARIO_H

#include <ctime>
#include <string>
#include <vector>

#include "tests/proof/soak_site.h"

namespace proof::site_scale {

constexpr std::time_t kStart = 978948000;  // what the world's clock shows at first

// As many lines as a world has (sim/world/line_set.h).
constexpr int kNodes = 8;
constexpr int kLinesOfNode = 8;
constexpr int kLines = kNodes * kLinesOfNode;

// From 1 on; and the line on COM 1, say: "n1 1".
inline std::string NodeName(int node) {
    return "n" + std::to_string(node);
}
inline std::string LineOnPort(int com) {
    return NodeName(1 + (com - 1) / kLinesOfNode) + " " +
           std::to_string(1 + (com - 1) % kLinesOfNode);
}

// Alarms come at a rate of 50,000 a day: nearly half of them many at once, every five minutes, and
// the others whenever they like.
constexpr int kBurst = 80;
constexpr int kBurstEvery = 300;         // seconds
constexpr int kFirstBurst = 60;          // seconds behind the start of the day
constexpr int kOthersOfAThousand = 312;  // in any second one of them comes, so often

// Once an hour, while the pages of a burst are on their lines, the next node is killed: by turns
// with its lines, and alone. It comes back half a minute later.
constexpr int kBurstsBetweenKills = 12;
constexpr int kDownFor = 30;

// Each group has a pager of its own, whom any line may page.
constexpr int kGroups = 32;
inline soak::Pager PagerOf(int group) {
    constexpr int kSms1 = 4;
    constexpr int kFirstNumber = 5550200;
    return {"pager" + std::to_string(group), kSms1, std::to_string(kFirstNumber + group), 3, 1};
}
inline std::string GroupName(int group) {
    return "G" + std::to_string(group);
}

// The text of an alarm, by which it is known again where it arrives. From 1 on.
inline std::string TextOf(int number) {
    return "alarm " + std::to_string(number) + ".";
}

// --- The ledger: a file, a line for each. WALL: as time() has it. WHEN: beginning, end.
//
//   raised ALARM NUMBER GROUP WALL
//   killed NODE WALL
//   sample WHEN NODE-OR-LINE PAGES DESCRIPTORS     of its process; a line as PORT
//   node NODE STATUS                               at its end in order, as of waitpid
//   end

constexpr const char* kLedger = "ledger";

}  // namespace proof::site_scale

#endif
