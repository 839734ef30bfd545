// That every text which the library traces is known. The texts are taken out of its sources.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>

#include "host/trace/trace_texts.h"
#include "tests/unit/host/files.h"

namespace host {
namespace {

// What a literal of the sources stands for, its conversions filled in.
std::string Filled(std::string literal) {
    const std::pair<const char*, const char*> kReplacements[] = {
        {R"(\\n)", "\n"}, {R"(\\r)", "\r"}, {R"(\\t)", "\t"},  {R"(\\")", "\""},
        {"%%", "\x01"},   {"%\\*s", "abc"}, {"%s", "abc def"}, {"%c", "O"},
        {"%lx", "ffd0"},  {"%ld", "-1"},    {"%[dx]", "4"},    {"\x01", "%"},
    };
    for (const auto& [from, to] : kReplacements) {
        literal = std::regex_replace(literal, std::regex(from), to);
    }
    return literal;
}

// The texts of all trace calls: the first literal behind the name of one.
std::set<std::string> TextsIn(const std::string& source) {
    const std::regex call(
        R"re((?:Trace|TraceUnlocked|TraceStep|TraceModemFailure|TransferFails|WritePageProtocolEntry|trace\.Format|line)\(\s*"((?:[^"\\]|\\.)*)")re");
    std::set<std::string> texts;
    for (std::sregex_iterator found(source.begin(), source.end(), call), end; found != end;
         ++found) {
        texts.insert((*found)[1]);
    }
    return texts;
}

TEST(TraceTexts, KnowEveryTextOfTheLibrary) {
    std::set<std::string> texts = {"Modem FAILURE: BUSY"};
    for (const char* folder : {"engine", "modem", "tables"}) {
        for (const auto& file :
             std::filesystem::directory_iterator(std::string(LIBRARY_SOURCES) + "/" + folder)) {
            texts.merge(TextsIn(ReadFile(file.path())));
        }
    }
    EXPECT_GT(texts.size(), 90U);
    for (const std::string& text : texts) {
        if (text == "%s" || text == "%s%s") {
            continue;  // a text of its own stands behind it
        }
        // Some are formats, and others, with the same marks in them, are not.
        EXPECT_TRUE(Understand(Filled(text)).kind != TraceKind::kUnknown ||
                    Understand(text).kind != TraceKind::kUnknown)
            << text;
    }
}

TEST(TraceTexts, FindThePartThatVaries) {
    const auto field = [](const char* text) { return std::string(Understand(text).field); };
    EXPECT_EQ("COM 1", field("COM: COM 1"));
    EXPECT_EQ("ID=", field("WaitString [modemsay=ID=] L:%d"));
    EXPECT_EQ("ID=", field("WaitString [modemsay=ID=]"));
    EXPECT_EQ("duty", field("Check4DialThreadLoop: Retries exceeded1: duty\n"));
    EXPECT_EQ("duty", field("Check4DialThreadLoop: duty acked\n"));
    EXPECT_EQ("AT< d>", field("OUT: AT< d>!!!!"));
    EXPECT_EQ("", field("Message to send: "));
    EXPECT_EQ("no ID= received", field("no ID= received"));
}

TEST(TraceTexts, LeaveOthersUnknown) {
    for (const char* text : {"", "Hello", "OUT: never ended", "*** START PAGING", "WaitString"}) {
        EXPECT_EQ(TraceKind::kUnknown, Understand(text).kind) << text;
    }
}

TEST(TraceTexts, KnowTheResultOfEveryFailure) {
    for (const auto& [text, result] : {std::pair{"Pager NOT found!", -1},
                                       {"Using unknown Timemodel!", -1},
                                       {"COM port cannot be opened!", 5},
                                       {"Cannot Initialize the modem!", 8},
                                       {"Dialing fails!", 6},
                                       {"Message NOT transfered!", 7}}) {
        EXPECT_EQ(TraceKind::kFailed, Understand(text).kind);
        const PageFailure* const failure = FindPageFailure(text);
        ASSERT_NE(nullptr, failure);
        EXPECT_EQ(result, failure->result);
        EXPECT_STRNE("", failure->words);
    }
    EXPECT_EQ(nullptr, FindPageFailure("Dialing"));
}

TEST(TraceTexts, KnowTheTypesOfPagers) {
    EXPECT_EQ("sms1", TypeFor("SMS1(TAP) )"));
    EXPECT_EQ("ntt", TypeFor("NTT"));
    EXPECT_EQ("unknown", TypeFor("UNKNOWN"));
}

}  // namespace
}  // namespace host
