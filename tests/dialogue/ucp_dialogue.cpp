// The UCP dialogue: a pause, one frame, its answer.

#include "tests/dialogue/modem_dialogue.h"

namespace {

using ::testing::ElementsAre;

#define FRAME_TEXT "03/00063/O/51/0123/12345/////////////////3//4869/////////////af"
constexpr std::string_view kFrame = "\x02" FRAME_TEXT "\x03";
constexpr std::string_view kUcpAck =
    "\x02"
    "03/00039/R/51/A//0123:090196103258/6B\x03";
constexpr std::string_view kNak =
    "\x02"
    "03/00022/R/51/N/31//02\x03";

constexpr const char* kUcpEntry = "TransMsg( int 0, CString 0123, CString Hi, int 5 ) L:%d %s";
constexpr const char* kFrameEntry = "\x02" FRAME_TEXT "\x03";
constexpr const char* kFrameOut = "OUT: < 2>" FRAME_TEXT "< 3>!!!!";
#undef FRAME_TEXT

class UcpDialogue : public ModemDialogue {
 protected:
    UcpDialogue() { Open(kSecondSmsService); }

    Outcome Page() { return TransferBy(kSecondSmsService, "0123", "Hi"); }
};

TEST_F(UcpDialogue, DeliversAPageAfterThePauseForTheHandShake) {
    line.Says("Welcome\r\n", 1s).Hears(kFrame).Says(kUcpAck, 500ms);

    EXPECT_EQ(kDone, Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(), ElementsAre(kUcpEntry, "TransMsg: UCP:", kFrameEntry, kFrameOut,
                                          "TransMsg: D2: OK !!!"));
    EXPECT_THAT(Elapsed(), IsAbout(13500ms));
}

TEST_F(UcpDialogue, NegativeAnswerIsWaitedOn) {
    line.Hears(kFrame).Says(kNak);

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(),
                ElementsAre(kUcpEntry, "TransMsg: UCP:", kFrameEntry, kFrameOut,
                            "WaitString NO SUCCESS", "TransMsg: D2: no ACK from SMSC"));
    EXPECT_THAT(Elapsed(), IsAbout(43s));
}

TEST_F(UcpDialogue, PositiveAnswerAfterANegativeOneCounts) {
    line.Hears(kFrame).Says(kNak).Says(kUcpAck, 29s);

    EXPECT_EQ(kDone, Page());
    EXPECT_EQ("", line.Verdict());
}

TEST_F(UcpDialogue, NoAnswerFails) {
    line.Hears(kFrame);

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ("TransMsg: D2: no ACK from SMSC", Milestones().back());
}

TEST_F(UcpDialogue, LostCarrierEndsTheWait) {
    line.Hears(kFrame).Says(kNak).Says("\r\nNO CARRIER\r\n", 2s);

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(),
                ElementsAre(kUcpEntry, "TransMsg: UCP:", kFrameEntry, kFrameOut,
                            "Modem FAILURE: NO CARRIER", "TransMsg: D2: no ACK from SMSC"));
    EXPECT_THAT(Elapsed(), IsAbout(15s));
}

TEST_F(UcpDialogue, FrameCannotBeSent) {
    faults::FailWrite(1);

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(), ElementsAre(kUcpEntry, "TransMsg: UCP:", kFrameEntry, kFrameOut,
                                          "TransMsg: D2: sending message block failed"));
    EXPECT_TRUE(faults::ErrorStateWasAskedFor());
    EXPECT_THAT(Elapsed(), IsAbout(13s));
}

TEST_F(UcpDialogue, EmptyMessageIsStillSent) {
    line.Hears(
        "\x02"
        "03/00059/O/51/0123/12345/////////////////3///////////////d9"
        "\x03");
    line.Says(kUcpAck);

    EXPECT_EQ(kDone, TransferBy(kSecondSmsService, "0123", ""));
    EXPECT_EQ("", line.Verdict());
}

TEST_F(UcpDialogue, ShowsSevenBitsOfAnAccent) {
    line.HearsAnything(63).Says(kUcpAck);

    EXPECT_EQ(kDone, TransferBy(kSecondSmsService, "0123", "\xE9"));
    EXPECT_NE(std::string::npos, line.Heard().find("3//69////"));
}

}  // namespace
