// What stands in for postgres_driver.cpp where there is no libpq. Tested by
// tests/unit/host/database_name_test.cpp.
#include "host/store/database_name.h"
#include "host/store/driver.h"

namespace host {

bool HasPostgres() {
    return false;
}

std::unique_ptr<Driver> OpenPostgres(const std::string& name, Connection::Mode /*mode*/) {
    throw StoreError(ShownName(name) + ": this pagerfwd was built without PostgreSQL");
}

}  // namespace host
