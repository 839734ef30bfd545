// Another program that writes to the database: without our limits.
#ifndef PAGERFWD_TESTS_UNIT_HOST_ANOTHER_PROGRAM_H
#define PAGERFWD_TESTS_UNIT_HOST_ANOTHER_PROGRAM_H

#include <gtest/gtest.h>

#include <string>

#ifdef PAGERFWD_TEST_ON_POSTGRES
#include <regex>

#include "tests/support/own_postgres.h"

inline void WriteAsAnother(const std::string& database, const std::string& sql) {
    const std::regex large("hex\\(zeroblob\\(600000\\)\\)");
    test_support::OwnPostgres::Ask(database,
                                   std::regex_replace(sql, large, "repeat('0', 1200000)"));
}
#else
#include <sqlite3.h>

inline void WriteAsAnother(const std::string& database, const std::string& sql) {
    sqlite3* connection = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(database.c_str(), &connection));
    EXPECT_EQ(SQLITE_OK, sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr))
        << sqlite3_errmsg(connection);
    sqlite3_close(connection);
}
#endif

#endif
