// What a file's commits may be lost by.
#include "host/store/commit_risks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/host/host_test.h"

namespace host {
namespace {

using CommitRisksOfAFile = HostTest;

TEST_F(CommitRisksOfAFile, AreNoneOnADiskOfTheHost) {
    Connection connection(database);
    EXPECT_THAT(CommitRisks(connection), ::testing::IsEmpty());
}

TEST_F(CommitRisksOfAFile, AreFileSystemsThatLieOnANetwork) {
    for (const unsigned long network : {0x6969UL, 0xFF534D42UL, 0xFE534D42UL, 0xC36400UL}) {
        EXPECT_TRUE(IsOfANetwork(network));
    }
    EXPECT_TRUE(IsOfANetwork(static_cast<unsigned long>(static_cast<int>(0xFF534D42U))));
    for (const unsigned long own : {0xEF53UL, 0x58465342UL, 0x9123683EUL, 0x01021994UL}) {
        EXPECT_FALSE(IsOfANetwork(own));
    }
}

}  // namespace
}  // namespace host
