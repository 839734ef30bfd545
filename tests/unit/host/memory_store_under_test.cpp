// The store in memory, held against the contract.
#include "tests/support/memory_store.h"
#include "tests/unit/host/store_under_test.h"

namespace {

class MemoryStoreUnderTest : public StoreUnderTest {
 public:
    MemoryStoreUnderTest() { store_.AddAllTables(); }

    std::string Database() const override { return test_support::MemoryStore::kDatabase; }
    std::string Verdict() const override { return store_.Verdict(); }

 private:
    test_support::MemoryStore store_;
};

}  // namespace

std::unique_ptr<StoreUnderTest> MakeStore() {
    return std::make_unique<MemoryStoreUnderTest>();
}
