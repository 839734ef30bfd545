// What `init` says of the end of a call, where a centre leaves it to the caller.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/site/site_check.h"
#include "host/site/site_file.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::string> HangUpFindings(const std::string& init, const std::string& pager,
                                        const std::string& port = "") {
    ReadSite read = ParseSite("[[port]]\nname = \"COM 1\"\n" + init +
                              "[port.sms1]\ndial = \"ATDT1\"\n[port.sms2]\ndial = \"ATDT2\"\n" +
                              port + "[[pager]]\ndescription = \"duty\"\nnumber = \"1\"\n" + pager +
                              "[[route]]\npagers = [\"duty\"]\n");
    CheckSite(read.site, read.findings);
    std::vector<std::string> found;
    for (const Finding& finding : read.findings.All()) {
        EXPECT_EQ(Finding::Severity::kWarning, finding.severity);
        found.push_back(std::to_string(finding.line) + ": " + finding.what);
    }
    return found;
}

constexpr const char* kUcp = "type = \"sms2\"\n";

TEST(HangUpRules, ModemOfAUcpPagerNeedsAShortGuardTime) {
    const std::string found = "3: port \"COM 1\": init leaves the modem a long guard time";
    for (const char* init :
         {"AT&F", "AT&F&D2", "AT&F&D2S12=6", "AT&F&D2S12=50", "ATS12=2&F", "ATS12"}) {
        EXPECT_THAT(HangUpFindings("init = \"" + std::string(init) + "\"\n", kUcp),
                    ElementsAre(found))
            << init;
    }
    for (const char* init : {"AT&F&D2S12=2", "at &f s12 = 5", "ATS12=0", "AT&FS12=50S12=2"}) {
        EXPECT_THAT(HangUpFindings("init = \"" + std::string(init) + "\"\n", kUcp), IsEmpty())
            << init;
    }
}

TEST(HangUpRules, WhatIsAdvisedIsTakenForGood) {
    ReadSite read = ParseSite(
        "[[port]]\nname = \"COM 1\"\n[port.sms2]\ndial = \"ATDT2\"\n"
        "[[pager]]\ndescription = \"duty\"\nnumber = \"1\"\ntype = \"sms2\"\n"
        "[[route]]\npagers = [\"duty\"]\n");
    CheckSite(read.site, read.findings);
    ASSERT_EQ(1U, read.findings.All().size());
    const std::string& remedy = read.findings.All()[0].remedy;
    EXPECT_THAT(HangUpFindings(remedy.substr(remedy.find("init = ")) + "\n", kUcp), IsEmpty());
}

TEST(HangUpRules, OtherCentresHangUpThemselves) {
    for (const char* type : {"sms1", "ntt"}) {
        EXPECT_THAT(HangUpFindings("init = \"AT&F\"\n", "type = \"" + std::string(type) + "\"\n",
                                   "[port.pager]\ndial = \"ATDT0\"\n"),
                    IsEmpty())
            << type;
    }
}

TEST(HangUpRules, PortThatNoUcpPagerUsesDoesntMatter) {
    EXPECT_THAT(
        HangUpFindings("init = \"AT&F&D2S12=2\"\n", std::string(kUcp) + "port = \"COM 1\"\n",
                       "[[port]]\nname = \"COM 2\"\ninit = \"AT&F\"\n"),
        ElementsAre("8: no pager can use port \"COM 2\""));
}

}  // namespace
}  // namespace host
