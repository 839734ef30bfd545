// Nodes in a site file: what is written, read back, and found wrong.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/site/site_check.h"
#include "host/site/site_file.h"
#include "host/site/site_writer.h"

namespace host {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kNodes = "[[node]]\nname = \"north\"\n[[node]]\nname = \"south\"\n";

std::string PortPart(const std::string& name, const std::string& more) {
    return "[[port]]\nname = \"" + name + "\"\ndevice = \"/dev/" + name + "\"\n" + more +
           "[port.sms1]\ndial = \"ATDT0,5550101\"\n";
}
std::string PagerPart(const std::string& more) {
    return "[[pager]]\ndescription = \"duty\"\ntype = \"sms1\"\nnumber = \"5550111\"\n" + more +
           "[[route]]\npagers = [\"duty\"]\n";
}
const std::string kNodePorts =
    PortPart("N", "node = \"north\"\n") + PortPart("S", "node = \"south\"\n");

std::vector<std::string> NodeMistakes(const std::string& file) {
    ReadSite read = ParseSite(file);
    CheckSite(read.site, read.findings);
    std::vector<std::string> mistakes;
    for (const Finding& finding : read.findings.All()) {
        mistakes.push_back(finding.what);
    }
    return mistakes;
}

TEST(NodesOfASite, AreNotNeeded) {
    EXPECT_THAT(NodeMistakes(PortPart("N", "") + PagerPart("")), IsEmpty());
}

TEST(NodesOfASite, HavePortsAndPagersOfTheirOwn) {
    EXPECT_THAT(NodeMistakes(kNodes + kNodePorts + PagerPart("")), IsEmpty());
    const std::vector<std::string> of_south = {"no pager can use port \"N\""};
    EXPECT_EQ(of_south, NodeMistakes(kNodes + kNodePorts + PagerPart("node = \"south\"\n")));
    EXPECT_EQ(of_south, NodeMistakes(kNodes + kNodePorts + PagerPart("port = \"S\"\n")));
}

TEST(NodesOfASite, AreWrittenAsTheyWereRead) {
    const std::string file = std::string("[site]\nunknown_outcome = \"ask\"\n") + kNodes +
                             kNodePorts + PagerPart("node = \"south\"\n");
    const Site site = ParseSite(WriteSite(ParseSite(file).site)).site;
    ASSERT_EQ(2U, site.nodes.size());
    EXPECT_EQ("south", site.nodes[1].name.value);
    EXPECT_EQ("north", site.ports[0].node.value);
    EXPECT_EQ("south", site.pagers[0].node.value);
    EXPECT_EQ("ask", site.unknown_outcome.value);
}

TEST(NodesOfASite, HaveANameEach) {
    EXPECT_THAT(NodeMistakes("[[node]]\nname = \"\"\n" + PortPart("N", "") + PagerPart("")),
                ElementsAre("a node has no name"));
    EXPECT_THAT(NodeMistakes(kNodes + std::string("[[node]]\nname = \"north\"\n") + kNodePorts +
                             PagerPart("")),
                ElementsAre("node \"north\" is there already, on line 1"));
}

TEST(NodesOfASite, AreNamedByEachPortWhereThereAreSeveral) {
    EXPECT_THAT(NodeMistakes(kNodes + kNodePorts + PortPart("X", "") + PagerPart("")),
                ElementsAre("port \"X\" names no node"));
    EXPECT_THAT(NodeMistakes("[[node]]\nname = \"north\"\n" + PortPart("N", "node = \"north\"\n") +
                             PortPart("X", "") + PagerPart("")),
                IsEmpty());
}

TEST(NodesOfASite, AreThoseThatPortsAndPagersName) {
    EXPECT_THAT(
        NodeMistakes(kNodes + kNodePorts + PortPart("X", "node = \"west\"\n") + PagerPart("")),
        ElementsAre("port \"X\": there is no node \"west\""));
    EXPECT_THAT(NodeMistakes(PortPart("X", "node = \"west\"\n") + PagerPart("")),
                ElementsAre("port \"X\": there is no node \"west\""));
}

TEST(NodesOfASite, DoLittleWithoutAPort) {
    EXPECT_THAT(NodeMistakes(kNodes + PortPart("N", "node = \"north\"\n") + PagerPart("")),
                ElementsAre("node \"south\" has no port"));
}

TEST(NodesOfASite, AreNotNamedBesidesAPort) {
    EXPECT_THAT(NodeMistakes(kNodes + kNodePorts + PagerPart("port = \"S\"\nnode = \"north\"\n")),
                Contains("pager \"duty\" names both a port and a node"));
}

TEST(NodesOfASite, DoOneOfTwoThingsAboutAnUnknownOutcome) {
    EXPECT_THAT(
        NodeMistakes("[site]\nunknown_outcome = \"guess\"\n" + PortPart("N", "") + PagerPart("")),
        ElementsAre("[site]: there is no unknown_outcome \"guess\""));
}

}  // namespace
}  // namespace host
