// A page that was answered 1 survives a power cut. What is on the disk is taken to be what the
// latest sync of each file found in it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pagerfwd/pagerfwd.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "host/store/connection.h"
#include "host/store/pool.h"
#include "host/store/schema.h"
#include "sim/testing.h"
#include "tests/proof/file_calls.h"
#include "tests/support/temp_dir.h"

namespace proof {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Every file of the folder as it is on the disk, in a folder beside it.
class Disk {
 public:
    explicit Disk(const fs::path& folder) {
        latest = folder / "disk";
        fs::create_directory(latest);
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (entry.is_regular_file()) {
                fs::copy_file(entry.path(), latest / entry.path().filename());
            }
        }
        SetFileHooks(nullptr, Synced);
    }
    ~Disk() { SetFileHooks(nullptr, nullptr); }
    Disk(const Disk&) = delete;
    Disk& operator=(const Disk&) = delete;

    // The machine goes on with what was on the disk: here is its folder.
    static fs::path AfterAPowerCut() {
        const fs::path copy = latest.string() + "-after";
        fs::remove_all(copy);
        fs::copy(latest, copy);
        return copy;
    }

 private:
    // Reads by the descriptor in hand: closing another one of the file would end its locks.
    static void Synced(FileDeed deed, int fd) {
        if (deed != FileDeed::kSync) {
            return;
        }
        const fs::path file = fs::read_symlink("/proc/self/fd/" + std::to_string(fd));
        if (fs::is_directory(file)) {
            return;
        }
        std::ofstream copy(latest / file.filename(), std::ios::binary | std::ios::trunc);
        std::vector<char> block(65536);
        off_t at = 0;
        for (ssize_t got = 0; (got = pread(fd, block.data(), block.size(), at)) > 0; at += got) {
            copy.write(block.data(), got);
        }
    }

    static inline fs::path latest;
};

class PowerCut : public ::testing::Test {
 protected:
    PowerCut() {
        host::Connection connection("site.db", host::Connection::Mode::kCreate);
        host::CreateTables(connection);
        connection.Execute(
            "INSERT INTO AlarmLog (alarmlogID, pagerstate, severity) VALUES ('7', '2', '2');"
            "INSERT INTO AlarmFwd_PagerSetting (description, comport, pgtype, pgnumber, numretries,"
            " retrydelay, timemodel) VALUES ('anna', 'COM 1', '4', '1', '5', '45', 'always')");
    }
    ~PowerCut() override {
        StopAlarmFwdPager();
        host::CloseDatabases();
    }

    int32_t Forward() {
        std::string server = "SRV1";
        std::string group = "OPS/1";
        std::string pager = "anna";
        char* groups[] = {group.data()};
        char* pagers[] = {pager.data()};
        int32_t alarm = 7;
        FwdSpecialInfoStr info{database, &alarm, nullptr, groups};
        return AlarmFwdPager(&info, server.data(), nullptr, pagers, 1);
    }

    static std::vector<std::string> PendingIn(const fs::path& folder) {
        host::Connection connection(folder / "site.db");
        host::Statement rows(connection, "SELECT PagerDescr, PagerState FROM AlarmFwd_PagerEvents");
        std::vector<std::string> pending;
        while (rows.Step()) {
            pending.push_back(std::string(rows.Text(0)) + " " + std::string(rows.Text(1)));
        }
        return pending;
    }

    pagersim::VirtualClock clock;  // its lines: none, so that nothing is sent
    const test_support::TempDir folder;
    char database[8] = "site.db";
};

TEST_F(PowerCut, DoesNotLoseAnAnsweredPage) {
    const Disk disk(folder.Path());
    ASSERT_EQ(1, Forward());
    EXPECT_THAT(PendingIn(Disk::AfterAPowerCut()), ElementsAre("anna 2"));
}

// The test would notice a store that doesn't sync.
TEST_F(PowerCut, LosesWhatWasWrittenWithoutASync) {
    const Disk disk(folder.Path());
    host::Connection connection("site.db");
    connection.Execute(
        "PRAGMA synchronous = OFF;"
        "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, PagerDescr) VALUES ('7', 'anna')");
    EXPECT_THAT(PendingIn(Disk::AfterAPowerCut()), IsEmpty());
}

}  // namespace
}  // namespace proof
