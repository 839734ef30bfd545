// Every row that is written to a site on a server, with whose session wrote it: by triggers, which
// the judge puts on all its tables, and which the product knows nothing of. A session says the term
// in which it writes; whether that one still holds, the order of the commits tells here, and not
// the product's own look.
//
// Errors     std::runtime_error.
#ifndef PAGERFWD_TESTS_PROOF_WRITE_WATCH_H
#define PAGERFWD_TESTS_PROOF_WRITE_WATCH_H

#include <string>

namespace proof {

// Of a database that has its tables, before a node begins.
void WatchWrites(const std::string& database);

// Those of a node or line that were committed behind the end of their term, which is when another
// term of its node was: "update of alarmlog by pagerfwd, term 1 of north"; empty: none.
std::string LateWrites(const std::string& database);

// How many rows nodes and lines have written in their terms.
int WritesInTerms(const std::string& database);

}  // namespace proof

#endif
