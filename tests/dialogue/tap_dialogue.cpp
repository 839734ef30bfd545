// The TAP dialogue, as in appendix C of TAP 1.8, and how it goes wrong.

#include "tests/dialogue/modem_dialogue.h"

namespace {

using ::testing::ElementsAre;

constexpr std::string_view kKnock = "\r\0"_bytes;
constexpr std::string_view kLogOn = "\x1BPG1\r\n";
constexpr std::string_view kGoAhead = "\r\x06\r\x1B[p\r";
constexpr std::string_view kBlock =
    "\x02"
    "123\rABC\r\x03"
    "17;\r";
constexpr std::string_view kAccepted = "211 Page accepted\r\x06\r";
constexpr std::string_view kEndOfTransmission = "\x04\r";
constexpr std::string_view kGoodbye = "115 Thank you for calling\r\x1B\x04\r";

constexpr const char* kTapEntry = "TransMsg( int 0, CString 123, CString ABC, int 4 ) L:%d %s";
constexpr const char* kKnockOut = "OUT: < d>< 0>!!!!";
constexpr const char* kLogOnOut = "OUT: <1b>PG1< d>< a>!!!!";
constexpr const char* kBlockText =
    "\x02"
    "123\rABC\r\x03"
    "17;\r";
constexpr const char* kBlockOut = "OUT: < 2>123< d>ABC< d>< 3>17;< d>!!!!";
constexpr const char* kEndOut = "OUT: < 4>< d>!!!!";

class TapDialogue : public ModemDialogue {
 protected:
    TapDialogue() { Open(kFirstSmsService); }

    Outcome Page() { return TransferBy(kFirstSmsService, "123", "ABC"); }
};

TEST_F(TapDialogue, DeliversAPage) {
    line.Hears(kKnock).Says("\rID=", 500ms);
    line.Hears(kLogOn).Says("110 1.7\r").Says(kGoAhead, 1s);
    line.Hears(kBlock).Says(kAccepted, 2s);
    line.Hears(kEndOfTransmission).Says(kGoodbye);

    EXPECT_EQ(kDone, Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(),
                ElementsAre(kTapEntry, "TransMsg: TAP: rn", kKnockOut, "TransMsg: EscPG1",
                            kLogOnOut, "TransMsg: Block:", kBlockText, kBlockOut,
                            "TransMsg: EOT CR", kEndOut, "TransMsg: D1: OK !!!"));
    EXPECT_THAT(Elapsed(), IsAbout(3500ms)) << "no longer than the centre took";
}

TEST_F(TapDialogue, SecondKnockIsAnswered) {
    line.Hears(kKnock).Hears(kKnock).Says("ID=");
    line.Hears(kLogOn).Says(kGoAhead);
    line.Hears(kBlock).Says(kAccepted);
    line.Hears(kEndOfTransmission).Says(kGoodbye);

    EXPECT_EQ(kDone, Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(),
                ElementsAre(kTapEntry, "TransMsg: TAP: rn", kKnockOut, "WaitString NO SUCCESS",
                            "TransMsg: rn", kKnockOut, "TransMsg: EscPG1", kLogOnOut,
                            "TransMsg: Block:", kBlockText, kBlockOut, "TransMsg: EOT CR", kEndOut,
                            "TransMsg: D1: OK !!!"));
}

TEST_F(TapDialogue, ThirdKnockIsAnswered) {
    line.Hears(kKnock).Hears(kKnock).Hears(kKnock).Says("ID=", 29s);
    line.Hears(kLogOn).Says(kGoAhead);
    line.Hears(kBlock).Says(kAccepted);
    line.Hears(kEndOfTransmission).Says(kGoodbye);

    EXPECT_EQ(kDone, Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(
        Milestones(),
        ElementsAre(kTapEntry, "TransMsg: TAP: rn", kKnockOut, "WaitString NO SUCCESS",
                    "TransMsg: rn", kKnockOut, "WaitString NO SUCCESS", "TransMsg: rn", kKnockOut,
                    "TransMsg: EscPG1", kLogOnOut, "TransMsg: Block:", kBlockText, kBlockOut,
                    "TransMsg: EOT CR", kEndOut, "TransMsg: D1: OK !!!"));
}

TEST_F(TapDialogue, NobodyAnswersTheKnocks) {
    line.Hears(kKnock).Hears(kKnock).Hears(kKnock);

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(),
                ElementsAre(kTapEntry, "TransMsg: TAP: rn", kKnockOut, "WaitString NO SUCCESS",
                            "TransMsg: rn", kKnockOut, "WaitString NO SUCCESS", "TransMsg: rn",
                            kKnockOut, "WaitString NO SUCCESS", "no ID= received"));
    EXPECT_THAT(Elapsed(), IsAbout(90s));
    EXPECT_FALSE(CCOMHdl::MainModemError);
}

TEST_F(TapDialogue, TheCentreHangsUpAtTheKnock) {
    line.Hears(kKnock).Says("\r\nNO CARRIER\r\n").Hears(kKnock).Hears(kKnock);

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(), ElementsAre(kTapEntry, "TransMsg: TAP: rn", kKnockOut,
                                          "Modem FAILURE: NO CARRIER", "TransMsg: rn", kKnockOut,
                                          "TransMsg: rn", kKnockOut, "no ID= received"));
    EXPECT_TRUE(CCOMHdl::MainModemError);
}

TEST_F(TapDialogue, LogOnIsNotFollowedByAGoAhead) {
    line.Hears(kKnock).Says("ID=");
    line.Hears(kLogOn).Says("507 Bad log-on\r\x15\r");

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(),
                ElementsAre(kTapEntry, "TransMsg: TAP: rn", kKnockOut, "TransMsg: EscPG1",
                            kLogOnOut, "WaitString NO SUCCESS", "no message go ahead received"));
}

class TapRefusal : public TapDialogue, public ::testing::WithParamInterface<const char*> {};

TEST_P(TapRefusal, IsNotSentAgain) {
    line.Hears(kKnock).Says("ID=");
    line.Hears(kLogOn).Says(kGoAhead);
    line.Hears(kBlock).Says(GetParam());

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(),
                ElementsAre(kTapEntry, "TransMsg: TAP: rn", kKnockOut, "TransMsg: EscPG1",
                            kLogOnOut, "TransMsg: Block:", kBlockText, kBlockOut,
                            "WaitString NO SUCCESS", "TransMsg: D1: no EOT from D1 received"));
    EXPECT_THAT(Elapsed(), IsAbout(30s)) << "nothing is told from a time-out";
}

INSTANTIATE_TEST_SUITE_P(Answers, TapRefusal,
                         ::testing::Values("514 Checksum error\r\x15\r", "511 Invalid id\r\x1E\r",
                                           "\x1B\x04\r", "\x06\r", ""));

TEST_F(TapDialogue, TheCentreNeverEndsTheDialogue) {
    line.Hears(kKnock).Says("ID=");
    line.Hears(kLogOn).Says(kGoAhead);
    line.Hears(kBlock).Says(kAccepted);
    line.Hears(kEndOfTransmission);

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(
        Milestones(),
        ElementsAre(kTapEntry, "TransMsg: TAP: rn", kKnockOut, "TransMsg: EscPG1", kLogOnOut,
                    "TransMsg: Block:", kBlockText, kBlockOut, "TransMsg: EOT CR", kEndOut,
                    "WaitString NO SUCCESS", "TransMsg: D1: no EOT at end of dialog"));
}

// --- Writes that fail. A page writes: knock, log-on, block, end of transmission.

TEST_F(TapDialogue, KeepsGoingAfterAFirstKnockThatCouldNotBeSent) {
    faults::FailWrite(1);
    line.Hears(kKnock).Says("ID=");
    line.Hears(kLogOn).Says(kGoAhead);
    line.Hears(kBlock).Says(kAccepted);
    line.Hears(kEndOfTransmission).Says(kGoodbye);

    EXPECT_EQ(kDone, Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ(kKnockOut, Milestones()[2]);
    EXPECT_EQ(kKnockOut, Milestones()[5]);
}

TEST_F(TapDialogue, ThirdKnockCannotBeSent) {
    faults::FailWrite(3);
    line.Hears(kKnock).Hears(kKnock);

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(),
                ElementsAre(kTapEntry, "TransMsg: TAP: rn", kKnockOut, "WaitString NO SUCCESS",
                            "TransMsg: rn", kKnockOut, "WaitString NO SUCCESS", "TransMsg: rn",
                            kKnockOut, "sending cr for ID= failed"));
    EXPECT_TRUE(faults::ErrorStateWasAskedFor());
}

TEST_F(TapDialogue, LogOnCannotBeSent) {
    faults::FailWrite(2);
    line.Hears(kKnock).Says("ID=");

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(), ElementsAre(kTapEntry, "TransMsg: TAP: rn", kKnockOut,
                                          "TransMsg: EscPG1", kLogOnOut, "sending escPG1 failed"));
    EXPECT_TRUE(faults::ErrorStateWasAskedFor());
}

TEST_F(TapDialogue, BlockCannotBeSent) {
    faults::FailWrite(3);
    line.Hears(kKnock).Says("ID=");
    line.Hears(kLogOn).Says(kGoAhead);

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(),
                ElementsAre(kTapEntry, "TransMsg: TAP: rn", kKnockOut, "TransMsg: EscPG1",
                            kLogOnOut, "TransMsg: Block:", kBlockText, kBlockOut,
                            "TransMsg: D1: sending message block failed"));
    EXPECT_TRUE(faults::ErrorStateWasAskedFor());
}

TEST_F(TapDialogue, KeepsWaitingAfterAnEndThatCouldNotBeSent) {
    faults::FailWrite(4);
    line.Hears(kKnock).Says("ID=");
    line.Hears(kLogOn).Says(kGoAhead);
    line.Hears(kBlock).Says(kAccepted).Says(kGoodbye, 1s);

    EXPECT_EQ(kDone, Page());
    EXPECT_EQ("", line.Verdict());
}

TEST_F(TapDialogue, OnAClosedLineSendsNothing) {
    CCOMHdl::MPeekWait = 100;  // Time passes on a quiet line only, and there is none.
    handler->CloseCOMPort(0);
    test_support::ForgetTrace();

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Heard());
    EXPECT_EQ("sending cr for ID= failed", Milestones().back());
}

TEST_F(TapDialogue, DeviceThatVanishedIsOpenedAgainByTheNextKnock) {
    CCOMHdl::MPeekWait = 100;  // As above: while the device is gone, no line is quiet.
    const int opens = line.Opens();
    line.Hears(kKnock).Vanishes(1s).Hears(kKnock).Says("ID=");
    line.Hears(kLogOn).Says(kGoAhead);
    line.Hears(kBlock).Says(kAccepted);
    line.Hears(kEndOfTransmission).Says(kGoodbye);

    EXPECT_EQ(kDone, Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ(opens + 1, line.Opens());
}

// --- Messages.

TEST_F(TapDialogue, SendsAnEmptyMessage) {
    line.Hears(kKnock).Says("ID=");
    line.Hears(kLogOn).Says(kGoAhead);
    line.Hears(
            "\x02"
            "02\r\r\x03"
            "081\r")
        .Says(kAccepted);
    line.Hears(kEndOfTransmission).Says(kGoodbye);

    EXPECT_EQ(kDone, TransferBy(kFirstSmsService, "02", ""));
    EXPECT_EQ("", line.Verdict());
}

TEST_F(TapDialogue, TracesPercentSignsAsTheyAre) {
    line.Hears(kKnock).Says("ID=");
    line.Hears(kLogOn).Says(kGoAhead);
    line.HearsAnything(18).Says(kAccepted);
    line.Hears(kEndOfTransmission).Says(kGoodbye);

    EXPECT_EQ(kDone, TransferBy(kFirstSmsService, "1%d", "50%s %n"));
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ("TransMsg( int 0, CString 1%d, CString 50%s %n, int 4 ) L:%d %s", Milestones()[0]);
    EXPECT_EQ(0U, Milestones()[6].find("\x02"
                                       "1%d\r50%s %n\r\x03"));
}

TEST_F(TapDialogue, LongMessageGoesOutAndIntoTheTraceWhole) {
    const std::string message = std::string(3000, 'x') + std::string(1000, ' ');
    line.Hears(kKnock).Says("ID=");
    line.Hears(kLogOn).Says(kGoAhead);
    line.HearsAnything(message.size() + 11).Says(kAccepted);
    line.Hears(kEndOfTransmission).Says(kGoodbye);

    EXPECT_EQ(kDone, TransferBy(kFirstSmsService, "123", message));
    EXPECT_EQ("", line.Verdict());
    EXPECT_NE(std::string::npos, line.Heard().find("\x02"
                                                   "123\r" +
                                                   message + "\r\x03"));
    const std::string shown = Milestones()[7];
    EXPECT_EQ(0U, shown.find("OUT: < 2>123< d>" + std::string(3000, 'x') + "<20><20>"));
    EXPECT_EQ("< d>!!!!", shown.substr(shown.size() - 8));
}

}  // namespace
