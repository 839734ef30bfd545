// Reading traces: the pages in them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "host/trace/calendar.h"
#include "tests/unit/host/recorded_trace.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

std::vector<std::string> TurnsOf(const TracedPage& page) {
    std::vector<std::string> turns;
    for (const Turn& turn : page.turns) {
        constexpr const char* kMarks[] = {">", "<", "wait", "pause", "!", "?"};
        turns.push_back(std::to_string(turn.from) + "-" + std::to_string(turn.to) + " " +
                        kMarks[static_cast<size_t>(turn.kind)] + " " + turn.text +
                        (turn.kind == Turn::Kind::kWaited && !turn.found ? " in vain" : ""));
    }
    return turns;
}

TEST(TracedPages, TellWhatWasSaidAndForHowLong) {
    TraceWriter trace;
    trace.Say("x").Begin().Pass(2).Message().Say("OUT: +++!!!!").Wait("OK", 1000, "", 1, false);
    trace.Say("Before Dial").Say("Dial:").Say("ATDT1\r").Say("OUT: ATDT1< d>!!!!");
    trace.Wait("CONNECT", 120000, "\r\nCONNECT\r\n", 9, true).Say("After Dial");
    trace.Say("Before TransMsg").Pass(13).Say("Message transfered!").Pass(5).End();
    const RecordedTrace recorded = RecordedTrace::Of(trace.Text());
    ASSERT_THAT(recorded.pages, SizeIs(1));
    const TracedPage& page = recorded.pages[0];
    EXPECT_EQ(1U, page.number);
    EXPECT_EQ(2U, page.first_line);
    EXPECT_EQ("duty", page.pager);
    EXPECT_EQ("COM 1", page.port);
    EXPECT_EQ("5550111", page.number_called);
    EXPECT_EQ("sms1", page.type);
    EXPECT_EQ("always", page.hours);
    EXPECT_EQ("OPS/7", page.alarm);
    EXPECT_EQ("SERVER", page.server);
    EXPECT_EQ("Major", page.severity);
    EXPECT_EQ("OPS/Major/SERVER/door", page.message);
    EXPECT_EQ(ParseIsoDate("2001-01-08"), page.day);
    EXPECT_EQ(36000, page.second);
    EXPECT_EQ(30, page.seconds);
    EXPECT_FALSE(page.test);
    EXPECT_EQ(TracedPage::Outcome::kSent, page.outcome);
    EXPECT_EQ("", page.reason);
    EXPECT_THAT(page.phase_seconds, ElementsAre(2, 1, 9, 13, 5));
    EXPECT_THAT(TurnsOf(page), ElementsAre("0-2 pause ", "2-2 > +++", "2-3 wait OK in vain",
                                           "3-3 > ATDT1<cr>", "3-3 < <cr><lf>CONNECT<cr><lf>",
                                           "3-12 wait CONNECT", "12-25 pause ", "25-30 pause "));
    ASSERT_THAT(recorded.events, SizeIs(1));
    EXPECT_EQ(TraceKind::kUnknown, recorded.events[0].kind);
}

TEST(TracedPages, KnowThePortThatWasUsed) {
    TraceWriter trace;
    trace.Begin().Say("COM Name: COM 2").End();
    const RecordedTrace recorded = RecordedTrace::Of(trace.Text());
    ASSERT_THAT(recorded.pages, SizeIs(1));
    EXPECT_EQ("COM 1", recorded.pages[0].port);
    EXPECT_EQ("COM 2", recorded.pages[0].Port());
}

struct Failing {
    const char* situation;
    std::vector<std::string> lines;
    TracedPage::Outcome outcome;
    int result;
    const char* reason;
};

TEST(TracedPages, TellWhatBecameOfThem) {
    using Outcome = TracedPage::Outcome;
    const std::vector<Failing> cases = {
        {"no such pager", {"Pager NOT found!"}, Outcome::kNotSent, -1, "the pager is not known"},
        {"no such hours", {"Using unknown Timemodel!"}, Outcome::kNotSent, -1, "hours"},
        {"outside its hours",
         {"IsHourSet: 2 10 0\n", "Time out of bounds! (Good SEND!)"},
         Outcome::kOutsideHours,
         0,
         ""},
        {"a stolen port",
         {"OpenCOMPort [::OpenComm result IE_OPEN: device is already open, used by another "
          "application] L:%d",
          "OpenCOMPort() == -2 L:%d %s", "COM port cannot be opened!"},
         Outcome::kNotSent,
         5,
         "no line: OpenCOMPort [::OpenComm result IE_OPEN: device is already open"},
        {"a dead modem",
         {"Message to send: x", "WaitString( int 7, CString OK, DWORD 2000, BOOL 1 ) L:%d %s",
          "WaitString() == 0 L:%d %", "Cannot Initialize the modem!"},
         Outcome::kNotSent,
         8,
         "the modem didn't answer: waited 0 s for OK, heard nothing"},
        {"a busy line",
         {"Message to send: x", "Before Dial",
          "WaitString( int 7, CString CONNECT, DWORD 120000, BOOL 1 ) L:%d %s",
          "WaitString [modemsay=BUSY] L:%d", "Modem FAILURE: BUSY", "WaitString() == 0 L:%d %",
          "Dialing fails!"},
         Outcome::kNotSent,
         6,
         "dialling failed: the modem said BUSY"},
        {"a refusal",
         {"Message to send: x", "Before Dial", "After Dial", "Before TransMsg",
          "WaitString( int 7, CString \r\x06\r, DWORD 30000, BOOL 1 ) L:%d %s",
          "WaitString [modemsay=512 try later\r] L:%d", "WaitString NO SUCCESS",
          "WaitString() == 0 L:%d %", "TransMsg: D1: no EOT from D1 received",
          "Message NOT transfered!"},
         Outcome::kNotSent,
         7,
         "the centre didn't take the page: TransMsg: D1: no EOT from D1 received; waited 0 s for "
         "<cr><ack><cr>, heard 512 try later<cr>"},
        {"a refusal, and then the carrier is lost",
         {"Message to send: x", "Before Dial", "After Dial", "Before TransMsg",
          "WaitString( int 7, CString \r\x06\r, DWORD 30000, BOOL 1 ) L:%d %s",
          "WaitString [modemsay=515 Message format error\r\x1e\r\r\nNO CARRIER\r\n] L:%d",
          "Modem FAILURE: NO CARRIER", "WaitString() == 0 L:%d %",
          "TransMsg: D1: no EOT from D1 received", "Message NOT transfered!"},
         Outcome::kNotSent,
         7,
         "the centre didn't take the page: the centre said 515 Message format error, then the "
         "modem "
         "NO CARRIER"},
        {"the carrier is lost in the middle",
         {"Message to send: x", "Before Dial", "After Dial", "Before TransMsg",
          "WaitString( int 7, CString \r\x06\r, DWORD 30000, BOOL 1 ) L:%d %s",
          "WaitString [modemsay=\r\nNO CARRIER\r\n] L:%d", "Modem FAILURE: NO CARRIER",
          "WaitString() == 0 L:%d %", "TransMsg: D1: no EOT from D1 received",
          "Message NOT transfered!"},
         Outcome::kNotSent,
         7,
         "the centre didn't take the page: the modem said NO CARRIER"},
        {"dialled, and nothing to transfer",
         {"Message to send: ", "Before Dial", "After Dial", "Before CloseComPort"},
         Outcome::kDialled,
         0,
         ""},
        {"neither sent nor failed", {}, Outcome::kCutOff, 0, "doesn't say what became of it"},
    };
    for (const Failing& wanted : cases) {
        TraceWriter trace;
        trace.Begin();
        for (const std::string& line : wanted.lines) {
            trace.Say(line);
        }
        trace.End();
        const RecordedTrace recorded = RecordedTrace::Of(trace.Text());
        ASSERT_THAT(recorded.pages, SizeIs(1)) << wanted.situation;
        EXPECT_EQ(wanted.outcome, recorded.pages[0].outcome) << wanted.situation;
        EXPECT_EQ(wanted.result, recorded.pages[0].result) << wanted.situation;
        EXPECT_THAT(recorded.pages[0].reason, HasSubstr(wanted.reason)) << wanted.situation;
        EXPECT_THAT(recorded.events, IsEmpty()) << wanted.situation;
    }
}

TEST(TracedPages, AreCutOffByTheEndByTheNextAndByAnotherEngine) {
    const std::string next = TraceWriter().Begin("next").Text();
    for (const std::string& end :
         {std::string(), next, TraceWriter().Say("CPagerHdl::CPagerHdl: site.db\n").Text()}) {
        const RecordedTrace recorded = RecordedTrace::Of(TraceWriter().Begin().Text() + end);
        ASSERT_FALSE(recorded.pages.empty());
        EXPECT_EQ("duty", recorded.pages[0].pager);
        EXPECT_EQ(TracedPage::Outcome::kCutOff, recorded.pages[0].outcome);
    }
}

TEST(TracedPages, AreNotDisturbedByOtherThreads) {
    TraceWriter trace;
    trace.Begin().Message().Say("Before Dial").Say("Dial:").Say("InsertInPagingQueue: other\n");
    trace.Say("ATDT1\r").Say("Before TransMsg").Say("Message transfered!").End();
    const RecordedTrace recorded = RecordedTrace::Of(trace.Text());
    ASSERT_THAT(recorded.pages, SizeIs(1));
    EXPECT_THAT(recorded.pages[0].turns, IsEmpty());
    ASSERT_THAT(recorded.events, SizeIs(1));
    EXPECT_EQ(TraceKind::kQueued, recorded.events[0].kind);
    EXPECT_EQ("other", recorded.events[0].field);
}

TEST(TracedPages, ShowEachThingHeardOnce) {
    TraceWriter trace;
    trace.Begin().Say("WaitString( int 7, CString ID=, DWORD 30000, BOOL 1 ) L:%d %s");
    trace.Say("WaitString [modemsay=HEL] L:%d").Say("H:48").Pass(1);
    trace.Say("WaitString [modemsay=HELLO\nID] L:%d").Say("H:48").Say("\n:a").Pass(1);
    trace.Say("WaitString [modemsay=HELLO\nID=!] L:%d").Say("WaitString [modemsay=HELLO\nID=!]");
    trace.Say("WaitString [tmpsay=ID=!]").Say("WaitString() == 1 L:%d %").End();
    EXPECT_THAT(TurnsOf(RecordedTrace::Of(trace.Text()).pages[0]),
                ElementsAre("0-0 < HEL", "1-1 < LO<lf>ID", "2-2 < =!", "0-2 wait ID="));
}

TEST(TracedPages, ShowWhatTheTraceCutsOnceItIsThere) {
    const std::string said(100, 'x');
    TraceWriter trace;
    trace.Begin().Say("WaitString( int 7, CString ID=, DWORD 30000, BOOL 1 ) L:%d %s");
    trace.Say("WaitString [modemsay=" + said.substr(0, 80) + "] L:%d").Pass(1);
    trace.Say("WaitString [modemsay=" + said.substr(0, 80) + "] L:%d");
    trace.Say("WaitString [modemsay=" + said + "ID=]").Say("WaitString() == 1 L:%d %").End();
    EXPECT_THAT(TurnsOf(RecordedTrace::Of(trace.Text()).pages[0]),
                ElementsAre("0-0 < " + said.substr(0, 80),
                            "1-1 < " + said.substr(80) + "ID=", "0-1 wait ID="));
}

TEST(TracedPages, KeepLinesThatAreNotTheLibrarys) {
    TraceWriter trace;
    trace.Begin().Say("what\x1b[2J").End();
    EXPECT_THAT(TurnsOf(RecordedTrace::Of(trace.Text()).pages[0]),
                ElementsAre("0-0 ? what<esc>[2J"));
}

TEST(TracedPages, LastOverMidnight) {
    TraceWriter trace(86395);
    trace.Begin("duty", "12/31/00").Pass(10).End();
    trace.Say("*** START PAGING ***").Say("Pager NOT found!").End();
    const RecordedTrace recorded = RecordedTrace::Of(trace.Text());
    ASSERT_THAT(recorded.pages, SizeIs(2));
    EXPECT_EQ(10, recorded.pages[0].seconds);
    EXPECT_EQ(ParseIsoDate("2000-12-31"), recorded.pages[0].day);
    EXPECT_EQ(ParseIsoDate("2001-01-01"), recorded.pages[1].day);
}

TEST(TracedPages, AreOfTheDayOnWhichTheyBegan) {
    const std::string text = Stamp(86399) + "*** START PAGING ***\n" + Stamp(0) +
                             "Try to page for duty at 01/01/01\t00:00:00\t: \n";
    EXPECT_EQ(ParseIsoDate("2000-12-31"), RecordedTrace::Of(text).pages[0].day);
}

TEST(TracedPages, KeepABoundedNumberOfTurns) {
    TraceWriter trace;
    trace.Begin();
    for (size_t i = 0; i < kMostTurns + 5; ++i) {
        trace.Say("OUT: x!!!!");
    }
    const TracedPage page = RecordedTrace::Of(trace.End().Text()).pages[0];
    EXPECT_EQ(kMostTurns, page.turns.size());
    EXPECT_EQ(5U, page.turns_left_out);
}

TEST(TracedPages, AreCutOffWhereTheNextBegins) {
    const RecordedTrace read = RecordedTrace::Of(TraceWriter().Begin().Begin("tech").End().Text());
    ASSERT_THAT(read.pages, SizeIs(2));
    EXPECT_EQ("duty", read.pages[0].pager);
    EXPECT_EQ("the trace ends before the page does", read.pages[0].reason);
    EXPECT_EQ("tech", read.pages[1].pager);
}

TEST(TracedPages, AreCutOffWhereAnEngineIsMade) {
    RecordedTrace recorded;
    TraceReader reader(recorded);
    reader.Feed(TraceWriter().Begin().Say("CPagerHdl::CPagerHdl: ./site.db").Text());
    reader.Pause();
    EXPECT_EQ(nullptr, reader.Current());
    EXPECT_THAT(recorded.pages, SizeIs(1));
}

// A port is opened before anything is heard.
TEST(TracedPages, FailForWantOfAPortOnlyAtTheirBeginning) {
    const std::string taken = "COM port cannot be opened!";
    const auto at_first = RecordedTrace::Of(TraceWriter().Begin().Say(taken).End().Text());
    EXPECT_EQ(5, at_first.pages.at(0).result);
    const auto later = RecordedTrace::Of(TraceWriter().Begin().Message().Say(taken).End().Text());
    EXPECT_EQ(0, later.pages.at(0).result);
    ASSERT_THAT(later.pages[0].turns, SizeIs(1));
    EXPECT_EQ(Turn::Kind::kUnknown, later.pages[0].turns[0].kind);
}

TEST(TracedPages, HaveTheSettingsOfTheirLine) {
    const auto read =
        RecordedTrace::Of(TraceWriter().Begin().Say("COM Settings: 2400,n,8,1").End().Text());
    EXPECT_EQ("2400,n,8,1", read.pages.at(0).settings);
}

TEST(TracedPages, ListenForAWhileWithoutWaitingForAnything) {
    const RecordedTrace read = RecordedTrace::Of(
        TraceWriter().Begin().Wait("WAIT_STRING", 2000, "", 2, false).End().Text());
    ASSERT_THAT(read.pages, SizeIs(1));
    ASSERT_THAT(read.pages[0].turns, SizeIs(1));
    EXPECT_EQ(Turn::Kind::kPaused, read.pages[0].turns[0].kind);
    EXPECT_EQ("", read.pages[0].turns[0].text);
}

TEST(TracedPages, CanBeSeenWhileTheyGrow) {
    RecordedTrace recorded;
    TraceReader reader(recorded);
    EXPECT_EQ(nullptr, reader.Current());
    reader.Feed(TraceWriter().Begin().Text());
    reader.Pause();
    ASSERT_NE(nullptr, reader.Current());
    EXPECT_EQ("duty", reader.Current()->pager);
    reader.Feed(TraceWriter().Pass(7).Say("Message to send: x").Text());
    reader.Pause();
    EXPECT_EQ(7, reader.Current()->seconds);
    reader.Feed(TraceWriter().Pass(8).End().Text());
    EXPECT_THAT(recorded.pages, IsEmpty());
    reader.Pause();
    EXPECT_THAT(recorded.pages, SizeIs(1));
    EXPECT_EQ(nullptr, reader.Current());
    reader.Feed(TraceWriter().Begin().Text());
    reader.Finish();
    EXPECT_THAT(recorded.pages, SizeIs(2));
}

TEST(TracedPages, ComeOutOfAnyBytes) {
    std::mt19937 random(2);
    const std::string whole = TraceWriter().Begin().Message().Say("OUT: a< d>!!!!").End().Text();
    for (int round = 0; round < 500; ++round) {
        std::string text = whole + whole;
        for (int change = 0; change < 10; ++change) {
            text[random() % text.size()] = static_cast<char>(random());
            text.erase(random() % text.size(), random() % 4);
        }
        const RecordedTrace recorded = RecordedTrace::Of(text);
        EXPECT_LE(recorded.pages.size(), 2U);
    }
}

// --- What goes over the line, and looks like the library's own words.

TEST(TracedPages, AreNotEndedByWhatIsSent) {
    for (const char* bytes :
         {"*** END PAGING ***", "*** START PAGING ***", "Message transfered!",
          "CPagerHdl::CPagerHdl: x", "Check4DialThreadLoop: Retries exceeded: x/Major/s/",
          "Dialing fails!"}) {
        TraceWriter trace;
        trace.Begin()
            .Say("TransMsg: msg + rn:")
            .Say(bytes)
            .Say("OUT: x!!!!")
            .Say("Message NOT transfered!")
            .Say("*** END PAGING ***");
        const RecordedTrace read = RecordedTrace::Of(trace.Text());
        ASSERT_THAT(read.pages, SizeIs(1)) << bytes;
        EXPECT_EQ(TracedPage::Outcome::kNotSent, read.pages[0].outcome) << bytes;
        EXPECT_EQ(7, read.pages[0].result) << bytes;
        EXPECT_THAT(read.events, IsEmpty()) << bytes;
    }
}

}  // namespace
}  // namespace host
