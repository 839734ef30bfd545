// Tests of engine/page_text.h.
#include "engine/page_text.h"

#include <gtest/gtest.h>

#include <string>

#include "modem/COMHdl.h"

namespace {

class PageText : public ::testing::Test {
 protected:
    PageText() {
        for (const char* name : {"Critical", "Major", "Minor", "Informational", "Unknown"}) {
            names.Add(name);
        }
    }

    // The text of a CString, zero bytes included.
    static std::string Text(const CString& text) {
        return {static_cast<const char*>(text), static_cast<size_t>(text.GetLength())};
    }

    PageContent Compose(int32_t pagerType, const char* number = "555") const {
        return ComposePage(pagerType, number, source);
    }

    CStringArray names;
    PageSource source{"OPS/042", "SRV1", "pump 3 failed", kMajor, &names, 0};

    static constexpr int32_t kMajor = 2;
};

TEST_F(PageText, TypeLabels) {
    EXPECT_STREQ("signal", PagerTypeLabel(0));
    EXPECT_STREQ("numeric", PagerTypeLabel(1));
    EXPECT_STREQ("alphanumeric", PagerTypeLabel(2));
    EXPECT_STREQ("NTT", PagerTypeLabel(3));
    EXPECT_STREQ("UNKNOWN", PagerTypeLabel(6));
    EXPECT_STREQ("UNKNOWN", PagerTypeLabel(-1));
    EXPECT_STREQ("UNKNOWN", PagerTypeLabel(260)) << "not cut to a byte";
}

TEST_F(PageText, KeepsTheParenthesesOfTwoLabels) {
    EXPECT_STREQ("SMS1(TAP) )", PagerTypeLabel(4));
    EXPECT_STREQ("SMS2(UCP) )", PagerTypeLabel(5));
}

struct SeverityCase {
    int32_t severity;
    const char* name;
};

TEST_F(PageText, SeverityNames) {
    const SeverityCase kCases[] = {
        {0, "Critical"},      {1, "Critical"},
        {2, "Major"},         {3, "Minor"},
        {4, "Informational"}, {5, "Unknown"},
        {6, "Unknown"},       {0x7FFFFFFF, "Unknown"},
        {-1, "none"},         {-0x7FFFFFFF - 1, "none"},
    };
    for (const SeverityCase& c : kCases) {
        EXPECT_EQ(c.name, SeverityName(&names, c.severity, "none")) << "severity " << c.severity;
    }
}

TEST_F(PageText, WithoutNamesNoSeverityHasOne) {
    const CStringArray empty;
    EXPECT_EQ("none", SeverityName(nullptr, 1, "none"));
    EXPECT_EQ("none", SeverityName(&empty, 1, "none"));
}

struct NumberCase {
    const char* pagerNumber;
    const char* dialPrefix;
    const char* number;
};

TEST_F(PageText, PagerNumberIsSplitAtTheFirstAt) {
    const NumberCase kCases[] = {
        {"5551234", "", "5551234"},
        {"0800@5551234", "0800", "5551234"},
        {"0800@", "0800", ""},
        {"@5551234", "", "5551234"},
        {"1@2@3", "1", "2@3"},
        {"", "", ""},
        {"@", "", ""},
    };
    for (const NumberCase& c : kCases) {
        PageContent page;
        SplitPagerNumber(c.pagerNumber, &page);
        EXPECT_EQ(c.dialPrefix, page.dialPrefix) << c.pagerNumber;
        EXPECT_EQ(c.number, page.number) << c.pagerNumber;
    }
}

TEST_F(PageText, AlarmTextHasFourParts) {
    EXPECT_EQ("OPS/Major/SRV1/pump 3 failed", AlarmText(source));
}

TEST_F(PageText, GroupCountsUpToItsFirstSlash) {
    source.almGroup = "OPS/042/north";
    EXPECT_EQ("OPS/Major/SRV1/pump 3 failed", AlarmText(source));
    source.almGroup = "/042";
    EXPECT_EQ("/Major/SRV1/pump 3 failed", AlarmText(source));
}

TEST_F(PageText, GroupWithoutASlashIsWholeAndGetsOne) {
    source.almGroup = "OPERATIONS";
    EXPECT_EQ("OPERATIONS/Major/SRV1/pump 3 failed", AlarmText(source));
    source.almGroup = "";
    EXPECT_EQ("/Major/SRV1/pump 3 failed", AlarmText(source));
}

TEST_F(PageText, NegativeSeverityIsSpeltOut) {
    source.severity = -1;
    EXPECT_EQ("OPS/unknown severity/SRV1/pump 3 failed", AlarmText(source));
}

TEST_F(PageText, NullTextsAreEmpty) {
    source.serverN = source.details = nullptr;
    EXPECT_EQ("OPS/Major//", AlarmText(source));
}

struct CodeCase {
    const char* group;
    const char* code;
};

TEST_F(PageText, NumericCodeTakesThreeCharactersBehindTheSlash) {
    const CodeCase kCases[] = {
        {"OPS/042", "042"}, {"OPS/7", "007"}, {"OPS/12345", "123"}, {"OPS/a/b", "a/b"},
        {"OPS/", "999"},    {"OPS", "999"},   {"", "999"},          {"/1", "001"},
    };
    source.serverId = 'X';
    for (const CodeCase& c : kCases) {
        source.almGroup = c.group;
        EXPECT_EQ(std::string(c.code) + "2X", Text(NumericCode(source))) << c.group;
    }
}

TEST_F(PageText, NumericCodeEndsInSeverityAndServer) {
    source.severity = 0;
    source.serverId = 0x12345641;
    EXPECT_EQ("0420A", Text(NumericCode(source)));
    source.serverId = 0;
    EXPECT_EQ(std::string("0420\0", 5), Text(NumericCode(source)));
}

TEST_F(PageText, SignalPageHasNoMessage) {
    const PageContent page = Compose(kSignalPager);
    EXPECT_EQ("", page.message);
    EXPECT_EQ("555", page.number);
    EXPECT_TRUE(page.waitForConnect);
    EXPECT_EQ("", page.numericCode);
}

TEST_F(PageText, KeepsTheNumericCodeOutOfTheMessage) {
    const PageContent page = Compose(kNumericPager);
    EXPECT_EQ("", page.message);
    EXPECT_EQ(std::string("0422\0", 5), Text(page.numericCode));
}

TEST_F(PageText, AlphanumericPageIsCutTo80) {
    const std::string details = std::string(100, 'x');
    source.details = details.c_str();
    const PageContent page = Compose(kAlphanumericPager);
    EXPECT_EQ("OPS/Major/SRV1/" + std::string(65, 'x'), Text(page.message));
    EXPECT_EQ(80, page.message.GetLength());
}

TEST_F(PageText, SmsPagesAreCutTo140) {
    const std::string details = std::string(200, 'x');
    source.details = details.c_str();
    for (const int32_t type : {4, 5}) {
        EXPECT_EQ("OPS/Major/SRV1/" + std::string(125, 'x'), Text(Compose(type).message));
    }
}

TEST_F(PageText, ShortTextsAreWhole) {
    for (const int32_t type : {2, 4, 5}) {
        EXPECT_EQ("OPS/Major/SRV1/pump 3 failed", Compose(type).message);
    }
}

TEST_F(PageText, GroupsOfAnyLengthAreWithinTheCut) {
    const std::string group = std::string(1000, 'g') + "/1";
    source.almGroup = group.c_str();
    EXPECT_EQ(std::string(80, 'g'), Text(Compose(kAlphanumericPager).message));
}

TEST_F(PageText, NTTPageDialsItsNumberAndDoesNotWaitForACall) {
    const PageContent page = Compose(kNTTPager, "0123");
    EXPECT_EQ("2/SRV1", page.message);
    EXPECT_EQ("0123;", page.dialPrefix);
    EXPECT_EQ("0123", page.number);
    EXPECT_FALSE(page.waitForConnect);
}

TEST_F(PageText, NTTPageDialsThePrefixToo) {
    const PageContent page = Compose(kNTTPager, "0@123");
    EXPECT_EQ("0@123;", page.dialPrefix);
    EXPECT_EQ("123", page.number);
}

TEST_F(PageText, OtherTypesHaveNoMessage) {
    for (const int32_t type : {-1, 6, 260}) {
        const PageContent page = Compose(type, "1@2");
        EXPECT_EQ("", page.message);
        EXPECT_EQ("1", page.dialPrefix);
        EXPECT_EQ("2", page.number);
        EXPECT_TRUE(page.waitForConnect);
    }
}

}  // namespace
