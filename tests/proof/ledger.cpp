// Ledgers, read.
#include "tests/proof/ledger.h"

#include <iterator>
#include <sstream>

namespace proof {

std::vector<LedgerLine> ReadLedgerLines(std::istream& ledger) {
    std::vector<LedgerLine> lines;
    for (std::string line; std::getline(ledger, line);) {
        std::istringstream words(line);
        LedgerLine list{std::istream_iterator<std::string>(words), {}};
        if (!list.empty()) {
            lines.push_back(std::move(list));
        }
    }
    return lines;
}

}  // namespace proof
