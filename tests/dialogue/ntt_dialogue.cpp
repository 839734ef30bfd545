// Paging an NTT code pager by dialling tones into the standing call.

#include "host/text_helpers.h"
#include "tests/dialogue/modem_dialogue.h"

namespace {

using ::testing::ElementsAre;

constexpr const char* kNttEntry = "TransMsg( int 0, CString 90;, CString ab 1, int 3 ) L:%d %s";
constexpr const char* kNttStart = "***************START NTT ***********************";
constexpr const char* kOut = "OUT: ATDT*2*216176796##;< d>!!!!";

class NttDialogue : public ModemDialogue {
 protected:
    NttDialogue() { Open(kNTTPager); }
    ~NttDialogue() override { host::UseShiftJis(false); }

    Outcome Page() { return TransferBy(kNTTPager, "90;", "ab 1"); }
};

TEST_F(NttDialogue, DialsTheMessageAfterThePauseForTheAnswer) {
    line.Hears("ATDT*2*216176796##;\r").Says("\r\nOK\r\n", 4s);

    EXPECT_EQ(kDone, Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(),
                ElementsAre(kNttEntry, kNttStart, "NTT string to send: ab 1\n", kOut));
    EXPECT_THAT(Elapsed(), IsAbout(26s)) << "20 s pause, the modem's 4 s, 2 s at the end";
}

TEST_F(NttDialogue, ModemDoesNotConfirm) {
    line.Hears("ATDT*2*216176796##;\r");

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(), ElementsAre(kNttEntry, kNttStart, "NTT string to send: ab 1\n", kOut,
                                          "WaitString NO SUCCESS", "No OK from NTT"));
    EXPECT_THAT(Elapsed(), IsAbout(140s)) << "20 s pause, 120 s for the answer";
}

TEST_F(NttDialogue, LineIsLost) {
    line.Hears("ATDT*2*216176796##;\r").Says("\r\nNO CARRIER\r\n", 1s);

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(), ElementsAre(kNttEntry, kNttStart, "NTT string to send: ab 1\n", kOut,
                                          "Modem FAILURE: NO CARRIER", "No OK from NTT"));
    EXPECT_THAT(Elapsed(), IsAbout(21s));
}

TEST_F(NttDialogue, CommandCannotBeSent) {
    faults::FailWrite(1);

    EXPECT_EQ(Failed(7), Page());
    EXPECT_EQ("", line.Verdict());
    EXPECT_THAT(Milestones(), ElementsAre(kNttEntry, kNttStart, "NTT string to send: ab 1\n", kOut,
                                          "sending to NTT failed"));
    EXPECT_TRUE(faults::ErrorStateWasAskedFor());
}

TEST_F(NttDialogue, LongMessageIsTracedWholeAndSentInPart) {
    line.Hears(
            "ATDT*2*2"
            "1617181910"
            "2627282920"
            "36373839"
            "##;\r")
        .Says("OK");

    EXPECT_EQ(kDone, TransferBy(kNTTPager, "90;", "ABCDEFGHIJKLMNOPQRST"));
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ("NTT string to send: ABCDEFGHIJKLMNOPQRST\n", Milestones()[2]);
}

TEST_F(NttDialogue, TwoByteCharacterIsOneQuestionMark) {
    host::UseShiftJis(true);
    line.Hears(
            "ATDT*2*2"
            "67"
            "0096979899900607080900"
            "96"
            "##;\r")
        .Says("OK");

    EXPECT_EQ(kDone, TransferBy(kNTTPager, "90;",
                                "\x82\xA0"
                                "0123456789012"));
    EXPECT_EQ("", line.Verdict());
}

TEST_F(NttDialogue, TracesPercentSignsAsTheyAre) {
    line.Hears(
            "ATDT*2*2"
            "67496739"
            "##;\r")
        .Says("OK");

    EXPECT_EQ(kDone, TransferBy(kNTTPager, "90;", "%s%n"));
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ("NTT string to send: %s%n\n", Milestones()[2]);
}

}  // namespace
