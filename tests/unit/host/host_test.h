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

// A program of tests is compiled for either kind of database.
#ifdef PAGERFWD_TEST_ON_POSTGRES
#include "tests/support/own_postgres.h"

inline std::string NewDatabase() {
    setenv("PAGERFWD_STATE", std::filesystem::current_path().c_str(), 1);
    return test_support::TheServer().MakeDatabase();
}
#else
inline std::string NewDatabase() {
    return "site.db";
}
#endif

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
    const std::string database = NewDatabase();
    std::vector<std::string> faults;
    std::vector<std::string> mended;  // told of faults that have passed
};

#endif
