// Of a build without libpq.
#include <stdexcept>

#include "tests/proof/site_databases.h"

namespace proof {

std::unique_ptr<SiteDatabases> OpenPostgresDatabases() {
    throw std::runtime_error("this build has no libpq, and so no PostgreSQL");
}

}  // namespace proof
