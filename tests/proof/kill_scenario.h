// What happens in a world of the kill test: its site, who is paged for what, and the words of its
// ledger. The program that keeps the site and the one that judges share this and nothing else.
#ifndef PAGERFWD_TESTS_PROOF_KILL_SCENARIO_H
#define PAGERFWD_TESTS_PROOF_KILL_SCENARIO_H

#include <array>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

namespace proof::kills {

constexpr std::time_t kStart = 978948000;  // what the world's clock shows at first
constexpr int kLines = 3;
constexpr int kBetweenKills = 40;  // seconds

struct PagerPlan {
    const char* name;
    const char* port;  // "": any line
    const char* type;
    const char* number;
    const char* centre;
    const char* recipient;  // as the centre names it
    int retries;
    int sends;      // how often it is received when nothing goes wrong
    bool has_text;  // what the centre receives names the alarm
};

constexpr std::array<PagerPlan, 5> kPagerPlans = {{
    {"tap", "", "sms1", "5550111", "tap", "5550111", 3, 1, true},
    {"bound", "COM 2", "sms1", "5550113", "tap", "5550113", 3, 1, true},
    {"ucp", "", "sms2", "5550112", "ucp", "5550112", 3, 1, true},
    {"plain", "", "alphanumeric", "5550100@3003", "plain", "3003", 1, 2, true},
    {"numeric", "", "numeric", "5550100@2002", "plain", "2002", 0, 1, false},
}};

struct Route {
    const char* group;
    std::vector<std::string> pagers;
};

inline const std::vector<Route>& Routes() {
    static const std::vector<Route> routes = {
        {"A", {"tap", "plain"}}, {"B", {"ucp", "bound"}}, {"C", {"numeric", "tap"}}};
    return routes;
}

// --- The ledger: a file, a line for each.
//
//   raised ALARM TEXT GROUP
//   acknowledged ALARM WALL        is now
//   killed WALL ROLE KIND VICTIMS DOING
//                                  within the second before; kill_points.h has the numbers. DOING:
//                                  what the (first) line that was killed said that it did
//   fenced WALL LINE               within the second before: it has ended itself, since the lease
//   of
//                                  its node, which was killed, was over. LINE: 1 is COM 1
//   missed                         a point that was armed and not come to
//   node WALL STATUS               a node has ended: as of waitpid
//   page ALARM PAGER END MOVED     at the end: what the database tells. END: pending, done,
//                                  given-up, acknowledged or dropped. MOVED: how often
//   written ALARM PAGER COM N WALL at the end: a try that the page's row tells of, and when it did
//   alarm ALARM STATE              at the end: the alarm log
//   end

constexpr const char* kLedger = "ledger";
constexpr const char* kPoints = "points";
constexpr const char* kReport = "report.json";

}  // namespace proof::kills

#endif
