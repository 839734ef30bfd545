// The ledgers of the proofs: files in which a world notes what happens in it, a line for each
// thing, of words with blanks between. What the words are, each proof says itself.
#ifndef PAGERFWD_TESTS_PROOF_LEDGER_H
#define PAGERFWD_TESTS_PROOF_LEDGER_H

#include <istream>
#include <string>
#include <vector>

namespace proof {

using LedgerLine = std::vector<std::string>;

// Those that have a word, in order.
std::vector<LedgerLine> ReadLedgerLines(std::istream& ledger);

}  // namespace proof

#endif
