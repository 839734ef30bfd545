// Traced pages as text, as JSON and as a picture; and which of them are wanted.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <regex>

#include "host/trace/calendar.h"
#include "host/trace_view/page_filter.h"
#include "host/trace_view/page_json.h"
#include "host/trace_view/page_svg.h"
#include "host/trace_view/page_text.h"
#include "tests/unit/host/files.h"
#include "tests/unit/host/recorded_trace.h"

namespace host {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

TracedPage BusyPage(const std::string& pager = "duty") {
    TraceWriter trace;
    trace.Begin(pager).Pass(2).Message().Say("Before Dial").Say("OUT: ATDT1< d>!!!!");
    trace.Say("WaitString( int 7, CString CONNECT, DWORD 120000, BOOL 1 ) L:%d %s").Pass(9);
    trace.Say("WaitString [modemsay=BUSY] L:%d").Say("Modem FAILURE: BUSY");
    trace.Say("WaitString() == 0 L:%d %").Say("Dialing fails!").Pass(6).End();
    return RecordedTrace::Of(trace.Text()).pages.at(0);
}

// --- As text.

TEST(PageText, IsADialogue) {
    EXPECT_EQ(
        "page 1  2001-01-08 10:00:00  \"duty\"  sms1  5550111  COM 1  0:17  not sent (result 6)\n"
        "    dialling failed: the modem said BUSY\n"
        "    alarm OPS/7, server SERVER, severity Major, hours always\n"
        "    text \"OPS/Major/SERVER/door\"\n"
        "  open, 2 s\n"
        "     0:02    paused 2 s\n"
        "  dial, 9 s\n"
        "     0:02  > ATDT1<cr>\n"
        "     0:11  < BUSY\n"
        "     0:11    waited 9 s of 120 s for CONNECT, in vain\n"
        "     0:11  ! Dialing fails!\n"
        "  hang up, 6 s\n"
        "     0:17    paused 6 s\n"
        "\n",
        PageText(Encoding::kLatin1, Colours(false)).Dialogue(BusyPage()));
}

TEST(PageText, TellsOfAWaitThatLastedASecond) {
    TracedPage page = BusyPage();
    page.turns = {{Turn::Kind::kWaited, PagePhase::kDial, 3, 3, "OK", true, 120000},
                  {Turn::Kind::kWaited, PagePhase::kDial, 3, 4, "CONNECT", true, 120000}};
    EXPECT_THAT(
        PageText(Encoding::kLatin1, Colours(false)).Dialogue(page),
        AllOf(HasSubstr("     0:04    waited 1 s for CONNECT\n"), Not(HasSubstr("for OK"))));
}

TEST(PageText, IsColouredOnlyWhenAsked) {
    const TracedPage page = BusyPage();
    EXPECT_THAT(PageText(Encoding::kLatin1, Colours(true)).Dialogue(page),
                AllOf(HasSubstr("\x1b[31mnot sent (result 6)\x1b[0m"),
                      HasSubstr("\x1b[36m> ATDT1<cr>\x1b[0m")));
    EXPECT_THAT(PageText(Encoding::kLatin1, Colours(false)).Dialogue(page), Not(HasSubstr("\x1b")));
}

TEST(PageText, IsInTheEncodingOfTheTerminalAndSteersNone) {
    const std::string text =
        PageText(Encoding::kLatin1, Colours(false)).Summary(BusyPage("J\xFCrgen\x1b[2J\x9b"));
    EXPECT_THAT(text, HasSubstr("\"J\xC3\xBCrgen\\x1b[2J\\xc2\\x9b\""));
    EXPECT_THAT(PageText(Encoding::kShiftJis, Colours(false)).Summary(BusyPage("\xB1")),
                HasSubstr("\"\xEF\xBD\xB1\""));
}

TEST(PageText, SaysDurationsAsClocksDo) {
    EXPECT_EQ("0:00", Duration(0));
    EXPECT_EQ("1:05", Duration(65));
    EXPECT_EQ("2:00:05", Duration(7205));
}

class Lines : public TraceSink {
 public:
    void OnPage(const TracedPage&) override {}
    void OnEvent(const TraceEvent& event) override {
        text += PageText(Encoding::kLatin1, Colours(false)).Event(event);
    }
    std::string text;
};

TEST(PageText, TellsWhatTheEngineSays) {
    std::istringstream trace(
        "?\x1b\n" +
        TraceWriter().Say("Check4DialThreadLoop: duty acked\n").Say("Check4Dial\n").Text() +
        TraceWriter().Say("AlarmFwdPager: pager not found\n").Text());
    Lines lines;
    ReadTrace(trace, lines);
    EXPECT_EQ(
        "--:--:--  ? ?\\x1b\n"
        "10:00:00  acknowledged, so no longer paged: \"duty\"\n"
        "10:00:00  Check4Dial\n"
        "10:00:00  ... but there is no such pager, or more than one\n",
        lines.text);
}

// --- Which are wanted.

TEST(PageFilter, ReadsInstants) {
    const LocalSeconds day = *ParseIsoDate("2001-01-08") * 86400;
    EXPECT_EQ(day, ParseInstant("2001-01-08"));
    EXPECT_EQ(day + 17 * 3600 + 30 * 60, ParseInstant("2001-01-08 17:30"));
    EXPECT_EQ(day + 17 * 3600 + 30 * 60 + 5, ParseInstant("2001-01-08T17:30:05"));
    for (const char* none :
         {"", "yesterday", "2001-01-08 24:00", "2001-01-08 17", "2001-01-08 17:60",
          "2001-01-08  7:30", "2001-01-08x17:30", "2001-02-30"}) {
        EXPECT_THROW(ParseInstant(none), NoInstant) << none;
    }
}

TEST(PageFilter, ReadsEverySecondOfADay) {
    const LocalSeconds day = ParseInstant("2001-01-08");
    EXPECT_EQ(day, ParseInstant("2001-01-08 00:00"));
    EXPECT_EQ(day, ParseInstant("2001-01-08 00:00:00"));
    EXPECT_EQ(day + 86399, ParseInstant("2001-01-08T23:59:59"));
    for (const char* none : {"2001-01-08 24:00", "2001-01-08 00:60", "2001-01-08 00:00:60"}) {
        EXPECT_THROW(ParseInstant(none), NoInstant) << none;
    }
}

TEST(PageFilter, TakesWhatFitsAllItAsksFor) {
    const TracedPage page = BusyPage();
    PageFilter filter;
    EXPECT_TRUE(filter.TakesAll());
    EXPECT_TRUE(filter.Takes(page));
    filter.pager = "duty";
    filter.failed = true;
    filter.number = 1;
    filter.since = filter.until = ParseInstant("2001-01-08 10:00:00");
    EXPECT_TRUE(filter.Takes(page));
    EXPECT_FALSE(filter.TakesAll());

    PageFilter other = filter;
    other.pager = "dut";
    EXPECT_FALSE(other.Takes(page));
    other = filter;
    other.number = 2;
    EXPECT_FALSE(other.Takes(page));
    other = filter;
    other.since = *filter.since + 1;
    EXPECT_FALSE(other.Takes(page));
    other = filter;
    other.until = *filter.until - 1;
    EXPECT_FALSE(other.Takes(page));
}

TEST(PageFilter, TakesNotAllWhereItAsksForAnything) {
    const auto takes_all = [](auto ask) {
        PageFilter filter;
        ask(filter);
        return filter.TakesAll();
    };
    EXPECT_FALSE(takes_all([](PageFilter& filter) { filter.pager = "duty"; }));
    EXPECT_FALSE(takes_all([](PageFilter& filter) { filter.failed = true; }));
    EXPECT_FALSE(takes_all([](PageFilter& filter) { filter.number = 1; }));
    EXPECT_FALSE(takes_all([](PageFilter& filter) { filter.since = 1; }));
    EXPECT_FALSE(takes_all([](PageFilter& filter) { filter.until = 1; }));
}

TEST(PageFilter, KnowsWhatFailed) {
    PageFilter filter;
    filter.failed = true;
    TracedPage page;
    for (const auto& [outcome, failed] : {std::pair{TracedPage::Outcome::kSent, false},
                                          {TracedPage::Outcome::kOutsideHours, false},
                                          {TracedPage::Outcome::kNotSent, true},
                                          {TracedPage::Outcome::kCutOff, true}}) {
        page.outcome = outcome;
        EXPECT_EQ(failed, filter.Takes(page)) << NameOf(outcome);
    }
}

TEST(PageFilter, TakesAPageOfAnUnknownDay) {
    PageFilter filter;
    filter.since = ParseInstant("2001-01-08");
    EXPECT_TRUE(filter.Takes(TracedPage{}));
}

// --- As JSON.

TEST(PageJson, HoldsEverything) {
    const auto json = nlohmann::json::parse(PageAsJson(BusyPage("J\xFCrgen"), Encoding::kLatin1));
    EXPECT_EQ("J\xC3\xBCrgen", json["pager"]);
    EXPECT_EQ("2001-01-08", json["date"]);
    EXPECT_EQ("10:00:00", json["time"]);
    EXPECT_EQ(17, json["seconds"]);
    EXPECT_EQ("not sent", json["outcome"]);
    EXPECT_EQ(6, json["result"]);
    EXPECT_EQ("dialling failed: the modem said BUSY", json["reason"]);
    EXPECT_EQ(json["port_asked"], json["port"]);
    EXPECT_EQ(9, json["phases"]["dial"]);
    EXPECT_EQ("ATDT1<cr>", json["dialogue"][1]["said"]);
    EXPECT_EQ("BUSY", json["dialogue"][2]["heard"]);
    EXPECT_EQ("CONNECT", json["dialogue"][3]["waited_for"]);
    EXPECT_EQ(120000, json["dialogue"][3]["limit_ms"]);
    EXPECT_FALSE(json["dialogue"][3]["found"]);
}

TEST(PageJson, IsAsciiWhateverTheTexts) {
    const std::string json = PageAsJson(BusyPage("\x9b\x7F\xFF\"\\"), Encoding::kLatin1);
    for (const char c : json) {
        EXPECT_TRUE(c == '\n' || (c >= ' ' && c < '\x7F'));
    }
}

// Other programs read them.
TEST(PageJson, HasTheseFields) {
    const auto json = nlohmann::json::parse(PageAsJson(BusyPage(), Encoding::kLatin1));
    std::vector<std::string> names;
    for (const auto& field : json.items()) {
        names.push_back(field.key());
    }
    EXPECT_THAT(
        names, ::testing::UnorderedElementsAre(
                   "page", "line", "date", "time", "seconds", "test", "pager", "type", "number",
                   "port", "port_asked", "settings", "hours", "alarm", "server", "severity", "text",
                   "outcome", "result", "reason", "phases", "dialogue", "dialogue_left_out"));
}

TEST(PageJson, HasNoDayWhereTheTraceHasNone) {
    const auto json = nlohmann::json::parse(PageAsJson(TracedPage{}, Encoding::kLatin1));
    EXPECT_TRUE(json["date"].is_null());
    EXPECT_TRUE(json["result"].is_null());
}

// --- As a picture.

// Whether every element is closed, in the order of their nesting, and no text holds a bare mark.
bool IsWellFormed(const std::string& xml) {
    std::vector<std::string> open;
    for (size_t at = xml.find('<'); at != std::string::npos; at = xml.find('<', at + 1)) {
        const size_t end = xml.find('>', at);
        if (end == std::string::npos) {
            return false;
        }
        const std::string tag = xml.substr(at + 1, end - at - 1);
        if (tag[0] == '?' || tag.back() == '/') {
            continue;
        }
        if (tag[0] != '/') {
            open.push_back(tag.substr(0, tag.find(' ')));
        } else if (open.empty() || open.back() != tag.substr(1)) {
            return false;
        } else {
            open.pop_back();
        }
    }
    return open.empty();
}

TEST(PageSvg, ShowsWhoSpokeWhoWaitedAndForHowLong) {
    const std::string svg = PageAsSvg(BusyPage(), Encoding::kLatin1);
    EXPECT_THAT(svg, StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg "));
    EXPECT_TRUE(IsWellFormed(svg)) << svg;
    EXPECT_THAT(svg,
                AllOf(HasSubstr(">dial 9 s<"), HasSubstr(">ATDT1&lt;cr&gt;<"), HasSubstr(">BUSY<"),
                      HasSubstr(">waited 9 s for CONNECT, in vain<"),
                      HasSubstr("2001-01-08 10:00:00, 17 s, COM 1, not sent: dialling failed")));
}

// As it was looked at: a changed picture is looked at again, and put in its place.
TEST(PageSvg, LooksAsTheOneThatWasLookedAt) {
    const std::string expected = ReadFile(LIBRARY_SOURCES "/tests/unit/host/busy_page.svg");
    TracedPage page = BusyPage();
    page.turns_left_out = 3;
    EXPECT_EQ(expected, PageAsSvg(page, Encoding::kLatin1));
}

constexpr const char* kRed = "#c62828";

TEST(PageSvg, IsRedOnlyWhereThePageFailed) {
    TracedPage page = BusyPage();
    EXPECT_THAT(PageAsSvg(page, Encoding::kLatin1), HasSubstr(kRed));
    for (const auto outcome : {TracedPage::Outcome::kSent, TracedPage::Outcome::kDialled,
                               TracedPage::Outcome::kOutsideHours}) {
        page.outcome = outcome;
        EXPECT_THAT(PageAsSvg(page, Encoding::kLatin1), Not(HasSubstr(kRed)));
    }
}

TEST(PageSvg, NamesThePortThatWasUsed) {
    TracedPage page = BusyPage();
    page.port_used = "COM 2";
    EXPECT_THAT(PageAsSvg(page, Encoding::kLatin1),
                HasSubstr("2001-01-08 10:00:00, 17 s, COM 2, not sent: "));
}

// The times at the left, from top to bottom.
std::vector<std::string> TimesOf(const std::string& svg) {
    std::vector<std::string> times;
    const std::regex time("text-anchor=\"end\"[^>]*>(\\d+:\\d\\d)<");
    for (std::sregex_iterator found(svg.begin(), svg.end(), time), end; found != end; ++found) {
        times.push_back((*found)[1]);
    }
    return times;
}

TEST(PageSvg, HasItsTimesInOrder) {
    TracedPage page = BusyPage();
    page.turns = {{Turn::Kind::kSaid, PagePhase::kDial, 3, 3, "ATDT1", false, 0},
                  {Turn::Kind::kHeard, PagePhase::kDial, 9, 9, "BUSY", false, 0},
                  {Turn::Kind::kWaited, PagePhase::kDial, 3, 12, "CONNECT", false, 120000}};
    EXPECT_THAT(TimesOf(PageAsSvg(page, Encoding::kLatin1)), ElementsAre("0:03", "0:09", "0:12"));
}

TEST(PageSvg, HasItsReasonWholeInAsManyLinesAsItTakes) {
    TracedPage page = BusyPage();
    page.reason.clear();
    for (int word = 100; word < 200; ++word) {
        page.reason += "word" + std::to_string(word) + " ";
    }
    const std::string svg = PageAsSvg(page, Encoding::kLatin1);
    EXPECT_TRUE(IsWellFormed(svg));
    for (int word = 100; word < 200; ++word) {
        EXPECT_THAT(svg, HasSubstr("word" + std::to_string(word))) << word;
    }
    EXPECT_THAT(svg, Not(HasSubstr("\xE2\x80\xA6")));
}

TEST(PageSvg, EscapesWhateverTheTexts) {
    const std::string svg = PageAsSvg(BusyPage("<script>&\"\x1b\x01\xE9"), Encoding::kLatin1);
    EXPECT_TRUE(IsWellFormed(svg)) << svg;
    EXPECT_THAT(svg, AllOf(HasSubstr("&lt;script&gt;&amp;&quot;\\x1b\\x01\xC3\xA9"),
                           Not(HasSubstr("\x1b")), Not(HasSubstr("<script"))));
}

TEST(PageSvg, CutsALongTextAndKeepsItWholeInItsTitle) {
    const std::string svg = PageAsSvg(BusyPage(std::string(300, 'x') + "END"), Encoding::kLatin1);
    EXPECT_TRUE(IsWellFormed(svg));
    EXPECT_THAT(svg, HasSubstr("xxx\xE2\x80\xA6<title>xxx"));
    EXPECT_THAT(svg, HasSubstr("xEND"));
}

TEST(PageSvg, HasRoomForAnyPage) {
    TraceWriter trace;
    trace.Begin();
    for (int i = 0; i < 3000; ++i) {
        trace.Say("OUT: x!!!!").Pass(100);
    }
    const std::string svg =
        PageAsSvg(RecordedTrace::Of(trace.End().Text()).pages.at(0), Encoding::kLatin1);
    EXPECT_TRUE(IsWellFormed(svg));
    EXPECT_THAT(svg, HasSubstr("... and more"));
    EXPECT_TRUE(IsWellFormed(PageAsSvg(TracedPage{}, Encoding::kLatin1)));
}

}  // namespace
}  // namespace host
