// The room on the disk, as the operator hears of it.
#include "host/node/room.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "host/store/reserve.h"
#include "tests/unit/host/service_test.h"

namespace {

class RoomTest : public ServiceTest {
 protected:
    void Minute(uint64_t bytes) {
        available = bytes;
        room.Look(now);
        now += 60;
    }
    int64_t FreePages() {
        host::Statement pages(connection, "PRAGMA freelist_count");
        pages.Step();
        return pages.Number(0);
    }

    static constexpr uint64_t kPlenty = uint64_t{1} << 40;
    uint64_t available = kPlenty;
    time_t now = kNow;
    host::OperatorLog log{said, true};
    host::Room room{database, log, [this](const std::string&) { return available; }};
};

TEST_F(RoomTest, IsToldWhenItRunsOutAndWhenItIsBackOnceEach) {
    for (const uint64_t bytes : {kPlenty, uint64_t{4096}, uint64_t{0}, host::Room::kLittle,
                                 uint64_t{0}, kPlenty, kPlenty}) {
        Minute(bytes);
    }
    EXPECT_EQ(
        "<3>error: the disk of site.db is full: 4 KiB are left. Pages go on; alarms can't be "
        "raised soon, and the trace stops. Make room\n"
        "<6>the disk of site.db has room again\n",
        said.str());
}

TEST_F(RoomTest, IsLookedAtOnceAMinute) {
    int looks = 0;
    host::Room counted{database, log, [&](const std::string&) {
                           ++looks;
                           return uint64_t{0};
                       }};
    for (int second = 0; second < 120; ++second) {
        counted.Look(now++);
    }
    EXPECT_EQ(2, looks);
}

TEST_F(RoomTest, IsReservedWhileThereIsSome) {
    Minute(0);
    EXPECT_EQ(0, FreePages());
    Minute(kPlenty);
    EXPECT_GE(FreePages() * 4096, host::kReserve);
}

TEST_F(RoomTest, IsKeptForTheLastWritesToo) {
    Minute(0);
    EXPECT_FALSE(std::filesystem::exists(database + "-room"));
    Minute(kPlenty);
    EXPECT_TRUE(std::filesystem::exists(database + "-room"));
}

TEST_F(RoomTest, IsReservedAnewWhereItIsUsedUp) {
    Minute(kPlenty);
    Execute("CREATE TABLE user (room BLOB)");
    for (int row = 0; row < 3; ++row) {
        Execute("INSERT INTO user VALUES (zeroblob(1000000))");
    }
    EXPECT_LT(FreePages() * 4096, host::kReserve);
    Minute(kPlenty);
    EXPECT_LT(FreePages() * 4096, host::kReserve);
    now += 3600;
    Minute(kPlenty);
    EXPECT_GE(FreePages() * 4096, host::kReserve);
}

TEST_F(RoomTest, IsThatOfTheFileSystem) {
    EXPECT_GT(host::Room::AvailableBytes(database), 0U);
    EXPECT_EQ(std::numeric_limits<uint64_t>::max(), host::Room::AvailableBytes("not/there"));
}

}  // namespace
