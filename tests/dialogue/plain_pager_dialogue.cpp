// The dialogue with the service of a signal, numeric or alphanumeric pager. The port's prompt is
// '#'.

#include "tests/dialogue/modem_dialogue.h"

namespace {

using ::testing::ElementsAre;

constexpr const char* kPlainEntry = "TransMsg( int 0, CString 4711, CString Pump, int 2 ) L:%d %s";
constexpr const char* kEntryNoText = "TransMsg( int 0, CString 4711, CString , int 2 ) L:%d %s";
constexpr const char* kPlainStart = "***************START PAGER ***********************";
constexpr const char* kNumber = "***************SEND NUMBER ***********************";
constexpr const char* kMessage = "***************SEND MESSAGE ***********************";
constexpr const char* kConfirm = "***************SEND J/N ***********************";

class PlainDialogue : public ModemDialogue {
 protected:
    PlainDialogue() { Open(); }

    // The call is set up, and the service greets.
    void Connect(std::string_view greeting) {
        line.Says(greeting);
        ASSERT_TRUE(WaitFor("CONNECT"));
        test_support::ForgetTrace();
        opened_at = pagersim::VirtualClock::Now();
    }

    Outcome Page() { return TransferBy(kAlphanumericPager, "4711", "Pump"); }
    Outcome PageWithoutText() { return TransferBy(kAlphanumericPager, "4711", ""); }
};

TEST_F(PlainDialogue, DeliversAMessage) {
    Connect("\r\nCONNECT 2400\r\nCityPage #");
    line.Hears("4711\r").Says("Message: #", 1s);
    line.Hears("Pump\rjy\r").Says("Thank you\r\nNO CARRIER\r\n", 3s);

    EXPECT_EQ(kDone, Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(),
                ElementsAre(kPlainEntry, kPlainStart, "TransMsg: write rn\n", kNumber,
                            "TransMsg: pnum + rn: ", "4711\r", "OUT: 4711< d>!!!!", kMessage,
                            "TransMsg: msg + rn:", "Pump\r", "OUT: Pump< d>!!!!", kConfirm,
                            "TransMsg: jy + rn", "OUT: jy!!!!", "OUT: < d>!!!!"));
    EXPECT_THAT(Elapsed(), IsAbout(4s));
    EXPECT_FALSE(CCOMHdl::MainModemError);
}

TEST_F(PlainDialogue, AnswersAQuestionAskedDuringTheConnection) {
    Connect("\r\nCONNECT 2400\r\nContinue (j/n)?");
    line.Hears("jy\r").Says("#");
    line.Hears("4711\r").Says("#");
    line.Hears("Pump\rjy\r").Says("\r\nNO CARRIER\r\n");

    EXPECT_EQ(kDone, Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(),
                ElementsAre(kPlainEntry, kPlainStart, "TransMsg: write rn\n",
                            "send jy after timeout", "TransMsg: jy + rn", "OUT: jy< d>!!!!",
                            kNumber, "TransMsg: pnum + rn: ", "4711\r", "OUT: 4711< d>!!!!",
                            kMessage, "TransMsg: msg + rn:", "Pump\r", "OUT: Pump< d>!!!!",
                            kConfirm, "TransMsg: jy + rn", "OUT: jy!!!!", "OUT: < d>!!!!"));
}

TEST_F(PlainDialogue, AnswersAQuestionThatIsTheFirstToBeHeard) {
    Connect("?\r\nCONNECT 2400\r\n");
    line.Hears("jy\r").Says("#");
    line.Hears("4711\r").Says("#");
    line.Hears("Pump\rjy\r").Says("\r\nNO CARRIER\r\n");

    EXPECT_EQ(kDone, Page());
    EXPECT_EQ("", line.Verdict());
}

TEST_F(PlainDialogue, AnswersAQuestionBehindANoisyZeroByte) {
    Connect("\r\nCONNECT\r\n\0 Continue?"_bytes);
    line.Hears("jy\r").Says("#");
    line.Hears("4711\r").Says("#");
    line.Hears("Pump\rjy\r").Says("\r\nNO CARRIER\r\n");

    EXPECT_EQ(kDone, Page());
    EXPECT_EQ("", line.Verdict());
}

TEST_F(PlainDialogue, WithoutAMessageConfirmsAtOnce) {
    Connect("CONNECT\r\n#");
    line.Hears("4711\r").Says("#");
    line.Hears("jy\r").Says("\r\nNO CARRIER\r\n");

    EXPECT_EQ(kDone, PageWithoutText());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(),
                ElementsAre(kEntryNoText, kPlainStart, "TransMsg: write rn\n", kNumber,
                            "TransMsg: pnum + rn: ", "4711\r", "OUT: 4711< d>!!!!", kConfirm,
                            "TransMsg: jy + rn", "OUT: jy!!!!", "OUT: < d>!!!!"));
}

TEST_F(PlainDialogue, SucceedsWhenTheServiceNeverHangsUp) {
    Connect("CONNECT\r\n#");
    line.Hears("4711\r").Says("#");
    line.Hears("Pump\rjy\r");

    EXPECT_EQ(kDone, Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ("WaitString NO SUCCESS", Milestones().back());
    EXPECT_THAT(Elapsed(), IsAbout(30s));
}

TEST_F(PlainDialogue, IsTheSameForAllThreeKinds) {
    for (const unsigned char protocol : {kSignalPager, kNumericPager, kAlphanumericPager}) {
        line.Says("CONNECT\r\n#");
        ASSERT_TRUE(WaitFor("CONNECT"));
        line.Hears("4711\r").Says("#");
        line.Hears("Pump\rjy\r").Says("NO CARRIER");
        EXPECT_EQ(kDone, TransferBy(protocol, "4711", "Pump")) << int{protocol};
    }
    EXPECT_EQ("", line.Verdict());
}

TEST_F(PlainDialogue, LooksForTheQuestionInTheLatestWaitOnly) {
    Connect("CONNECT\r\nContinue?");
    EXPECT_FALSE(WaitFor("more", 0));
    line.Hears("4711\r").Says("#").Hears("jy\r").Says("NO CARRIER");

    EXPECT_EQ(kDone, PageWithoutText());
    EXPECT_EQ("", line.Verdict());
}

TEST_F(PlainDialogue, LooksForTheQuestionInWhatItsOwnHandlerHeard) {
    Connect("CONNECT\r\nContinue?");
    handler->CloseCOMPort(0);
    CCOMHdl other(test_support::MemoryStore::kDatabase);
    ASSERT_EQ(0, other.OpenCOMPort("COM 1", kSignalPager));
    line.Hears("4711\r").Says("#").Hears("jy\r").Says("NO CARRIER");

    EXPECT_TRUE(other.TransMsg(0, "4711", "", kSignalPager, nullptr));
    EXPECT_EQ("", line.Verdict());
}

TEST_F(PlainDialogue, TakesThePromptOfItsPort) {
    Modem().activityPrompt = "go!";
    Connect("CONNECT\r\n#");
    line.Hears("4711\r").Says("#").Says("go!", 5s).Hears("jy\r").Says("NO CARRIER");

    EXPECT_EQ(kDone, PageWithoutText());
    EXPECT_EQ("", line.Verdict());
}

// --- Failures, which trace no text of their own.

TEST_F(PlainDialogue, NoPromptAfterTheAnswer) {
    Connect("CONNECT\r\nContinue?");
    line.Hears("jy\r");

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(), ElementsAre(kPlainEntry, kPlainStart, "TransMsg: write rn\n",
                                          "send jy after timeout", "TransMsg: jy + rn",
                                          "OUT: jy< d>!!!!", "WaitString NO SUCCESS"));
}

TEST_F(PlainDialogue, NoPromptAfterTheNumber) {
    Connect("CONNECT\r\n#");
    line.Hears("4711\r").Says("Unknown number\r\n");

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(), ElementsAre(kPlainEntry, kPlainStart, "TransMsg: write rn\n", kNumber,
                                          "TransMsg: pnum + rn: ", "4711\r", "OUT: 4711< d>!!!!",
                                          "WaitString NO SUCCESS"));
}

TEST_F(PlainDialogue, AnswerCannotBeSent) {
    Connect("CONNECT\r\nContinue?");
    faults::FailWrite(1);

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ("OUT: jy< d>!!!!", Milestones().back());
    EXPECT_TRUE(faults::ErrorStateWasAskedFor());
}

TEST_F(PlainDialogue, NumberCannotBeSent) {
    Connect("CONNECT\r\n#");
    faults::FailWrite(1);

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ("OUT: 4711< d>!!!!", Milestones().back());
    EXPECT_TRUE(faults::ErrorStateWasAskedFor());
}

TEST_F(PlainDialogue, MessageCannotBeSent) {
    Connect("CONNECT\r\n#");
    faults::FailWrite(2);
    line.Hears("4711\r").Says("#");

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ("OUT: Pump< d>!!!!", Milestones().back());
    EXPECT_TRUE(faults::ErrorStateWasAskedFor());
}

TEST_F(PlainDialogue, ConfirmationCannotBeSent) {
    Connect("CONNECT\r\n#");
    faults::FailWrite(4);
    line.Hears("4711\r").Says("#").Hears("Pump\rjy");

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ("OUT: < d>!!!!", Milestones().back());
    EXPECT_TRUE(faults::ErrorStateWasAskedFor());
}

TEST_F(PlainDialogue, KeepsGoingAfterALetterOfTheConfirmationIsLost) {
    Connect("CONNECT\r\n#");
    faults::FailWrite(3);
    line.Hears("4711\r").Says("#").Hears("Pump\r").Hears("\r").Says("NO CARRIER");

    EXPECT_EQ(kDone, Page());
    EXPECT_EQ("", line.Verdict());
}

}  // namespace
