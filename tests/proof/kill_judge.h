// Whether what a world of the kill test tells is what its kills, and the rules, explain: every page
// arrived, and one that arrived too often did so since its line was killed behind the centre's
// acceptance, before the page's row said so; or ended itself there, since its node had been killed
// and the node's lease was over.
#ifndef PAGERFWD_TESTS_PROOF_KILL_JUDGE_H
#define PAGERFWD_TESTS_PROOF_KILL_JUDGE_H

#include <istream>
#include <string>
#include <vector>

namespace proof::kills {

struct Kill {
    int at = 0;  // seconds since the world began; within the second before
    unsigned role = 0;
    unsigned kind = 0;
    unsigned victims = 0;
    std::string doing;     // what its line did, in a word
    bool forgets = false;  // a page that a centre had accepted, and whose row doesn't say so
};

struct Verdict {
    std::vector<Kill> kills;
    int pages = 0;                        // that were owed
    int received = 0;                     // by the centres
    std::vector<std::string> doubles;     // each with its reason
    std::vector<std::string> given_up;    // "ALARM PAGER": received by nobody, with kDeviceToo
    std::vector<std::string> complaints;  // empty: all is as it should be
};

// What uses up a try of a page. kDeviceToo: a device that can't be opened, so that a page that is
// sent several times may be sent less often; or never, where that lasts for all its tries. Then it
// is given up, and who judges sees that the operator was told.
enum class Tries { kSendingsOnly, kDeviceToo };

// ledger: as in kill_scenario.h. report: what the simulation says of calls and pages, as JSON.
Verdict Judge(std::istream& ledger, std::istream& report, Tries tries = Tries::kSendingsOnly);

}  // namespace proof::kills

#endif
