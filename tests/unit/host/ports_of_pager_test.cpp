// Which ports can have the pages of a pager.
#include "host/site/ports_of_pager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/site/site_file.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kLines = R"([[port]]
name = "north"
[port.sms1]
dial = "ATDT1"
[port.pager]
dial = "ATDT0,"

[[port]]
name = "south"
[port.sms1]
dial = "ATDT1"
[port.sms2]
dial = "ATDT2"

[[port]]
name = "null"
modem = false
[port.sms1]
dial = "ATDT1"
)";

std::vector<std::string> PortsFor(const std::string& type, const std::string& port) {
    const Site site = ParseSite(kLines + ("[[pager]]\ndescription = \"a\"\ntype = \"" + type +
                                          "\"\nnumber = \"1\"\nport = \"" + port + "\"\n"))
                          .site;
    std::vector<std::string> names;
    for (const Port* const found : PortsOf(site, site.pagers.front())) {
        names.push_back(found->name.value);
    }
    return names;
}

TEST(PortsOfAPager, AreAllThatCanDialForItsType) {
    EXPECT_THAT(PortsFor("sms1", ""), ElementsAre("north", "south"));
    EXPECT_THAT(PortsFor("sms2", ""), ElementsAre("south"));
    EXPECT_THAT(PortsFor("ntt", ""), ElementsAre("north"));
}

TEST(PortsOfAPager, AreTheOneThatItNames) {
    EXPECT_THAT(PortsFor("sms1", "south"), ElementsAre("south"));
    EXPECT_THAT(PortsFor("sms2", "north"), ElementsAre("north")) << "a mistake of its own";
    EXPECT_THAT(PortsFor("sms1", "west"), IsEmpty());
}

TEST(PortsOfAPager, MayBeOneOnly) {
    const Site site = ParseSite(kLines + std::string(R"([[pager]]
description = "both"
type = "sms1"
number = "1"
[[pager]]
description = "bound"
type = "sms1"
number = "1"
port = "south"
[[pager]]
description = "lonely"
type = "signal"
number = "1"
[[pager]]
description = "lost"
type = "sms1"
number = "1"
port = "west"
)"))
                          .site;
    const std::vector<OnlyPort> found = PagersOfOnePort(site);
    ASSERT_EQ(2U, found.size());
    EXPECT_EQ("bound", found[0].pager->description.value);
    EXPECT_EQ("south", found[0].port->name.value);
    EXPECT_EQ("lonely", found[1].pager->description.value);
    EXPECT_EQ("north", found[1].port->name.value);
}

}  // namespace
}  // namespace host
