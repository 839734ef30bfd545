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
           "[[route]]\npagers = [\"duty\"]\n[[port]]\nname = \"COM 1\"\n"
           "init = \"AT&F&D2S12=2\"\n[port.pager]\ndial = \"ATDT0\"\n" +
           port +
           "[port.sms1]\ndial = \"ATDT1\"\n[port.sms2]\ndial = \"ATDT2\"\n"
           "[[pager]]\ndescription = \"duty\"\nnumber = \"1@1\"\n" +
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

// Pages begin with the group.
constexpr const char* kGroup = "[[route]]\ngroups = \"J\xC3\xBCrgen\"\npagers = [\"duty\"]\n";

TEST(SendingRules, SayHowAccentsArriveInSevenBits) {
    const std::string mangled =
        "A page with the text \"J\xC3\xBCrgen\" would be sent as \"J|rgen\".";
    const std::string group = kGroup;
    EXPECT_THAT(Consequences(SiteWith("", "type = \"sms1\"\n" + group)), ElementsAre(mangled));
    EXPECT_THAT(Consequences(SiteWith("", "type = \"sms2\"\n" + group)), ElementsAre(mangled));
    EXPECT_THAT(Consequences(SiteWith("", "type = \"alphanumeric\"\n" + group)), IsEmpty());
    EXPECT_THAT(Consequences(SiteWith("data = 7\n", "type = \"alphanumeric\"\n" + group)),
                ElementsAre(mangled));
    EXPECT_THAT(Consequences(SiteWith("data = 7\n", "type = \"numeric\"\n" + group)), IsEmpty());
    EXPECT_THAT(Consequences(SiteWith("", "type = \"sms1\"\n")), IsEmpty());
}

TEST(SendingRules, SayHowAnAccentInANumberArrives) {
    const std::string pager = "[[pager]]\ndescription = \"two\"\ntype = \"sms1\"\n";
    EXPECT_THAT(
        Consequences(SiteWith("", "type = \"sms1\"\n" + pager + "number = \"1\xC3\xBC\"\n")),
        ElementsAre("A page with the text \"1\xC3\xBC\" would be sent as \"1|\"."));
}

TEST(SendingRules, SayNothingOfAccentsInNamesThatNoPageContains) {
    EXPECT_THAT(Consequences(SiteWith("",
                                      "type = \"sms1\"\nowner = \"J\xC3\xBCrgen\"\n[[pager]]\n"
                                      "description = \"J\xC3\xBCrgen\"\ntype = \"sms1\"\n"
                                      "number = \"2\"\n")),
                IsEmpty());
}

TEST(SendingRules, SayItOnceForEachService) {
    EXPECT_THAT(Consequences(SiteWith("",
                                      "type = \"sms1\"\n[[pager]]\ndescription = \"two\"\n"
                                      "number = \"2\"\ntype = \"sms1\"\n" +
                                          std::string(kGroup))),
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
