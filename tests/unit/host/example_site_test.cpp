// The example that users start from.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>

#include "host/site/site_check.h"
#include "host/site/site_file.h"

namespace host {
namespace {

TEST(ExampleSite, HasNoMistakesAndAPagerOfEveryType) {
    std::ifstream file(EXAMPLE_SITE, std::ios::binary);
    ReadSite read = ParseSite(std::string(std::istreambuf_iterator<char>(file), {}));
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
