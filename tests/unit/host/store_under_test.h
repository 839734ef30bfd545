// A table store to hold against the contract of <pagerfwd/table_access.h>. Each program of the
// contract test has one kind, linked in: the host's on SQLite, or the one in memory that stands in
// for it in the library's tests.
#ifndef PAGERFWD_TESTS_UNIT_HOST_STORE_UNDER_TEST_H
#define PAGERFWD_TESTS_UNIT_HOST_STORE_UNDER_TEST_H

#include <memory>
#include <string>

// A database of its own, with all tables and no row.
class StoreUnderTest {
 public:
    virtual ~StoreUnderTest() = default;

    virtual std::string Database() const = 0;
    // "" when the store has no complaint about how it was used.
    virtual std::string Verdict() const = 0;
};

std::unique_ptr<StoreUnderTest> MakeStore();

#endif
