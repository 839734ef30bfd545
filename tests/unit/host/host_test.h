// The fixture of tests on the host's store: a database with all tables and no row, and the faults
// that the store reports.
#ifndef PAGERFWD_TESTS_UNIT_HOST_HOST_TEST_H
#define PAGERFWD_TESTS_UNIT_HOST_HOST_TEST_H

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "host/store/faults.h"
#include "host/store/pool.h"
#include "host/store/schema.h"
#include "tests/support/temp_dir.h"

class HostTest : public ::testing::Test {
 protected:
    HostTest() {
        host::Connection connection(database, host::Connection::Mode::kCreate);
        host::CreateTables(connection);
        host::SetFaultListener([this](host::FaultNews news, std::string_view message) {
            (news == host::FaultNews::kFault ? faults : mended).emplace_back(message);
        });
    }
    ~HostTest() override {
        host::SetFaultListener(nullptr);
        host::CloseDatabases();
    }

    const test_support::TempDir folder;
    const std::string database = "site.db";
    std::vector<std::string> faults;
    std::vector<std::string> mended;  // told of faults that have passed
};

#endif
