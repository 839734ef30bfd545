// Another program that writes to the database: without our limits.
#ifndef PAGERFWD_TESTS_UNIT_HOST_ANOTHER_PROGRAM_H
#define PAGERFWD_TESTS_UNIT_HOST_ANOTHER_PROGRAM_H

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>

inline void WriteAsAnother(const std::string& database, const std::string& sql) {
    sqlite3* connection = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(database.c_str(), &connection));
    EXPECT_EQ(SQLITE_OK, sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr))
        << sqlite3_errmsg(connection);
    sqlite3_close(connection);
}

#endif
