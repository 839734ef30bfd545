// The matcher: what it recognises, when it gives up, and what it traces.

#include <algorithm>
#include <thread>

#include "linux/win_system.h"
#include "modem/port_lock.h"
#include "tests/dialogue/modem_dialogue.h"

namespace {

using test_support::TraceEntries;
using ::testing::ElementsAre;

class Matcher : public ModemDialogue {
 protected:
    Matcher() { Open(); }

    // The line that a wait begins with.
    static std::string Begin(const std::string& expected, const std::string& timeout_ms,
                             bool flag = true) {
        const auto handle = static_cast<int>(reinterpret_cast<intptr_t>(Port().handle.load()));
        return "WaitString( int " + std::to_string(handle) + ", CString " + expected + ", DWORD " +
               timeout_ms + ", BOOL " + (flag ? "1" : "0") + " ) L:%d %s";
    }

    static bool HasEntry(const std::string& entry) {
        const std::vector<std::string> entries = TraceEntries();
        return std::find(entries.begin(), entries.end(), entry) != entries.end();
    }
};

constexpr const char* kFound = "WaitString() == 1 L:%d %";
constexpr const char* kNotFound = "WaitString() == 0 L:%d %";
constexpr const char* kLongEnough = "WaitString [modemsay id long enough] L:%d";
constexpr const char* kRound = "WaitString [3rd WHILE] L:%d";
constexpr const char* kNoFirst = "WaitString [first not found] L:%d";
constexpr const char* kFirst = "WaitString [tmpsay includes first letter] L:%d";
constexpr const char* kTooShort = "WaitString [not long enough] L:%d";
constexpr const char* kStillLong = "WaitString [tmpsay still long enough] L:%d";
constexpr const char* kSuccess = "WaitString [!!SUCCESS!!] L:%d";
constexpr const char* kGivenUp = "WaitString NO SUCCESS";

// --- The trace of a wait, from its first to its last line.

TEST_F(Matcher, TracesAnAnswerThatIsSplit) {
    line.Says("\r\nO").Says("K\r\n", 100ms);

    EXPECT_TRUE(WaitFor("OK", 2000));
    // At first an O, but too little behind it. Then the whole; the characters shown are the first
    // ones again.
    const std::vector<std::string> expected = {
        Begin("OK", "2000"),
        "WaitString [modemsay=\r\nO] L:%d",
        "\r:d",
        "\n:a",
        "O:4f",
        kLongEnough,
        kRound,
        kFirst,
        kTooShort,
        "WaitString [modemsay=\r\nOK\r\n] L:%d",
        "\r:d",
        "\n:a",
        "O:4f",
        kLongEnough,
        kRound,
        kFirst,
        kStillLong,
        kSuccess,
        "WaitString [modemsay=\r\nOK\r\n]",
        "WaitString [tmpsay=OK\r\n]",
        kFound,
    };
    EXPECT_EQ(expected, TraceEntries());
}

TEST_F(Matcher, TracesARefusedCall) {
    line.Says("\r\nBUSY\r\n");

    EXPECT_FALSE(WaitFor("CONNECT", 120000));
    EXPECT_THAT(TraceEntries(),
                ElementsAre(Begin("CONNECT", "120000"), "WaitString [modemsay=\r\nBUSY\r\n] L:%d",
                            "\r:d", "\n:a", "B:42", "U:55", "S:53", "Y:59", "\r:d", "\n:a",
                            kLongEnough, kRound, kNoFirst, "Modem FAILURE: BUSY", kNotFound));
    EXPECT_TRUE(CCOMHdl::MainModemError);
    EXPECT_THAT(Elapsed(), IsAbout(0s)) << "at once";
}

TEST_F(Matcher, TracesSilence) {
    EXPECT_FALSE(WaitFor("OK", 1000));
    EXPECT_THAT(TraceEntries(), ElementsAre(Begin("OK", "1000"), kGivenUp, kNotFound));
    EXPECT_THAT(Elapsed(), IsAbout(1000ms));
    EXPECT_FALSE(CCOMHdl::MainModemError);
}

TEST_F(Matcher, SearchesAtMostThreeRounds) {
    line.Says("..OK");
    EXPECT_FALSE(WaitFor("OX", 0));
    EXPECT_THAT(TraceEntries(),
                ElementsAre(Begin("OX", "0"), "WaitString [modemsay=..OK] L:%d", ".:2e", ".:2e",
                            "O:4f", "K:4b", kLongEnough, kRound, kFirst, kStillLong, kRound, kFirst,
                            kStillLong, kRound, kFirst, kStillLong, kGivenUp, kNotFound));
}

TEST_F(Matcher, SearchesTwoRoundsWhereTheTextBeginsWithTheLetter) {
    line.Says("OKOK");
    EXPECT_FALSE(WaitFor("OX", 0));
    const std::vector<std::string> entries = TraceEntries();
    EXPECT_EQ(2, std::count(entries.begin(), entries.end(), kRound));
}

TEST_F(Matcher, ShowsHighBytesWithTheirSign) {
    line.Says("\xE9\x80\x7F");
    EXPECT_TRUE(WaitFor("\xE9"));
    EXPECT_TRUE(HasEntry("\xE9:ffffffe9"));
    EXPECT_TRUE(HasEntry("\x80:ffffff80"));
    EXPECT_TRUE(HasEntry("\x7F:7f"));
}

TEST_F(Matcher, KeepsShowingTheFirstCharactersOfAll) {
    line.Says("ab").Says("xyz", 100ms);
    EXPECT_FALSE(WaitFor("nothing", 500));
    EXPECT_THAT(TraceEntries(),
                ElementsAre(Begin("nothing", "500"), "WaitString [modemsay=ab] L:%d", "a:61",
                            "b:62", "WaitString [modemsay=abxyz] L:%d", "a:61", "b:62", "x:78",
                            kGivenUp, kNotFound));
}

TEST_F(Matcher, ShowsEightyCharactersAtMost) {
    const std::string said = std::string(80, 'a') + std::string(20, 'b');
    line.Says(said);
    EXPECT_FALSE(WaitFor("c", 0));
    const std::vector<std::string> entries = TraceEntries();
    EXPECT_EQ("WaitString [modemsay=" + std::string(80, 'a') + "] L:%d", entries[1]);
    EXPECT_EQ(80, std::count(entries.begin(), entries.end(), "a:61"));
    EXPECT_FALSE(HasEntry("b:62"));
}

TEST_F(Matcher, ShowsTheWholeTextOnSuccess) {
    const std::string said = std::string(100, 'a') + "OK";
    line.Says(said);
    EXPECT_TRUE(WaitFor("OK"));
    EXPECT_TRUE(HasEntry("WaitString [modemsay=" + said + "]"));
    EXPECT_TRUE(HasEntry("WaitString [tmpsay=OK]"));
}

TEST_F(Matcher, TracesPercentSignsAsTheyAre) {
    line.Says("%s%n%d OK");
    EXPECT_TRUE(WaitFor("%d"));
    EXPECT_EQ(Begin("%d", "30000"), TraceEntries()[0]);
    EXPECT_TRUE(HasEntry("WaitString [modemsay=%s%n%d OK] L:%d"));
    EXPECT_TRUE(HasEntry("WaitString [tmpsay=%s%n%d OK]"));
}

TEST_F(Matcher, ShowsNoWaitFlagDuringATestPage) {
    CCOMHdl::ModemTest = true;
    EXPECT_FALSE(handler->WaitString(Port().handle, "OK", 0, true));
    EXPECT_EQ(Begin("OK", "0", false), TraceEntries()[0]);
    CCOMHdl::ModemTest = false;
    test_support::ForgetTrace();
    EXPECT_FALSE(handler->WaitString(Port().handle, "OK", 0, false));
    EXPECT_EQ(Begin("OK", "0", true), TraceEntries()[0]) << "whatever the caller says";
}

// --- What is recognised.

TEST_F(Matcher, FindsAnAnswerSplitAtAnyByte) {
    const std::string answer = "\r\nCONNECT 2400\r\n";
    for (size_t at = 1; at < answer.size(); ++at) {
        SCOPED_TRACE(at);
        line.Says(answer.substr(0, at), 50ms).Says(answer.substr(at), 50ms);
        EXPECT_TRUE(WaitFor("CONNECT"));
        EXPECT_FALSE(WaitFor("nothing", 200)) << "the rest is read away";
    }
}

TEST_F(Matcher, FindsAnAnswerThatComesByteByByte) {
    for (const char c : std::string("\r\nNO CARRIER\r\nOK\r\n")) {
        line.Says(std::string_view(&c, 1), 20ms);
    }
    EXPECT_TRUE(WaitFor("NO CARRIER"));
    EXPECT_FALSE(CCOMHdl::MainModemError) << "what is waited for is no failure";
}

struct FailureCase {
    std::string answer;
    std::string trace;
};

// In the order in which they are looked for.
const FailureCase kFailures[] = {
    {"NO DIALTONE", "Modem FAILURE: NO DIALTONE"},
    {"BUSY", "Modem FAILURE: BUSY"},
    {"NO CARRIER", "Modem FAILURE: NO CARRIER"},
    {"NO ANSWER", "Modem FAILURE: NO ANSWER"},
    {"ERROR", "Modem FAILURE: ERROR"},
};

TEST_F(Matcher, EndsAtEachFailureAnswer) {
    for (const FailureCase& failure : kFailures) {
        SCOPED_TRACE(failure.answer);
        CCOMHdl::MainModemError = false;
        test_support::ForgetTrace();
        const auto before = Elapsed();
        line.Says("\r\n" + failure.answer + "\r\n");
        EXPECT_FALSE(WaitFor("CONNECT"));
        EXPECT_TRUE(CCOMHdl::MainModemError);
        EXPECT_THAT(Milestones(), ElementsAre(failure.trace));
        EXPECT_GT(20ms, Elapsed() - before);
    }
}

TEST_F(Matcher, EndsAtAFailureAnswerSplitAtAnyByte) {
    for (const FailureCase& failure : kFailures) {
        const std::string answer = "\r\n" + failure.answer + "\r\n";
        for (size_t at = 1; at < answer.size(); ++at) {
            SCOPED_TRACE(failure.answer + " split at " + std::to_string(at));
            CCOMHdl::MainModemError = false;
            test_support::ForgetTrace();
            line.Says(answer.substr(0, at)).Says(answer.substr(at), 100ms);
            EXPECT_FALSE(WaitFor("OK"));
            EXPECT_TRUE(CCOMHdl::MainModemError);
            EXPECT_THAT(Milestones(), ElementsAre(failure.trace));
            WaitFor("nothing", 200);
        }
    }
}

TEST_F(Matcher, NamesTheFirstOfTwoFailureAnswers) {
    for (size_t first = 0; first < std::size(kFailures); ++first) {
        for (size_t second = first + 1; second < std::size(kFailures); ++second) {
            for (const bool swapped : {false, true}) {
                const std::string a = kFailures[swapped ? second : first].answer;
                const std::string b = kFailures[swapped ? first : second].answer;
                SCOPED_TRACE(::testing::Message() << a << ", " << b);
                CCOMHdl::MainModemError = false;
                test_support::ForgetTrace();
                std::string both = a;  // in one read
                both.append("\r\n").append(b).append("\r\n");
                line.Says(both);
                EXPECT_FALSE(WaitFor("CONNECT"));
                EXPECT_THAT(Milestones(), ElementsAre(kFailures[first].trace));
            }
        }
    }
}

TEST_F(Matcher, LetsSuccessWinOverFailure) {
    for (const char* said : {"\r\nNO CARRIER\r\n\r\nOK\r\n", "OK BUSY", "ERRORBUSYOK"}) {
        line.Says(said);
        EXPECT_TRUE(WaitFor("OK")) << said;
    }
    EXPECT_FALSE(CCOMHdl::MainModemError);
    EXPECT_THAT(Milestones(), ::testing::IsEmpty());
}

TEST_F(Matcher, KeepsDeafToAFailureShorterThanTheExpectedText) {
    line.Says("BUSY\r\n");
    EXPECT_FALSE(WaitFor("CONNECT", 5000));
    EXPECT_FALSE(CCOMHdl::MainModemError);
    EXPECT_THAT(Milestones(), ElementsAre(kGivenUp));
    EXPECT_FALSE(HasEntry(kLongEnough));
    EXPECT_THAT(Elapsed(), IsAbout(5000ms));
}

TEST_F(Matcher, HearsTheFailureOnceEnoughHasCome) {
    line.Says("BUSY\r\n").Says("\r", 1s);
    EXPECT_FALSE(WaitFor("CONNECT", 5000));
    EXPECT_TRUE(CCOMHdl::MainModemError);
    EXPECT_THAT(Elapsed(), IsAbout(1s));
}

TEST_F(Matcher, HearsEveryFailureWhileItWaitsForOK) {
    line.Says("BUSY");
    EXPECT_FALSE(WaitFor("OK", 5000));
    EXPECT_TRUE(CCOMHdl::MainModemError);
}

TEST_F(Matcher, IsNotDistractedByAnOlderFailure) {
    CCOMHdl::MainModemError = true;
    line.Says("OK", 100ms);
    EXPECT_TRUE(WaitFor("OK"));
    EXPECT_TRUE(CCOMHdl::MainModemError) << "the sender of the page clears it";
    test_support::ForgetTrace();
    EXPECT_FALSE(WaitFor("OK", 100));
    EXPECT_THAT(Milestones(), ::testing::IsEmpty()) << "a time-out after a failure is not told";
}

TEST_F(Matcher, FindsATextBehindAZeroByte) {
    line.Says("\0\0\r\nOK\0"_bytes);
    EXPECT_TRUE(WaitFor("OK"));
    line.Says("\0BUSY"_bytes);
    EXPECT_FALSE(WaitFor("OK"));
    EXPECT_TRUE(CCOMHdl::MainModemError);
}

TEST_F(Matcher, TakesAnythingForAnEmptyText) {
    line.Says("x", 300ms);
    EXPECT_TRUE(WaitFor(""));
    EXPECT_THAT(Elapsed(), IsAbout(300ms));
    EXPECT_FALSE(WaitFor("", 100)) << "but not silence";
}

TEST_F(Matcher, LosesWhatComesWithTheExpectedText) {
    line.Says("OK\r\nCONNECT\r\n");
    EXPECT_TRUE(WaitFor("OK"));
    EXPECT_FALSE(WaitFor("CONNECT", 100));
}

TEST_F(Matcher, ReadsAwayWhatComesDuringAPause) {
    line.Says("left over", 300ms).Says(" and more", 300ms);
    EXPECT_FALSE(WaitFor("WAIT_STRING", 1000));
    EXPECT_THAT(Elapsed(), IsAbout(1000ms));
    test_support::ForgetTrace();
    EXPECT_FALSE(WaitFor("x", 0));
    EXPECT_THAT(TraceEntries(), ElementsAre(Begin("x", "0"), kGivenUp, kNotFound));
}

// --- Time.

TEST_F(Matcher, ReadsOnceWithoutAnyTime) {
    line.Says("OK");
    EXPECT_TRUE(WaitFor("OK", 0));
    EXPECT_FALSE(WaitFor("OK", 0));
    EXPECT_THAT(Elapsed(), IsAbout(0s));
}

TEST_F(Matcher, TakesAnAnswerUpToTheDeadline) {
    line.Says("OK", 2000ms);
    EXPECT_TRUE(WaitFor("OK", 2000));
}

TEST_F(Matcher, IsTooLateBehindTheDeadline) {
    line.Says("OK", 2050ms);
    EXPECT_FALSE(WaitFor("OK", 2000));
}

TEST_F(Matcher, PausesBeforeEachLook) {
    CCOMHdl::MPeekWait = 500;
    line.Says("OK", 100ms);
    EXPECT_TRUE(WaitFor("OK", 30000));
    EXPECT_THAT(Elapsed(), IsAbout(500ms));
}

TEST_F(Matcher, PausesAlsoForTheShortestTime) {
    const auto oneLook = [this] {
        const auto before = Elapsed();
        EXPECT_FALSE(WaitFor("OK", 0));
        return Elapsed() - before;
    };
    const auto withoutPause = oneLook();
    CCOMHdl::MPeekWait = 1;
    EXPECT_EQ(withoutPause + 1ms, oneLook());
}

TEST_F(Matcher, PausesForEachTraceCallWhileTracingIsOff) {
    handler->CloseCOMPort(0);
    MakeHandler();
    CCOMHdl::MPeekWait = 10;
    const pagersim::Milliseconds before = pagersim::VirtualClock::Now();
    ASSERT_EQ(0, handler->OpenCOMPort("COM 1", kSignalPager));
    line.Says("OK");
    const pagersim::Milliseconds opened = pagersim::VirtualClock::Now();
    EXPECT_LT(before, opened);
    EXPECT_TRUE(WaitFor("OK"));
    // One look, and 12 trace calls: begin, what was said, two characters, long enough, round,
    // first letter, still long enough, success, the two texts, end.
    EXPECT_EQ(130ms, pagersim::VirtualClock::Now() - opened);
}

TEST_F(Matcher, LooksOnlyAtTheTimeWhereTheLineCannotBeAsked) {
    CCOMHdl::MPeekWait = 200;
    line.Says("OK");
    faults::FailCommMask(3);
    EXPECT_TRUE(WaitFor("OK", 1000));
    EXPECT_THAT(Elapsed(), IsAbout(800ms)) << "three looks in vain";
    line.Says("OK");
    faults::FailCommMask(1);
    EXPECT_FALSE(WaitFor("OK", 0)) << "its only look was in vain";
}

// The tick count jumps to this value.
void SetTicks(DWORD ticks) {
    const DWORD seconds = (ticks - GetTickCount()) / 1000;
    pagersim::VirtualClock::Set(time(nullptr) + static_cast<time_t>(seconds));
}

TEST_F(Matcher, KeepsAWaitAcrossTheWrapOfTicksShort) {
    SetTicks(0xFFFFFFFFU - 5000);
    opened_at = pagersim::VirtualClock::Now();
    EXPECT_FALSE(WaitFor("OK", 30000));
    EXPECT_THAT(Elapsed(), IsAbout(0s));
    EXPECT_THAT(Milestones(), ElementsAre(kGivenUp));
}

TEST_F(Matcher, KeepsQuietAboutADeadlineThatWrapsToZero) {
    const DWORD untilZero = 0U - GetTickCount();
    EXPECT_FALSE(WaitFor("OK", untilZero));
    EXPECT_THAT(Milestones(), ::testing::IsEmpty());
}

// --- Long answers.

// "000 001 002 ...", so that each place can be told.
std::string Numbered(size_t length) {
    std::string text;
    for (int i = 0; text.size() < length; ++i) {
        text += std::to_string(1000 + i).substr(1) + " ";
    }
    return text.substr(0, length);
}

TEST_F(Matcher, KeepsTheLaterHalfOfALongAnswer) {
    // Read in pieces of the driver's buffer, 128 bytes: 256 are halved to the last 128.
    const std::string said = Numbered(266);
    line.Says(said.substr(0, 128)).Says(said.substr(128, 128), 100ms).Says(said.substr(256), 100ms);
    EXPECT_FALSE(WaitFor("nothing", 1000));
    EXPECT_THAT(Milestones(), ElementsAre("modemsay truncated!!", kGivenUp));
    EXPECT_TRUE(HasEntry("WaitString [modemsay=" + said.substr(128, 80) + "] L:%d"));
}

TEST_F(Matcher, KeepsTheLargerHalfOfAnOddLength) {
    const std::string said = Numbered(265);
    line.Says(said.substr(0, 128)).Says(said.substr(128, 127), 100ms).Says(said.substr(255), 100ms);
    EXPECT_FALSE(WaitFor("nothing", 1000));
    EXPECT_THAT(Milestones(), ElementsAre("modemsay truncated!!", kGivenUp));
    EXPECT_TRUE(HasEntry("WaitString [modemsay=" + said.substr(127, 80) + "] L:%d"));
}

TEST_F(Matcher, KeepsTwoHundredFiftyFourWhole) {
    const std::string said = Numbered(264);
    line.Says(said.substr(0, 128)).Says(said.substr(128, 126), 100ms).Says("OK", 100ms);
    EXPECT_TRUE(WaitFor("OK"));
    EXPECT_FALSE(HasEntry("modemsay truncated!!"));
    EXPECT_TRUE(HasEntry("WaitString [modemsay=" + said.substr(0, 254) + "OK]"));
}

TEST_F(Matcher, FindsATextAcrossTheCut) {
    const std::string said = std::string(125, '.') + "..." + std::string(126, '.') + "CO";
    line.Says(said.substr(0, 128)).Says(said.substr(128), 100ms).Says("NNECT", 100ms);
    EXPECT_TRUE(WaitFor("CONNECT"));
    EXPECT_TRUE(HasEntry("modemsay truncated!!"));
}

TEST_F(Matcher, FindsATextInAFloodOfInput) {
    for (int i = 0; i < 50; ++i) {
        line.Says(std::string(300, '~'), 10ms);
    }
    line.Says("OK", 10ms);
    EXPECT_TRUE(WaitFor("OK"));
}

// --- Locks.

TEST_F(Matcher, TakesNoLock) {
    line.Says("OK");
    const PortLock held;
    bool found = false;
    std::thread other([&] { found = WaitFor("OK"); });
    other.join();
    EXPECT_TRUE(found);
}

}  // namespace
