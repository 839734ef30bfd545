// Writes that a full disk refuses: kept, seen, and written when they can be.
#include "host/store/held_writes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <optional>
#include <string>
#include <thread>

#include "host/files/last_room.h"
#include "host/process/last_writes.h"
#include "host/store/pool.h"
#include "tests/proof/file_calls.h"
#include "tests/unit/host/service_test.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class HeldWrites : public ServiceTest {
 protected:
    HeldWrites() { service.emplace(database, host::Refusals::kKept); }
    ~HeldWrites() override { Fill(false); }

    static void Fill(bool full) {
        constexpr proof::FileRefusal kAll = [](proof::FileDeed, int, int64_t) { return true; };
        proof::SetFileRefusal(full ? kAll : nullptr);
    }

    static void Write(host::Connection& by, const std::string& name, const std::string& text) {
        host::WriteTransaction transaction(by);
        host::WriteSetting(by, name, text);
        transaction.Commit();
    }
    void Write(const std::string& name, const std::string& text) {
        Write(service->Database(), name, text);
    }
    std::string Seen(const std::string& name) {
        return host::ReadSetting(service->Database(), name);
    }
    // By another process.
    std::string Written(const std::string& name) { return host::ReadSetting(connection, name); }

    static constexpr const char* kRoom = "site.db-room";
    std::optional<host::Lease> service;
};

TEST_F(HeldWrites, AreSeenAtOnceAndWrittenWhenTheyCanBe) {
    Fill(true);
    Write("a", "1");
    EXPECT_EQ("1", Seen("a"));
    EXPECT_EQ("", Written("a"));
    EXPECT_EQ(1U, service->CountHeld());
    Fill(false);
    EXPECT_EQ("1", Seen("a"));
    EXPECT_EQ("1", Written("a"));
    EXPECT_EQ(0U, service->CountHeld());
}

TEST_F(HeldWrites, AreToldOnceAndSoIsTheirEnd) {
    Fill(true);
    Write("a", "1");
    Write("a", "2");
    Seen("a");
    EXPECT_THAT(faults, ElementsAre(HasSubstr("disk is full; what can't be written is kept")));
    EXPECT_THAT(mended, IsEmpty());
    Fill(false);
    Seen("a");
    Write("a", "3");
    EXPECT_THAT(mended, ElementsAre(HasSubstr("written again; 2 change(s) that had been kept")));
    EXPECT_EQ(1U, faults.size());
}

TEST_F(HeldWrites, StayInTheirOrder) {
    Fill(true);
    Write("a", "1");
    Write("b", "1");
    Write("a", "2");
    Fill(false);
    Write("b", "2");
    EXPECT_EQ("2", Written("a"));
    EXPECT_EQ("2", Written("b"));
}

TEST_F(HeldWrites, AreSeenByEveryConnectionOfTheProcess) {
    Fill(true);
    Write("a", "1");
    std::thread([this] {
        host::Lease worker(database);
        EXPECT_EQ("1", host::ReadSetting(worker.Database(), "a"));
        Write(worker.Database(), "b", "2");
    }).join();
    EXPECT_EQ("2", Seen("b"));
    EXPECT_EQ(2U, service->CountHeld());
}

TEST_F(HeldWrites, SeeWhatOthersWriteMeanwhile) {
    Fill(true);
    Write("a", "1");
    Fill(false);
    Write(connection, "b", "theirs");
    Fill(true);
    EXPECT_EQ("theirs", Seen("b"));
    EXPECT_EQ("1", Seen("a"));
}

TEST_F(HeldWrites, KeepTheTimeAtWhichTheyWereMade) {
    Fill(true);
    WriteEvent(1, "duty", 2);
    const std::string made = std::to_string(time(nullptr));
    sleep(600);
    Fill(false);
    Seen("a");
    EXPECT_THAT(Rows("at FROM Host_History WHERE pager = 'duty'"), ElementsAre(made));
}

// The library replaces a row by deleting it and inserting it anew.
TEST_F(HeldWrites, RewriteAnEvent) {
    WriteEvent(1, "duty", 2);
    Fill(true);
    RewriteEvent(1, "duty", 4, 1);
    Fill(false);
    Seen("a");
    EXPECT_THAT(Rows("PagerState || ' ' || PagerRetries FROM AlarmFwd_PagerEvents"),
                ElementsAre("4 1"));
}

// A transaction that is undone is nobody's.
TEST_F(HeldWrites, AreNotMadeOfWhatIsUndone) {
    Fill(true);
    {
        const host::WriteTransaction undone(service->Database());
        host::WriteSetting(service->Database(), "a", "1");
    }
    EXPECT_EQ("", Seen("a"));
    EXPECT_EQ(0U, service->CountHeld());
}

// One that has become impossible doesn't keep the others from being written.
TEST_F(HeldWrites, AreGivenUpWhereTheyFailByThemselves) {
    Fill(true);
    {
        host::WriteTransaction transaction(service->Database());
        service->Database().Execute("INSERT INTO Host_RoutePagers VALUES (1, 1, 'ours')");
        transaction.Commit();
    }
    Write("a", "1");
    Fill(false);
    Execute("INSERT INTO Host_RoutePagers VALUES (1, 1, 'theirs')");
    EXPECT_EQ("1", Seen("a"));
    EXPECT_EQ("1", Written("a"));
    EXPECT_THAT(faults, ElementsAre(HasSubstr("kept in memory"), HasSubstr("is given up")));
    EXPECT_THAT(Rows("pager FROM Host_RoutePagers"), ElementsAre("theirs"));
}

// On a disk that has no room but what was kept for the end.
TEST_F(HeldWrites, AreWrittenAtTheEndIntoTheLastRoom) {
    host::KeepLastRoom(database);
    constexpr proof::FileRefusal kWhileItIsKept = [](proof::FileDeed, int, int64_t) {
        return access(kRoom, F_OK) == 0;
    };
    proof::SetFileRefusal(kWhileItIsKept);
    Write("a", "1");
    EXPECT_EQ("", Written("a"));
    host::WriteLast(*service, database, log);
    EXPECT_EQ("1", Written("a"));
    EXPECT_EQ("", said.str());
}

TEST_F(HeldWrites, AreToldWhereTheyAreLostAtTheEnd) {
    Fill(true);
    Write("a", "1");
    host::WriteLast(*service, database, log);
    EXPECT_EQ(
        "<3>error: 1 change(s) could not be written to the end; pages that were sent meanwhile "
        "may be sent again\n",
        said.str());
}

// Room that others could take is not given for nothing.
TEST_F(HeldWrites, LeaveTheLastRoomAloneWhereThereAreNone) {
    host::KeepLastRoom(database);
    host::WriteLast(*service, database, log);
    EXPECT_EQ(0, access(kRoom, F_OK));
}

// Only what the process's own engine writes is kept: a command is told that it has failed.
TEST_F(HeldWrites, AreNotThoseOfACommand) {
    Fill(true);
    EXPECT_THROW(Write(connection, "a", "1"), host::StoreError);
}

}  // namespace
