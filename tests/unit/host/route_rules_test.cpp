// What is wrong with a route.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/site/site_check.h"
#include "host/site/site_file.h"

namespace host {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

// "error 12: there is no pager ..." for each finding on a sound site with this route, which begins
// in line 10.
std::vector<std::string> RouteFindings(const std::string& route) {
    constexpr const char* kSite =
        "[[port]]\nname = \"COM 1\"\n[port.sms1]\ndial = \"ATDT1\"\n"
        "[[pager]]\ndescription = \"duty\"\ntype = \"sms1\"\nnumber = \"1\"\nport = \"COM 1\"\n"
        "[[route]]\n";
    ReadSite read = ParseSite(kSite + route);
    CheckSite(read.site, read.findings);
    std::vector<std::string> said;
    for (const Finding& finding : read.findings.All()) {
        said.push_back((finding.severity == Finding::Severity::kError ? "error " : "warning ") +
                       std::to_string(finding.line) + ": " + finding.what);
    }
    return said;
}

TEST(RouteRules, FindNothingWrongWithASoundRoute) {
    EXPECT_THAT(RouteFindings("pagers = [\"duty\"]\n"), IsEmpty());
    EXPECT_THAT(
        RouteFindings("groups = \"PLANT/*\"\npagers = [\"duty\"]\n"
                      "severities = [\"critical\", \"major\", \"minor\", \"informational\", "
                      "\"unknown\"]\n"),
        IsEmpty());
}

TEST(RouteRules, FindASeverityThatNoAlarmHas) {
    EXPECT_THAT(RouteFindings(
                    "groups = \"A\"\npagers = [\"duty\"]\nseverities = [\"minor\",\n\"Major\"]\n"),
                ElementsAre("error 14: route for \"A\": there is no severity \"Major\""));
}

TEST(RouteRules, FindAPagerThatIsNotThere) {
    EXPECT_THAT(RouteFindings("pagers = [\n\"duty\",\n\"nobody\"]\n"),
                ElementsAre("error 13: route for \"*\": there is no pager \"nobody\""));
}

TEST(RouteRules, FindAPagerThatStandsTwice) {
    EXPECT_THAT(RouteFindings("pagers = [\"duty\",\n\"duty\"]\n"),
                ElementsAre("warning 12: route for \"*\": pager \"duty\" stands twice"));
}

TEST(RouteRules, FindARouteToNobody) {
    EXPECT_THAT(RouteFindings("groups = \"A\"\n"),
                ElementsAre("warning 10: route for \"A\": names no pager"));
    EXPECT_THAT(RouteFindings("pagers = []\n"),
                ElementsAre("warning 10: route for \"*\": names no pager"));
}

TEST(RouteRules, FindAPatternThatNoGroupFits) {
    const auto found = [](const std::string& pattern) {
        return RouteFindings("groups = '" + pattern + "'\npagers = [\"duty\"]\n");
    };
    for (const char* pattern : {"PLANT\\", "[z-a]", "a[z-a]*"}) {
        EXPECT_THAT(found(pattern), ElementsAre("error 11: route for \"" + std::string(pattern) +
                                                "\": no group fits this pattern"));
    }
    for (const char* pattern : {"*", "PLANT/*", "?", "[a-c]x", "[!a]", "[", "[a", "[]a]", "[!]a]",
                                "a\\*", "[^x]*[0-9]"}) {
        EXPECT_THAT(found(pattern), IsEmpty()) << pattern;
    }
    for (const char* pattern : {"[\u00FC]", "\u00FC?", "[!\u00E0-\u00FC]"}) {
        EXPECT_THAT(found(pattern), Not(Contains(HasSubstr("no group fits")))) << pattern;
    }
}

TEST(RouteRules, FindAPatternThatFitsNoGroupAtAll) {
    EXPECT_THAT(RouteFindings("groups = \"\"\npagers = [\"duty\"]\n"),
                ElementsAre("warning 11: route for \"\": only alarms without a group fit"));
}

TEST(RouteRules, FindAGroupThatNoAlarmOfTheSiteCanHave) {
    EXPECT_THAT(
        RouteFindings("groups = \"\u6771\"\npagers = [\"duty\"]\n"),
        ElementsAre("error 11: the text \"\u6771\" holds '\u6771' (U+6771), which latin1 doesn't "
                    "have"));
    EXPECT_THAT(RouteFindings("groups = \"a\\u0007\"\npagers = [\"duty\"]\n"),
                ElementsAre("error 11: the text \"a\a\" holds the control character U+0007"));
}

}  // namespace
}  // namespace host
