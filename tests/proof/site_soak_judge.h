// The books of the soak's site: what the database tells of each page and each sending, against what
// the centres received and the exchange connected, call by call.
#ifndef PAGERFWD_TESTS_PROOF_SITE_SOAK_JUDGE_H
#define PAGERFWD_TESTS_PROOF_SITE_SOAK_JUDGE_H

#include <ctime>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/proof/soak_memory.h"

namespace proof::site_soak {

// A call over the exchange, and what the centre received in it. Times as time() has them.
struct Call {
    std::string line;
    double from = 0, to = 0;
    std::vector<std::string> received;  // recipients
};

// A sending, as the site has recorded it.
struct Sending {
    std::string line;
    std::time_t from = 0, to = 0;
    std::string alarm, pager, outcome, reason;
};

// How a page ended, as the site tells it: "done", "given up", "acknowledged", "pending"; "": the
// site knows no such page.
using Ends = std::map<std::pair<std::string, std::string>, std::string>;  // by alarm and pager

struct Books {
    std::map<std::string, std::string> groups;               // of alarms
    std::set<std::string> acknowledged;                      // alarms
    std::vector<std::pair<std::string, std::time_t>> kills;  // of which line's process, when
    Ends ends;
    std::vector<Sending> sendings;
    std::vector<Call> calls;
};

struct Totals {
    long pages = 0, sent = 0, failed = 0;
    long done = 0, given_up = 0, acknowledged = 0;  // pages; each is one of these
    std::vector<std::string> doubles;               // each with its reason
    std::vector<std::string> complaints;            // empty: all is as it should be
};

Totals Judge(const Books& books);

}  // namespace proof::site_soak

#endif
