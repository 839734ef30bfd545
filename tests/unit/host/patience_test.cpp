// The library's calls while the store can't be used.
#include "host/store/patience.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pagerfwd/table_access.h>

#include <filesystem>
#include <string>
#include <vector>

#include "host/store/faults.h"
#include "host/store/pool.h"
#include "host/store/schema.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host/files.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class Patience : public ::testing::Test {
 protected:
    Patience() {
        {
            Connection made("site.db", Connection::Mode::kCreate);
            CreateTables(made);
        }
        SetFaultListener([this](FaultNews news, std::string_view message) {
            told.push_back((news == FaultNews::kFault ? "fault: " : "mended: ") +
                           std::string(message));
        });
        std::filesystem::rename("site.db", "aside.db");
        WriteFile("site.db", std::string(8192, 'x'));
    }
    ~Patience() override {
        WaitForTables({});
        SetFaultListener({});
        CloseDatabases();
    }
    static int32_t Open() {
        DBAsciiHandle handle = nullptr;
        const int32_t result = DBAsciiAccessOpen("site.db", 'n', &handle);
        if (result == 0) {
            DBAsciiAccessClose(handle);
        }
        return result;
    }

    const test_support::TempDir folder;
    std::vector<std::string> told;
};

TEST_F(Patience, IsNotThereUnlessItIsAskedFor) {
    EXPECT_EQ(-1, Open());
    EXPECT_FALSE(AnyWaits());
}

TEST_F(Patience, LetsTheLibraryWaitUntilTheStoreIsBack) {
    std::vector<int> seconds;
    WaitForTables([&](int second) {
        seconds.push_back(second);
        EXPECT_TRUE(AnyWaits());
        if (second == 3) {
            std::filesystem::rename("aside.db", "site.db");
        }
    });
    EXPECT_EQ(0, Open());
    EXPECT_THAT(seconds, ElementsAre(1, 2, 3));
    EXPECT_FALSE(AnyWaits());
    EXPECT_THAT(told, ElementsAre(HasSubstr("fault: "), HasSubstr("mended: the library waits no")));
}

TEST_F(Patience, IsNotForWhatNeverPasses) {
    std::filesystem::rename("aside.db", "site.db");
    WaitForTables([](int) { FAIL(); });
    DBAsciiHandle handle = nullptr;
    ASSERT_EQ(0, DBAsciiAccessOpen("site.db", 'n', &handle));
    EXPECT_EQ(-1, DBAsciiAccessTableOpen(handle, "Nothing"));
    DBAsciiAccessClose(handle);
}

}  // namespace
}  // namespace host
