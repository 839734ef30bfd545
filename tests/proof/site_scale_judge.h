// The books of the site of many nodes: every alarm against what the centres received, and every
// reception against whose page it was at that moment, as the history tells it.
//
//   lost        nobody received it, or the site doesn't know that somebody did
//   twice       received more often than its history has named sendings of unknown outcome
//   not its     received from a line that didn't have the page then: since the node's term was
//               over, and the page another's
//   idle        a line that has sent nothing
#ifndef PAGERFWD_TESTS_PROOF_SITE_SCALE_JUDGE_H
#define PAGERFWD_TESTS_PROOF_SITE_SCALE_JUDGE_H

#include <ctime>
#include <map>
#include <string>
#include <vector>

namespace proof::site_scale {

struct Alarm {
    int group = 0;
    std::time_t raised = 0;
};

// What a centre received; the time as time() has it, with fractions.
struct Reception {
    int number = 0;  // of the alarm, by the text; 0: none that was raised
    std::string recipient;
    std::string line;
    double at = 0;
};

// A line had a page. until: 0 where nobody took it away.
struct Holding {
    std::string line;
    std::time_t from = 0, until = 0;
};

struct Page {
    std::vector<Holding> holdings;
    int named = 0;      // how often its history says that it may have been sent
    bool done = false;  // as the site tells it
};

struct Books {
    std::map<int, Alarm> alarms;  // by number
    std::map<int, Page> pages;    // by the alarm's number
    std::vector<Reception> receptions;
};

struct Totals {
    std::map<std::string, int> pages_of_line;
    std::vector<double> waits;            // seconds from each alarm to its first reception, sorted
    int twice = 0;                        // named by their history
    std::vector<std::string> complaints;  // empty: all is as it should be
};

Totals Judge(const Books& books);

}  // namespace proof::site_scale

#endif
