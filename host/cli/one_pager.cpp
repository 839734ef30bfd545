// The pager that a command names. Tested by tests/unit/host/cli_test.cpp.
#include "host/cli/one_pager.h"
#include "host/store/tables/pagers.h"

#include <utility>
#include <vector>

#include "host/cli/names.h"
#include "host/cli/program.h"

namespace host {

PagerRow FindOnePager(Connection& connection, const std::string& name, Encoding encoding) {
    std::vector<PagerRow> pagers = FindPagers(connection, InTables(name, encoding));
    if (pagers.size() > 1) {
        throw Failure(kUsage, "pager \"" + name +
                                  "\" is in the tables more than once, and can't be reached; "
                                  "import a site file in which it stands once");
    }
    if (pagers.empty()) {
        throw Failure(kUsage, "there is no pager \"" + name + "\"; " +
                                  ListNames("pagers", PagerNames(connection), encoding));
    }
    return std::move(pagers.front());
}

}  // namespace host
