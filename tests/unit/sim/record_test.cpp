// Printable bytes and transcripts.
#include <gmock/gmock.h>

#include "sim/record/event.h"
#include "sim/record/printable.h"
#include "sim/record/transcript.h"

namespace pagersim {
namespace {

using namespace std::chrono_literals;

TEST(Printable, ControlsHaveTheirNames) {
    EXPECT_EQ("<stx>123<cr>A C<cr><etx>17;<cr>", Printable("\x02"
                                                           "123\rA C\r\x03"
                                                           "17;\r"));
    EXPECT_EQ("<nul><lf><esc>[p<us><del>", Printable({"\0\n\x1b[p\x1f\x7f", 7}));
}

TEST(Printable, HighBytesAreHexadecimal) {
    EXPECT_EQ("~<80><ff>", Printable("~\x80\xff"));
}

TEST(PrintableText, Utf8StaysAndTheRestBecomesReadable) {
    EXPECT_EQ("M\xc3\xbcller \xef\xbd\xb1<cr>", PrintableText("M\xc3\xbcller \xef\xbd\xb1\r"));
    EXPECT_EQ("M<fc>ller", PrintableText("M\xfcller"));
}

TEST(Utf8Length, KnowsWellFormedCharactersOnly) {
    EXPECT_EQ(0U, Utf8Length(""));
    EXPECT_EQ(1U, Utf8Length("a"));
    EXPECT_EQ(2U, Utf8Length("\xc3\xa9"));
    EXPECT_EQ(3U, Utf8Length("\xef\xbd\xb1"));
    EXPECT_EQ(4U, Utf8Length("\xf0\x9f\x98\x80"));
    EXPECT_EQ(0U, Utf8Length("\xc3")) << "cut short";
    EXPECT_EQ(0U, Utf8Length("\xc3z")) << "not continued";
    EXPECT_EQ(0U, Utf8Length("\x80")) << "begins in the middle";
    EXPECT_EQ(0U, Utf8Length("\xc1\x81")) << "overlong";
    EXPECT_EQ(0U, Utf8Length("\xe0\x80\x80")) << "overlong";
    EXPECT_EQ(0U, Utf8Length("\xed\xa0\x80")) << "a surrogate";
    EXPECT_EQ(0U, Utf8Length("\xf4\x90\x80\x80")) << "beyond U+10FFFF";
    EXPECT_EQ(0U, Utf8Length("\xff"));
}

class TranscriptTest : public ::testing::Test {
 protected:
    std::string Says(Milliseconds at, const char* who, const char* text) {
        return transcript_.Add({at, "COM 1", who, EventKind::kSends, text});
    }

    Transcript transcript_;
};

TEST_F(TranscriptTest, ReadsAsADialogue) {
    std::string text = transcript_.Add({0ms, "COM 1", kProgram, EventKind::kOpens});
    text += transcript_.Add({0ms, "COM 1", kProgram, EventKind::kSets, "2400,e,7,1"});
    text += Says(7330ms, kProgram, "ATDT0,5550101\r");
    text += Says(14930ms, kModem, "\r\nCONNECT 2400\r\n");
    text += transcript_.Add({14930ms, "COM 1", "sms", EventKind::kDials, "5550101"});
    text += Says(14940ms, "sms", "ID=");
    text += transcript_.Add({15000ms, "COM 1", "sms", EventKind::kNotes, "checksum is 17;"});
    text += transcript_.Add({15000ms, "COM 1", "sms", EventKind::kDelivers, "HELLO", "123"});
    text += transcript_.Add({15000ms, "COM 1", "sms", EventKind::kDelivers, "", "124"});
    text += transcript_.Add({15001ms, "COM 1", "sms", EventKind::kEnds, "5550101"});
    text += transcript_.Add({15002ms, "COM 1", kProgram, EventKind::kCloses});
    EXPECT_EQ(
        "    0.000  COM 1  program  # opens the line\n"
        "    0.000  COM 1  program  # sets the line to 2400,e,7,1\n"
        "    7.330  COM 1  program  > ATDT0,5550101<cr>\n"
        "   14.930  COM 1  modem    < <cr><lf>CONNECT 2400<cr><lf>\n"
        "   14.930  COM 1  sms      # answers 5550101\n"
        "   14.940  COM 1  sms      < ID=\n"
        "   15.000  COM 1  sms      # checksum is 17;\n"
        "   15.000  COM 1  sms      = page for 123: HELLO\n"
        "   15.000  COM 1  sms      = empty page for 124\n"
        "   15.001  COM 1  sms      # the call is over\n"
        "   15.002  COM 1  program  # closes the line\n",
        text);
}

TEST_F(TranscriptTest, PiecesOfOneSpeakerAreOneLine) {
    EXPECT_EQ("", Says(0ms, kProgram, "jy"));
    EXPECT_EQ("", Says(250ms, kProgram, "\r"));
    EXPECT_EQ("    0.000  COM 1  program  > jy<cr>\n", transcript_.Finish());
    EXPECT_EQ("", transcript_.Finish());
}

TEST_F(TranscriptTest, APauseBeginsANewLine) {
    Says(0ms, kProgram, "jy");
    EXPECT_EQ("    0.000  COM 1  program  > jy\n", Says(251ms, kProgram, "\r"));
}

TEST_F(TranscriptTest, LinesAreKeptApart) {
    Says(0ms, kModem, "OK");
    EXPECT_EQ("    0.000  COM 1  modem    < OK\n",
              transcript_.Add({0ms, "COM 2", kModem, EventKind::kSends, "OK"}));
}

}  // namespace
}  // namespace pagersim
