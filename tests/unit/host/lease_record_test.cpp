// What a host remembers of the lease that its node had last.
#include "host/process/lease_record.h"

#include <gtest/gtest.h>

#include <fstream>

#include "tests/support/temp_dir.h"

namespace host {
namespace {

class ALeaseRecord : public ::testing::Test {
 protected:
    test_support::TempDir folder_;
    const std::string database_ = folder_.Path() / "site.db";
};

TEST_F(ALeaseRecord, KnowsTheLastOneAlone) {
    EXPECT_FALSE(WasOfThisHost(database_, {"north", 3, "alpha, process 71"}));
    RecordLease(database_, {"north", 3, "alpha, process 71"});
    EXPECT_TRUE(WasOfThisHost(database_, {"north", 3, "alpha, process 71"}));
    RecordLease(database_, {"north", 4, "alpha, process 9"});
    EXPECT_FALSE(WasOfThisHost(database_, {"north", 3, "alpha, process 71"}));
}

TEST_F(ALeaseRecord, TakesNoOtherForIt) {
    RecordLease(database_, {"north", 3, "alpha, process 71"});
    EXPECT_FALSE(WasOfThisHost(database_, {"south", 3, "alpha, process 71"}));
    EXPECT_FALSE(WasOfThisHost(database_, {"north", 33, "alpha, process 71"}));
    EXPECT_FALSE(WasOfThisHost(database_, {"north", 3, "alpha, process 7"}));
    EXPECT_FALSE(WasOfThisHost(database_, {"north", 3, "alpha, process 711"}));
}

TEST_F(ALeaseRecord, IsNoneWhereItCantBeWritten) {
    RecordLease("/nowhere/site.db", {"north", 3, "alpha, process 71"});
    EXPECT_FALSE(WasOfThisHost("/nowhere/site.db", {"north", 3, "alpha, process 71"}));
    std::ofstream(database_ + "-lease") << "";
    EXPECT_FALSE(WasOfThisHost(database_, {"", 0, ""}));
}

}  // namespace
}  // namespace host
