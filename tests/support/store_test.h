// The fixture of tests above the tables: a database with all tables, and a look at the end at
// whether everything that was opened has been closed.
#ifndef PAGERFWD_TESTS_SUPPORT_STORE_TEST_H
#define PAGERFWD_TESTS_SUPPORT_STORE_TEST_H

#include <gtest/gtest.h>

#include "tests/support/memory_store.h"

namespace test_support {

class StoreTest : public ::testing::Test {
 protected:
    StoreTest() { store.AddAllTables(); }
    void TearDown() override { EXPECT_EQ("", store.Verdict()); }

    MemoryStore store;
};

}  // namespace test_support

#endif
