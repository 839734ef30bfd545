// The host's store, held against the contract.
#include "host/store/faults.h"
#include "host/store/pool.h"
#include "host/store/schema.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host/store_under_test.h"

namespace {

class SqliteStoreUnderTest : public StoreUnderTest {
 public:
    SqliteStoreUnderTest() {
        host::Connection connection(Database(), host::Connection::Mode::kCreate);
        host::CreateTables(connection);
        // The contract's own provocations are no news.
        host::SetFaultListener([](host::FaultNews /*news*/, std::string_view /*message*/) {});
    }
    ~SqliteStoreUnderTest() override {
        host::SetFaultListener(nullptr);
        host::CloseDatabases();
    }

    std::string Database() const override { return (folder_.Path() / "site.db").string(); }
    std::string Verdict() const override { return ""; }

 private:
    test_support::TempDir folder_;
};

}  // namespace

std::unique_ptr<StoreUnderTest> MakeStore() {
    return std::make_unique<SqliteStoreUnderTest>();
}
