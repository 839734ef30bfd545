// Alarms that wait in files until the database is back.
#include "host/intake/spool.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "host/alarms/raising.h"
#include "host/files/lock_file.h"
#include "host/store/database_name.h"
#include "host/store/tables/history.h"
#include "host/store/tables/spooled.h"
#include "tests/unit/host/files.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class TheSpool : public ServiceTest {
 protected:
    static Spooled OneAlarm(const std::string& text, const std::string& key = "") {
        IncomingAlarm alarm;
        alarm.text = text;
        alarm.key = key;
        return {kNow, "maria", {alarm}, {}};
    }
    std::string Keep(const std::string& name, const Spooled& what) {
        return spool.Keep(name, what);
    }
    // The files there, but for the lock.
    std::vector<std::string> Files() const {
        std::vector<std::string> files;
        for (const auto& entry :
             std::filesystem::directory_iterator(BesideName(database) + "-spool")) {
            if (entry.path().filename() != "lock") {
                files.push_back(entry.path().filename());
            }
        }
        return files;
    }
    std::vector<std::string> Texts() { return Rows("details FROM AlarmLog ORDER BY row_id"); }

    const Spool spool{database};
    const std::string first = "0978948000000000001-00000000000000ff";
    const std::string second = "0978948000000000002-0000000000000000";
};

TEST_F(TheSpool, IsTakenUpInOrder) {
    Keep(second, OneAlarm("b"));
    Keep(first, OneAlarm("a"));
    EXPECT_EQ(2, spool.TakeUp(connection).alarms);
    EXPECT_THAT(Texts(), ElementsAre("a", "b"));
    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_EQ(0, spool.TakeUp(connection).alarms);
}

TEST_F(TheSpool, KeepsTheTimeOfTheCommand) {
    Spooled what = OneAlarm("a");
    what.at = kNow - 3600;
    Keep(first, what);
    spool.TakeUp(connection);
    EXPECT_THAT(Rows("timestamp FROM AlarmLog"), ElementsAre(std::to_string(kNow - 3600)));
}

TEST_F(TheSpool, IsNotTakenUpTwiceWhereWhoDidItDied) {
    Keep(first, OneAlarm("a"));
    spool.TakeUp(connection);
    Keep(first, OneAlarm("a"));  // as if it had not been removed
    EXPECT_EQ(0, spool.TakeUp(connection).alarms);
    EXPECT_THAT(Texts(), ElementsAre("a"));
    EXPECT_THAT(Files(), IsEmpty());
}

// A server may have done what was asked, though its answer was lost.
TEST_F(TheSpool, LeavesOutWhatWasDoneUnderItsName) {
    {
        WriteTransaction transaction(connection);
        NoteTakenUp(connection, first, kNow);
        transaction.Commit();
    }
    Keep(first, OneAlarm("a"));
    spool.TakeUp(connection);
    EXPECT_THAT(Texts(), IsEmpty());
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(TheSpool, WithdrawsToo) {
    Keep(first, OneAlarm("a", "disk"));
    Keep(second, {kNow + 5, "maria", {}, {{"", {"", "disk"}}, {"7", {}}}});
    EXPECT_EQ(3, spool.TakeUp(connection).alarms);
    EXPECT_THAT(Rows("withdrawn || '' FROM AlarmLog"), ElementsAre(std::to_string(kNow + 5)));
}

TEST_F(TheSpool, SetsAsideWhatItCannotRead) {
    const std::string path = Keep(first, OneAlarm("a"));
    WriteFile(path, "{\"at\": 7, \"raise\": [{\"text\": ");
    Keep(second, OneAlarm("b"));
    const TakenUp taken = spool.TakeUp(connection);
    EXPECT_EQ(1, taken.alarms) << "the others don't wait for it";
    ASSERT_EQ(1U, taken.refused.size());
    EXPECT_THAT(taken.refused[0], HasSubstr(path + ".refused"));
    EXPECT_THAT(Files(), ElementsAre(first + ".refused"));
    EXPECT_THAT(spool.TakeUp(connection).refused, IsEmpty()) << "told once";
}

TEST_F(TheSpool, SetsAsideAFileThatIsNoObject) {
    for (const char* text : {"[]", "7", "{}", "{\"at\": \"x\"}", "null", ""}) {
        WriteFile(Keep(first, OneAlarm("a")), text);
        EXPECT_EQ(1U, spool.TakeUp(connection).refused.size()) << text;
    }
    EXPECT_THAT(Texts(), IsEmpty());
}

TEST_F(TheSpool, LeavesOtherFilesAlone) {
    Keep(first, OneAlarm("a"));
    const std::string beside = BesideName(database) + "-spool/";
    WriteFile(beside + second + ".new", "half of it");
    WriteFile(beside + "readme", "x");
    EXPECT_EQ(1, spool.TakeUp(connection).alarms);
    EXPECT_THAT(Files(), ::testing::UnorderedElementsAre(second + ".new", "readme"));
}

TEST_F(TheSpool, IsTakenUpByOneAtATime) {
    Keep(first, OneAlarm("a"));
    LockFile other(BesideName(database) + "-spool/lock", OwnershipOf(BesideOwner(database)));
    ASSERT_TRUE(other.TryTake("another"));
    EXPECT_EQ(0, spool.TakeUp(connection).alarms);
    EXPECT_THAT(Files(), ::testing::Contains(first));
}

// As where its file has been moved away: a node goes on.
TEST_F(TheSpool, WaitsWhereTheDatabaseHasGone) {
    const Spool elsewhere("gone.db");
    WriteFile("gone.db", "");
    const std::string path = elsewhere.Keep(first, OneAlarm("a"));
    std::filesystem::remove("gone.db");
    EXPECT_THROW(elsewhere.TakeUp(connection), StoreError);
    EXPECT_TRUE(std::filesystem::exists(path));
}

TEST_F(TheSpool, KeepsALinkFromLeadingElsewhere) {
    const std::string path = Keep(first, OneAlarm("a"));
    std::filesystem::remove(path);
    WriteFile("secret", "{}");
    std::filesystem::create_symlink(std::filesystem::absolute("secret"), path);
    EXPECT_EQ(1U, spool.TakeUp(connection).refused.size());
    EXPECT_THAT(Texts(), IsEmpty());
}

TEST_F(TheSpool, NamesAreInTheOrderOfTimeAndNeverTheSame) {
    const std::string one = NewSpoolName();
    const std::string two = NewSpoolName();
    EXPECT_NE(one, two);
    EXPECT_EQ(36U, one.size());
}

TEST_F(TheSpool, ForgetsWhatItTookUpWithTheHistory) {
    Keep(first, OneAlarm("a"));
    spool.TakeUp(connection);
    EXPECT_TRUE(WasSpooled(connection, first));
    ForgetHistory(connection, kNow + 1);
    EXPECT_FALSE(WasSpooled(connection, first));
}

}  // namespace
}  // namespace host
