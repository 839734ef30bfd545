// Driving the modem: initialise, dial, hang up, give the port back.

#include <thread>

#include "linux/win_system.h"
#include "modem/port_lock.h"
#include "tests/dialogue/modem_dialogue.h"

namespace {

using test_support::TraceEntries;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class ModemControl : public ModemDialogue {
 protected:
    ModemControl() { Open(); }

    // The modem answers all three commands of a reset; the answer to "+++" comes only on line.
    void ResetIsAnswered() {
        line.Hears("+++").Says("\r\nOK\r\n", 800ms);
        line.Hears("ATHV1\r\n").Says("\r\nOK\r\n", 100ms);
        line.Hears("ATZ0\r").Says("\r\nOK\r\n", 200ms);
    }

    Outcome Init() {
        int code = kUntouched;
        const bool done = handler->InitModem(0, &code);
        return {done, code};
    }

    struct Call {
        const char* number = "";
        int protocol = kAlphanumericPager;
        const char* text = "a text";
        bool wait_for_connect = true;
    };

    Outcome Dial(const Call& call) {
        int code = kUntouched;
        const bool done = handler->Dial(0, call.number, static_cast<unsigned char>(call.protocol),
                                        call.text, call.wait_for_connect, &code);
        return {done, code};
    }
};

// --- ResetModem

TEST_F(ModemControl, ResetHangsUp) {
    ResetIsAnswered();
    EXPECT_TRUE(handler->ResetModem(0));
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(), ElementsAre("OUT: +++!!!!", "ResetModem: +++",
                                          "OUT: ATHV1< d>< a>!!!!", "ResetModem: ATHV1\r\n",
                                          "ResetModem: resStr:", "ATZ0\r", "OUT: ATZ0< d>!!!!"));
    EXPECT_THAT(Elapsed(), IsAbout(800ms + 100ms + 200ms + 5s)) << "and waits five seconds";
}

TEST_F(ModemControl, ResetNeedsTheAnswerToItsLastCommandOnly) {
    line.Hears("+++").Hears("ATHV1\r\n").Hears("ATZ0\r").Says("OK");
    EXPECT_TRUE(handler->ResetModem(0));
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Elapsed(), IsAbout(1s + 2s + 5s));
}

TEST_F(ModemControl, ResetIsNotConfirmed) {
    line.Hears("+++").Says("OK").Hears("ATHV1\r\n").Says("OK").Hears("ATZ0\r").Says("ERROR");
    EXPECT_FALSE(handler->ResetModem(0));
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ("Modem FAILURE: ERROR", Milestones().back());
    EXPECT_THAT(Elapsed(), IsAbout(5s));
}

TEST_F(ModemControl, ResetOfASilentModemTakesTenSeconds) {
    line.Hears("+++").Hears("ATHV1\r\n").Hears("ATZ0\r");
    EXPECT_FALSE(handler->ResetModem(0));
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Elapsed(), IsAbout(1s + 2s + 2s + 5s));
}

TEST_F(ModemControl, ResetCommandCannotBeSent) {
    faults::FailWrite(3);
    line.Hears("+++").Says("OK").Hears("ATHV1\r\n").Says("OK");
    EXPECT_FALSE(handler->ResetModem(0));
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ("OUT: ATZ0< d>!!!!", Milestones().back());
    EXPECT_TRUE(faults::ErrorStateWasAskedFor());
    EXPECT_THAT(Elapsed(), IsAbout(5s)) << "all the same";
}

TEST_F(ModemControl, ResetGoesOnWhenItsFirstCommandsCannotBeSent) {
    for (const int nth : {1, 2}) {
        faults::FailWrite(nth);
        line.Hears(nth == 1 ? "ATHV1\r\n" : "+++").Says("OK");
        line.Hears("ATZ0\r").Says("OK");
        EXPECT_TRUE(handler->ResetModem(0));
        EXPECT_EQ("", line.Verdict());
    }
}

TEST_F(ModemControl, ResetAndCloseTakeNoLock) {
    ResetIsAnswered();
    const PortLock held;
    bool done = false;
    std::thread other([&] { done = handler->ResetModem(0) && handler->CloseCOMPort(0); });
    other.join();
    EXPECT_TRUE(done);
}

// --- InitModem

TEST_F(ModemControl, InitialisesTheModem) {
    ResetIsAnswered();
    line.Hears("AT&F0V1\r").Says("AT&F0V1\r\r\nOK\r\n", 100ms);
    EXPECT_EQ((Outcome{true, kUntouched}), Init());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(
        Milestones(),
        ElementsAre("OUT: +++!!!!", "ResetModem: +++", "OUT: ATHV1< d>< a>!!!!",
                    "ResetModem: ATHV1\r\n", "ResetModem: resStr:", "ATZ0\r", "OUT: ATZ0< d>!!!!",
                    "WaitString NO SUCCESS", "InitModem:", "AT&F0V1\r", "OUT: AT&F0V1< d>!!!!"));
    EXPECT_THAT(TraceEntries(), Contains(HasSubstr(", CString WAIT_STRING, DWORD 1000, ")));
}

TEST_F(ModemControl, InitialisesAModemThatWasNotReset) {
    line.Hears("+++").Hears("ATHV1\r\n").Hears("ATZ0\r").Hears("AT&F0V1\r").Says("OK");
    EXPECT_EQ((Outcome{true, kUntouched}), Init());
    EXPECT_EQ("", line.Verdict());
}

TEST_F(ModemControl, ReadsAwayOldAnswersBeforeItInitialises) {
    ResetIsAnswered();
    line.Says("OK\r\n", 5500ms).Hears("AT&F0V1\r");
    EXPECT_EQ(Failed(8), Init()) << "the late OK is not taken for the answer";
    EXPECT_EQ("", line.Verdict());
}

TEST_F(ModemControl, ModemDoesNotConfirmItsInitialisation) {
    ResetIsAnswered();
    line.Hears("AT&F0V1\r").Says("ERROR\r\n");
    EXPECT_EQ(Failed(8), Init());
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ("Modem FAILURE: ERROR", Milestones().back());
}

TEST_F(ModemControl, ModemIsSilentAtItsInitialisation) {
    line.Hears("+++").Hears("ATHV1\r\n").Hears("ATZ0\r").Hears("AT&F0V1\r");
    EXPECT_EQ(Failed(8), Init());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Elapsed(), IsAbout(10s + 1s + 2s));
}

TEST_F(ModemControl, InitialisationCannotBeSent) {
    faults::FailWrite(4);
    ResetIsAnswered();
    EXPECT_EQ(Failed(8), Init());
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ("OUT: AT&F0V1< d>!!!!", Milestones().back());
    EXPECT_TRUE(faults::ErrorStateWasAskedFor());
}

TEST_F(ModemControl, InitialisationNeedsNoPlaceForItsCode) {
    faults::FailWrite(4);
    ResetIsAnswered();
    EXPECT_FALSE(handler->InitModem(0, nullptr));
}

// --- Dial

TEST_F(ModemControl, DialsAndWaitsForTheCall) {
    line.Hears("ATDT0,55501104711\r").Says("\r\nCONNECT 2400\r\n", 30s);
    EXPECT_EQ(kDone, Dial({"4711"}));
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(),
                ElementsAre("Dial:", "ATDT0,55501104711\r", "OUT: ATDT0,55501104711< d>!!!!"));
    EXPECT_THAT(Elapsed(), IsAbout(30s));
}

struct DialledCase {
    int protocol;
    const char* number;
    const char* command;
};

class Dialled : public ModemControl, public ::testing::WithParamInterface<DialledCase> {};

TEST_P(Dialled, CommandIsThatOfTheProtocol) {
    line.Hears(GetParam().command).Says("CONNECT");
    EXPECT_EQ(kDone, Dial({GetParam().number, GetParam().protocol}));
    EXPECT_EQ("", line.Verdict());
}

const DialledCase kDialled[] = {
    {0, "", "ATDT0,5550110\r"},
    {1, "", "ATDT0,5550110\r"},
    {2, "77", "ATDT0,555011077\r"},
    {3, "", "ATDT0,5550110\r"},
    {4, "", "ATDT0,5550111\r"},
    {5, "", "ATDT0,5550112\r"},
    {5, "7", "ATDT0,55501127\r"},
    {6, "", "\r"},
    {255, "77", "77\r"},
};

INSTANTIATE_TEST_SUITE_P(Protocols, Dialled, ::testing::ValuesIn(kDialled));

struct FailedCallCase {
    const char* answer;
    const char* trace;
};

class FailedCall : public ModemControl, public ::testing::WithParamInterface<FailedCallCase> {};

TEST_P(FailedCall, EndsTheDialAtOnce) {
    line.Hears("ATDT0,5550110\r").Says(GetParam().answer, 10s);
    EXPECT_EQ(Failed(6), Dial({}));
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ(GetParam().trace, Milestones().back());
    EXPECT_TRUE(CCOMHdl::MainModemError);
    EXPECT_THAT(Elapsed(), IsAbout(10s));
}

TEST_P(FailedCall, KeepsCountingAsAPageWithoutText) {
    line.Hears("ATDT0,5550110\r").Says(GetParam().answer, 10s);
    EXPECT_EQ(kDone, Dial({"", kAlphanumericPager, ""}));
    EXPECT_EQ("", line.Verdict());
    EXPECT_TRUE(CCOMHdl::MainModemError);
}

const FailedCallCase kFailedCalls[] = {
    {"\r\nBUSY\r\n", "Modem FAILURE: BUSY"},
    {"\r\nNO CARRIER\r\n", "Modem FAILURE: NO CARRIER"},
    {"\r\nNO DIALTONE\r\n", "Modem FAILURE: NO DIALTONE"},
    {"\r\nNO ANSWER\r\n", "Modem FAILURE: NO ANSWER"},
    {"\r\nERROR\r\n", "Modem FAILURE: ERROR"},
};

INSTANTIATE_TEST_SUITE_P(Answers, FailedCall, ::testing::ValuesIn(kFailedCalls));

TEST_F(ModemControl, KeepsWaitingAfterAShortBusy) {
    line.Hears("ATDT0,5550110\r").Says("BUSY\r\n", 10s);
    EXPECT_EQ(Failed(6), Dial({}));
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ("WaitString NO SUCCESS", Milestones().back());
    EXPECT_FALSE(CCOMHdl::MainModemError);
    EXPECT_THAT(Elapsed(), IsAbout(120s));
}

TEST_F(ModemControl, NobodyAnswersTheCall) {
    line.Hears("ATDT0,5550110\r");
    EXPECT_EQ(Failed(6), Dial({}));
    EXPECT_EQ("WaitString NO SUCCESS", Milestones().back());
    EXPECT_THAT(Elapsed(), IsAbout(120s));
}

TEST_F(ModemControl, DialsWithoutWaitingForTheCall) {
    line.Hears("ATDT0,555011090;\r").Says("\r\nOK\r\n", 5s);
    EXPECT_EQ(kDone, Dial({"90;", kNTTPager, "3/host", false}));
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Elapsed(), IsAbout(5s));
}

TEST_F(ModemControl, ModemDoesNotConfirmTheDial) {
    line.Hears("ATDT0,555011090;\r").Says("\r\nNO CARRIER\r\n", 5s);
    EXPECT_EQ(Failed(6), Dial({"90;", kNTTPager, "3/host", false}));
    EXPECT_EQ("", line.Verdict());
}

TEST_F(ModemControl, ModemDoesNotConfirmADialWithoutText) {
    line.Hears("ATDT0,555011090;\r");
    EXPECT_EQ(Failed(6), Dial({"90;", kNTTPager, "", false})) << "no call, so no page";
    EXPECT_THAT(Elapsed(), IsAbout(120s));
}

TEST_F(ModemControl, DialCannotBeSent) {
    faults::FailWrite(1);
    EXPECT_EQ(Failed(6), Dial({"4711"}));
    EXPECT_EQ("", line.Verdict());
    EXPECT_TRUE(faults::ErrorStateWasAskedFor());
    EXPECT_THAT(Elapsed(), IsAbout(0ms));
}

TEST_F(ModemControl, DialThatCannotBeSentFailsAlsoWithoutText) {
    faults::FailWrite(1);
    EXPECT_EQ(Failed(6), Dial({"4711", kAlphanumericPager, ""}));
}

TEST_F(ModemControl, DialNeedsNoPlaceForItsCode) {
    line.Hears("ATDT0,5550110\r").Says("CONNECT");
    EXPECT_TRUE(handler->Dial(0, "", kSignalPager, "x", true, nullptr));
    faults::FailWrite(1);
    EXPECT_FALSE(handler->Dial(0, "", kSignalPager, "x", true, nullptr));
}

TEST_F(ModemControl, ShowsATestPageInTheWaitsFlag) {
    for (const bool test : {true, false}) {
        test_support::ForgetTrace();
        CCOMHdl::ModemTest = test;
        line.Hears("ATDT0,5550110\r").Says("CONNECT");
        EXPECT_EQ(kDone, Dial({}));
        EXPECT_THAT(TraceEntries(),
                    Contains(::testing::EndsWith("CString CONNECT, DWORD 120000, BOOL " +
                                                 std::string(test ? "0" : "1") + " ) L:%d %s")));
    }
}

TEST_F(ModemControl, DialsANumberOfAnySize) {
    Modem().dialPrefix = CString('1', 32 * 1024);
    const std::string number(32 * 1024, '2');
    line.HearsAnything(64 * 1024 + 1).Says("CONNECT");
    EXPECT_EQ(kDone, Dial({number.c_str()}));
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ(std::string(32 * 1024, '1') + number + "\r", line.Heard());
    EXPECT_EQ("OUT: " + std::string(32 * 1024, '1') + number + "< d>!!!!", Milestones().back());
}

// --- CloseCOMPort, MyWriteFile, GetCOMPortError

TEST_F(ModemControl, CloseGivesThePortBack) {
    EXPECT_TRUE(handler->CloseCOMPort(0));
    EXPECT_THAT(TraceEntries(), ElementsAre("CloseCOMPort: 0\n"));
    EXPECT_FALSE(Port().inUse);
    EXPECT_EQ(line.Opens(), line.Closes());
}

TEST_F(ModemControl, CloseOfAPortThatHasNoDeviceFailsButFreesIt) {
    Port().handle = INVALID_HANDLE_VALUE;
    EXPECT_FALSE(handler->CloseCOMPort(0));
    EXPECT_FALSE(Port().inUse);
}

TEST_F(ModemControl, WriteCountsItsBytes) {
    DWORD written = 0;
    EXPECT_TRUE(CCOMHdl::MyWriteFile(Port().handle, "a b\r", 4, &written, nullptr));
    EXPECT_EQ(4U, written);
    EXPECT_EQ("a b\r", line.Heard());
    EXPECT_THAT(TraceEntries(), ElementsAre("OUT: a<20>b< d>!!!!"));
}

TEST_F(ModemControl, WriteGoesOutWholeWhateverItsSize) {
    const std::string bytes(5000, '\xE9');
    DWORD written = 0;
    EXPECT_TRUE(CCOMHdl::MyWriteFile(Port().handle, bytes.data(), 5000, &written, nullptr));
    EXPECT_EQ(5000U, written);
    EXPECT_EQ(bytes, line.Heard());
    EXPECT_EQ(5 + 4 * 5000 + 4, static_cast<int>(TraceEntries()[0].size()));
}

TEST_F(ModemControl, WriteOfNothingIsTraced) {
    DWORD written = 1;
    EXPECT_TRUE(CCOMHdl::MyWriteFile(Port().handle, "", 0, &written, nullptr));
    EXPECT_EQ(0U, written);
    EXPECT_THAT(TraceEntries(), ElementsAre("OUT: !!!!"));
}

TEST_F(ModemControl, WriteGoesOutThoughThereIsNoMemoryToTraceIt) {
    const std::string bytes(5000, '\xE9');
    DWORD written = 0;
    faults::FailAllocationsFrom(bytes.size());
    const bool done = CCOMHdl::MyWriteFile(Port().handle, bytes.data(), 5000, &written, nullptr);
    faults::Reset();
    EXPECT_TRUE(done);
    EXPECT_EQ(bytes, line.Heard());
    EXPECT_THAT(TraceEntries(), ElementsAre());
}

TEST_F(ModemControl, WriteOfNoBufferFails) {
    DWORD written = 1;
    EXPECT_FALSE(CCOMHdl::MyWriteFile(Port().handle, nullptr, 3, &written, nullptr));
    EXPECT_EQ(0U, written);
    EXPECT_THAT(TraceEntries(), ElementsAre("OUT: !!!!"));
}

TEST_F(ModemControl, WriteToAClosedLineFails) {
    handler->CloseCOMPort(0);
    DWORD written = 1;
    EXPECT_FALSE(CCOMHdl::MyWriteFile(Port().handle, "x", 1, &written, nullptr));
    EXPECT_EQ(0U, written);
}

TEST_F(ModemControl, ErrorStateOfALineCanBeAsked) {
    EXPECT_TRUE(CCOMHdl::GetCOMPortError(Port().handle));
    EXPECT_FALSE(CCOMHdl::GetCOMPortError(INVALID_HANDLE_VALUE));
}

TEST_F(ModemControl, WaitsForThePortLock) {
    line.Hears("ATDT0,5550110\r").Says("CONNECT");
    Outcome outcome = Failed(0);
    std::thread other;
    {
        const PortLock held;
        other = std::thread([&] { outcome = Dial({}); });
        Sleep(5000);  // Time passes only when the other thread waits.
        EXPECT_EQ("", line.Heard());
    }
    other.join();
    EXPECT_EQ(kDone, outcome);
}

}  // namespace
