// What gets lost of a text on its way, and what a dead number costs.
#include "host/site/sending_rules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/site/site_check.h"
#include "host/site/site_file.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

std::string SiteWith(const std::string& port, const std::string& pager,
                     const std::string& top = "") {
    return top +
           "[[port]]\nname = \"COM 1\"\ninit = \"AT&F&D2S12=2\"\n[port.pager]\ndial = \"ATDT0\"\n" +
           port +
           "[port.sms1]\ndial = \"ATDT1\"\n[port.sms2]\ndial = \"ATDT2\"\n"
           "[[pager]]\ndescription = \"duty\"\nnumber = \"1\"\n" +
           pager;
}

std::vector<std::string> Consequences(const std::string& text) {
    ReadSite read = ParseSite(text);
    CheckSite(read.site, read.findings);
    std::vector<std::string> consequences;
    for (const Finding& finding : read.findings.All()) {
        EXPECT_EQ(Finding::Severity::kWarning, finding.severity) << finding.what;
        consequences.push_back(finding.consequence);
    }
    return consequences;
}

constexpr const char* kOwner = "owner = \"J\xC3\xBCrgen\"\n";

TEST(SendingRules, SayHowAccentsArriveInSevenBits) {
    const std::string mangled =
        "A page with the text \"J\xC3\xBCrgen\" would be sent as \"J|rgen\".";
    const std::string owner = kOwner;
    EXPECT_THAT(Consequences(SiteWith("", "type = \"sms1\"\n" + owner)), ElementsAre(mangled));
    EXPECT_THAT(Consequences(SiteWith("", "type = \"sms2\"\n" + owner)), ElementsAre(mangled));
    EXPECT_THAT(Consequences(SiteWith("", "type = \"alphanumeric\"\n" + owner)), IsEmpty());
    EXPECT_THAT(Consequences(SiteWith("data = 7\n", "type = \"alphanumeric\"\n" + owner)),
                ElementsAre(mangled));
    EXPECT_THAT(Consequences(SiteWith("data = 7\n", "type = \"numeric\"\n" + owner)), IsEmpty());
    EXPECT_THAT(Consequences(SiteWith("", "type = \"sms1\"\nowner = \"Anna\"\n")), IsEmpty());
}

TEST(SendingRules, SayItOnceForEachService) {
    const std::string pager = "type = \"sms1\"\nowner = \"J\xC3\xBCrgen\"\n";
    EXPECT_THAT(Consequences(SiteWith("", pager +
                                              "[[pager]]\ndescription = \"two\"\n"
                                              "number = \"2\"\n" +
                                              pager)),
                ::testing::SizeIs(1));
}

TEST(SendingRules, SayHowKanaArrive) {
    EXPECT_THAT(
        Consequences(SiteWith("", "type = \"sms1\"\n", "encoding = \"shift_jis\"\n")),
        ElementsAre("A page with the text \"\xEF\xBE\x8E\xEF\xBE\x9F\" would be sent as \"N_\"."));
    EXPECT_THAT(Consequences(SiteWith("", "type = \"ntt\"\n", "encoding = \"shift_jis\"\n")),
                IsEmpty());
}

TEST(SendingRules, SayWhatADeadNumberCosts) {
    const auto cost = [](const std::string& pager) {
        const Site site = ParseSite(SiteWith("", pager)).site;
        const DeadNumber dead = CostOfDeadNumber(site, site.pagers.at(0));
        return std::to_string(dead.calls) + " x " + std::to_string(dead.seconds_each);
    };
    EXPECT_EQ("12 x 325", cost("type = \"sms1\"\n"));
    EXPECT_EQ("2 x 188", cost("type = \"sms2\"\nretries = 0\n"));
    EXPECT_EQ("4 x 287", cost("type = \"ntt\"\nretries = 1\n"));
    EXPECT_EQ("4 x 235", cost("type = \"numeric\"\nretries = 1\n"));

    EXPECT_THAT(Consequences(SiteWith("", "type = \"sms1\"\nretries = 11\n")),
                ElementsAre(HasSubstr("takes up to 130 minutes of the line (24 calls)")));
    EXPECT_THAT(Consequences(SiteWith("", "type = \"sms1\"\nretries = 10\n")), IsEmpty());
}

TEST(SendingRules, KnowThePagerThatCostsMost) {
    EXPECT_EQ(nullptr, CostliestPager(Site{}));
    const Site site = ParseSite(SiteWith("",
                                         "type = \"numeric\"\n[[pager]]\ndescription = \"b\"\n"
                                         "type = \"sms1\"\nnumber = \"2\"\n"))
                          .site;
    EXPECT_EQ("b", CostliestPager(site)->description.value);
}

TEST(SendingRules, SayThatWithoutADelayThereIsNoPause) {
    EXPECT_THAT(Consequences(SiteWith("", "type = \"numeric\"\ndelay = 0\n")),
                ElementsAre(HasSubstr("every minute")));
}

}  // namespace
}  // namespace host
