// The example that users start from.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "host/site/site_check.h"
#include "host/site/site_file.h"
#include "tests/unit/host/files.h"

namespace host {
namespace {

TEST(ExampleSite, HasNoMistakesAndAPagerOfEveryType) {
    ReadSite read = ParseSite(ReadFile(EXAMPLE_SITE));
    CheckSite(read.site, read.findings);
    EXPECT_THAT(read.findings.All(), ::testing::IsEmpty());

    std::set<std::string> types;
    for (const Pager& pager : read.site.pagers) {
        types.insert(pager.type.value);
    }
    EXPECT_THAT(types,
                ::testing::ElementsAre("alphanumeric", "ntt", "numeric", "signal", "sms1", "sms2"));
    EXPECT_EQ(1U, read.site.ports.size());
    EXPECT_EQ(2U, read.site.timeModels.size());
}

}  // namespace
}  // namespace host
