// What `pagerfwd explain` says of a page: the fields, the whole, the notes.
#include "host/explain/explanation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/text_helpers.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Explanations : public ::testing::Test {
 protected:
    Explanations() {
        port.name = "COM 3";
        port.baud = "9600";
        port.pagerData = "8";
        port.pagerParity = "None";
        port.pagerStop = "1";
        port.sms1Data = port.sms2Data = "7";
        port.sms1Parity = port.sms2Parity = "Even";
        port.sms1Stop = port.sms2Stop = "1";
        port.flow = "None";
        port.modemSet = &modem;
        modem.dialPrefix = "ATDT0,";
        modem.activityPrompt = ">";
        modem.sms1Protocol = "TAP";
        modem.sms1Number = "ATDT0,5550101";
        modem.sms2Protocol = "UCP";
        modem.sms2Number = "ATDT0,5550102";
    }
    ~Explanations() override { host::UseShiftJis(false); }

    host::Explanation Explain(int32_t type, std::string number, const std::string& details = "x") {
        Pager pager{};
        pager.pagerType = type;
        pager.pagerNumber = number.data();
        return host::ExplainPage(pager, port, {"TEST/000", "TESTSERVER", details, 4});
    }

    static std::vector<std::string> Bytes(const host::Explanation& explanation) {
        std::vector<std::string> bytes;
        for (const host::ExplainedStep& step : explanation.steps) {
            bytes.push_back(step.Bytes());
        }
        return bytes;
    }

    static std::vector<std::string> Pieces(const host::ExplainedStep& step) {
        std::vector<std::string> pieces;
        for (const host::ExplainedPiece& piece : step.pieces) {
            pieces.push_back(piece.bytes);
        }
        return pieces;
    }

    ModemSet modem;
    ComPort port;
};

TEST_F(Explanations, TapPageIsKnockLogOnBlockLogOff) {
    const host::Explanation page = Explain(4, "123");
    EXPECT_EQ("first SMS service, TAP", page.type);
    EXPECT_EQ("COM3:9600,E,7,1", page.mode);
    EXPECT_EQ("9600 / 7 / Even / 1 (None)", page.settings);
    EXPECT_THAT(Bytes(page), ElementsAre("ATDT0,5550101\r", std::string("\r\0", 2), "\x1bPG1\r\n",
                                         "\x02"
                                         "123\rTEST/Informational/TESTSERVER/x\r\x03;64\r",
                                         "\x04\r"));
    EXPECT_THAT(Pieces(page.steps[3]),
                ElementsAre("\x02", "123", "\r", "TEST/Informational/TESTSERVER/x", "\r", "\x03",
                            ";64", "\r"));
    EXPECT_THAT(page.notes, IsEmpty());
}

TEST_F(Explanations, EachFieldSaysWhatItIs) {
    const auto meanings = [](const host::ExplainedStep& step) {
        std::string all;
        for (const host::ExplainedPiece& piece : step.pieces) {
            all += piece.meaning + "|";
        }
        return all;
    };
    EXPECT_EQ(
        "start|pager number|end of the field|text|end of the field|end of the block's text|"
        "checksum: the low seven bits of all bytes so far, added up|end|",
        meanings(Explain(4, "123").steps[3]));
    EXPECT_EQ(
        "start|transaction number|characters between start and end|operation 51, submit short "
        "message|recipient|originator|sixteen empty fields|message type: alphanumeric|number of "
        "bits: empty|text, the low seven bits of each character in hexadecimal|twelve empty fields|"
        "checksum: all characters behind the start, added up|end|",
        meanings(Explain(5, "123").steps[1]));
}

TEST_F(Explanations, UcpFrameIsCutAtItsFields) {
    const host::Explanation page = Explain(5, "0123", "");
    ASSERT_EQ(2U, page.steps.size());
    EXPECT_THAT(
        Pieces(page.steps[1]),
        ElementsAre("\x02", "03/", "00119/", "O/51/", "0123/", "12345/", "////////////////", "3/",
                    "/", "544553542F496E666F726D6174696F6E616C2F544553545345525645522F/",
                    "////////////", ::testing::SizeIs(2), "\x03"));
}

TEST_F(Explanations, NumberWithASlashDoesNotShiftTheFields) {
    const host::Explanation page = Explain(5, "01/23", "");
    EXPECT_EQ("01/23/", page.steps[1].pieces[4].bytes);
    EXPECT_EQ("12345/", page.steps[1].pieces[5].bytes);
}

TEST_F(Explanations, PlainPageIsTypedLineByLine) {
    EXPECT_THAT(Bytes(Explain(2, "5550100@3003")),
                ElementsAre("ATDT0,5550100\r", "jy\r", "3003\r",
                            "TEST/Informational/TESTSERVER/x\r", "jy\r"));
    EXPECT_THAT(Bytes(Explain(0, "5550100@3003")),
                ElementsAre("ATDT0,5550100\r", "jy\r", "3003\r", "jy\r"));
}

TEST_F(Explanations, CallThatIsThePageTransfersNothing) {
    const host::Explanation page = Explain(0, "5550104@");
    EXPECT_THAT(Bytes(page), ElementsAre("ATDT0,5550104\r"));
    EXPECT_THAT(page.notes, ElementsAre("the call itself is the page; nothing is transferred"));
}

TEST_F(Explanations, NttTextIsCutIntoPairsOfDigits) {
    const host::Explanation page = Explain(3, "5550103");
    EXPECT_THAT(Bytes(page),
                ElementsAre("ATDT0,5550103;\r", "ATDT*2*2996040104940491048571048##;\r"))
        << "4/TESTSERVER";
    EXPECT_EQ("99", page.steps[1].pieces[2].bytes);
    EXPECT_EQ("4", page.steps[1].pieces[2].meaning);
    EXPECT_THAT(page.notes, ElementsAre("of the alarm, only the number of its severity and its "
                                        "server are sent"));
}

TEST_F(Explanations, TextHasTheGroupTheSeverityAndTheServerOfTheAlarm) {
    Pager pager{};
    pager.pagerType = 3;
    char number[] = "5550103";
    pager.pagerNumber = number;
    const host::PagedAlarm alarm{"PLANT/017", "p1", "x", 2};
    EXPECT_EQ("ATDT*2*297604696##;\r", host::ExplainPage(pager, port, alarm).steps[1].Bytes())
        << "2/p1";
    pager.pagerType = 4;
    EXPECT_EQ("PLANT/Major/p1/x", host::ExplainPage(pager, port, alarm).steps[3].pieces[3].bytes);
}

TEST_F(Explanations, PageThatShowsNothingOfTheAlarmSaysSo) {
    for (const int32_t type : {0, 1}) {
        EXPECT_THAT(Explain(type, "1@2").notes,
                    ElementsAre("nothing of the alarm is sent, only that there is one"));
    }
}

TEST_F(Explanations, CutIsThatOfThePagersType) {
    const auto cut = [](int32_t type, const std::string& server, size_t details) {
        const auto found = host::CutOf(type, {"G/1", server, std::string(details, 'x'), 1});
        return found ? std::to_string(found->kept) + " of " + std::to_string(found->whole) : "-";
    };
    // "G/Critical/s/" is 13 characters long.
    EXPECT_EQ("-", cut(2, "s", 67));
    EXPECT_EQ("80 of 81", cut(2, "s", 68));
    EXPECT_EQ("-", cut(4, "s", 127));
    EXPECT_EQ("140 of 141", cut(4, "s", 128));
    EXPECT_EQ("140 of 141", cut(5, "s", 128));
    EXPECT_EQ("-", cut(0, "s", 1000));
    EXPECT_EQ("-", cut(1, "s", 1000));
    EXPECT_EQ("-", cut(3, std::string(12, 's'), 1000));
    EXPECT_EQ("14 of 15", cut(3, std::string(13, 's'), 1000));
}

TEST_F(Explanations, ProtocolOfAnotherNameSendsNothing) {
    modem.sms1Protocol = "tap";
    const host::Explanation page = Explain(4, "123");
    EXPECT_THAT(Bytes(page), ElementsAre("ATDT0,5550101\r"));
    EXPECT_THAT(page.notes, ElementsAre("nothing is sent, and success is reported: no such pager "
                                        "type or protocol"));
}

TEST_F(Explanations, TextThatIsTooLongIsNoted) {
    EXPECT_THAT(Explain(2, "1@2", std::string(100, 'x')).notes,
                ElementsAre("only 80 of 130 characters of the text are sent"));
    EXPECT_THAT(Explain(2, "1@2", std::string(50, 'x')).notes, IsEmpty());
    EXPECT_THAT(Explain(4, "2", std::string(111, 'x')).notes,
                ElementsAre("only 140 of 141 characters of the text are sent"));
}

TEST_F(Explanations, LostEighthBitIsNoted) {
    const char* const kNote =
        "only seven bits of each character arrive: "
        "TEST/Informational/TESTSERVER/i";
    EXPECT_THAT(Explain(4, "123", "\xE9").notes, ElementsAre(kNote)) << "seven data bits";
    port.sms1Data = port.sms2Data = "8";
    EXPECT_THAT(Explain(4, "123", "\xE9").notes, IsEmpty());
    EXPECT_THAT(Explain(5, "123", "\xE9").notes, ElementsAre(kNote)) << "UCP, whatever the line";
}

}  // namespace
