// The reserve: on a disk without any room, the database can be written all the same.
#include "host/store/reserve.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "host/store/pool.h"
#include "tests/proof/file_calls.h"
#include "tests/unit/host/service_test.h"

namespace {

using ::testing::IsEmpty;

class Reserve : public ServiceTest {
 protected:
    Reserve() {
        proof::SkipSyncs();
        host::ReserveRoom(database);
    }
    ~Reserve() override { proof::SetFileRefusal(nullptr); }

    static void FillDisk() { proof::SetFileRefusal(proof::WouldGrow); }

    // What a sending leaves behind.
    void WriteSending(int32_t alarm) {
        WriteEvent(alarm, "duty", 2);
        RewriteEvent(alarm, "duty", 2, 1);
        RewriteEvent(alarm, "duty", 3, 2);
    }

    int64_t SchemaVersion() {
        host::Statement version(connection, "PRAGMA schema_version");
        version.Step();
        return version.Number(0);
    }

    const host::Lease engine{database, host::Refusals::kKept};
};

TEST_F(Reserve, TakesTheEndsOfAThousandPagesOnAFullDisk) {
    FillDisk();
    for (int alarm = 1; alarm <= 1000; ++alarm) {
        WriteSending(alarm);
    }
    EXPECT_THAT(faults, IsEmpty());
    EXPECT_EQ(1000U, Rows("1 FROM AlarmFwd_PagerEvents WHERE PagerState = '3'").size());
}

TEST_F(Reserve, IsMadeOnlyWhereItIsMissing) {
    const int64_t before = SchemaVersion();
    host::ReserveRoom(database);
    EXPECT_EQ(before, SchemaVersion());
}

TEST_F(Reserve, IsRefusedOnADiskWithoutRoom) {
    Execute("CREATE TABLE user (room BLOB)");
    Execute(
        "INSERT INTO user VALUES (zeroblob(1000000)), (zeroblob(1000000)), (zeroblob(1000000))");
    FillDisk();
    EXPECT_THROW(host::ReserveRoom(database), host::StoreError);
}

}  // namespace
