// The host's store on a server, held against the contract.
#include "host/store/faults.h"
#include "host/store/pool.h"
#include "host/store/schema.h"
#include "tests/support/own_postgres.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host/store_under_test.h"

namespace {

class PostgresStoreUnderTest : public StoreUnderTest {
 public:
    PostgresStoreUnderTest() {
        setenv("PAGERFWD_STATE", folder_.Path().c_str(), 1);
        host::Connection connection(database_, host::Connection::Mode::kCreate);
        host::CreateTables(connection);
        // The contract's own provocations are no news.
        host::SetFaultListener([](host::FaultNews /*news*/, std::string_view /*message*/) {});
    }
    ~PostgresStoreUnderTest() override {
        host::SetFaultListener(nullptr);
        host::CloseDatabases();
    }

    std::string Database() const override { return database_; }
    std::string Verdict() const override { return ""; }

 private:
    test_support::TempDir folder_;
    const std::string database_ = test_support::TheServer().MakeDatabase();
};

}  // namespace

std::unique_ptr<StoreUnderTest> MakeStore() {
    return std::make_unique<PostgresStoreUnderTest>();
}
