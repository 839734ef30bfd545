// A process that can open no file any more.
#include "host/process/open_files.h"

#include <gtest/gtest.h>

#include "tests/support/without_descriptors.h"

namespace host {
namespace {

using test_support::WithoutDescriptors;

TEST(OpeningFiles, IsNotRefusedWhereItIsOnce) {
    OpenFiles files;
    for (int times = 0; times < 3; ++times) {
        EXPECT_FALSE(files.AreRefused());
        const WithoutDescriptors none;
        EXPECT_FALSE(files.AreRefused());
    }
}

TEST(OpeningFiles, IsRefusedWhereItIsTwiceInARowUntilItSucceeds) {
    OpenFiles files;
    {
        const WithoutDescriptors none;
        EXPECT_FALSE(files.AreRefused());
        EXPECT_TRUE(files.AreRefused());
        EXPECT_TRUE(files.AreRefused());
    }
    EXPECT_FALSE(files.AreRefused());
}

}  // namespace
}  // namespace host
