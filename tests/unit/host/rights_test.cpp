// What an administrator is given to make a site's tables by.
#include "host/store/rights.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/store/connection.h"
#include "tests/unit/host/host_test.h"

namespace host {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::UnorderedElementsAreArray;

using Rights = HostTest;

TEST_F(Rights, AreSaidOfEveryTable) {
    Connection connection(database);
    const std::vector<std::string> made =
        Statement(
            connection,
            "SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT LIKE 'sqlite_%'")
            .Texts();
    std::vector<std::string> named;
    for (const TableRights& rights : AllTables()) {
        named.emplace_back(rights.table);
    }
    EXPECT_THAT(named, UnorderedElementsAreArray(made));
}

TEST_F(Rights, ToLookAtAllHasEveryRoleThatMayChangeAnything) {
    for (const TableRights& rights : AllTables()) {
        for (const std::string letters : {rights.node, rights.line, rights.web}) {
            EXPECT_TRUE(letters.empty() || letters.front() == 'S') << rights.table;
        }
    }
}

TEST_F(Rights, ArePrintedBehindTheTables) {
    const std::string schema = SchemaForPostgres();
    EXPECT_THAT(schema, HasSubstr("CREATE TABLE Host_Trail ("));
    EXPECT_THAT(schema, HasSubstr("GRANT SELECT, INSERT, UPDATE ON AlarmLog TO pagerfwd_web;\n"));
    EXPECT_THAT(schema, HasSubstr("GRANT SELECT ON AlarmLog TO pagerfwd_reader;\n"));
    EXPECT_THAT(schema, Not(HasSubstr("WITHOUT ROWID")));
    EXPECT_LT(schema.find("CREATE TABLE"), schema.find("CREATE ROLE"));
}

}  // namespace
}  // namespace host
