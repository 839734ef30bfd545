// The TAP centre's dialogue.
#include "sim/centres/tap_centre.h"

#include <gmock/gmock.h>

#include "tests/unit/sim/fakes.h"

namespace pagersim {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace std::string_literals;

const std::string kLogOn = "\x1bPG1\r";
const std::string kLoggedOn = "\r\x06\r\x1b[p\r";
const std::string kBlock =
    "\x02"
    "123\rABC\r\x03"
    "17;\r";
const std::string kAccepted = "\r\x06\r";
const std::string kEnd = "\x04\r";
const std::string kEnded = "\r\x1b\x04\r";

class TapCentreTest : public ::testing::Test {
 protected:
    void Answer(const TapOptions& options) {
        centre_ = std::make_unique<TapCentre>(options);
        centre_->Answered(call_);
    }

    // What the centre answers to this.
    std::string To(const std::string& bytes) {
        centre_->Heard(bytes);
        return call_.Hear();
    }

    void LogOn(const TapOptions& options = {}) {
        Answer(options);
        To("\r");
        ASSERT_EQ(kLoggedOn, To(kLogOn));
    }

    FakeCall call_;
    std::unique_ptr<TapCentre> centre_;
};

// TAP 1.8, appendix C, from the centre's side.
TEST_F(TapCentreTest, PublishedSession) {
    TapOptions options;
    options.strict = true;
    options.text_lines = true;
    Answer(options);
    EXPECT_EQ("", call_.Hear());
    EXPECT_EQ("ID=", To("\r"));
    EXPECT_EQ("110 1.8\r\x06\r\x1b[p\r", To("\x1bPG1\r"));
    EXPECT_EQ("211 Page accepted\r\x06\r", To("\x02"
                                              "123\rABC\r\x03"
                                              "17;\r"));
    EXPECT_EQ("115 Thank you for calling\r\x1b\x04\r", To("\x04\r"));
    EXPECT_THAT(call_.Pages(), ElementsAre("123: ABC"));
}

TEST_F(TapCentreTest, WithoutTextLines) {
    Answer({});
    EXPECT_EQ("ID=", To("\r"));
    EXPECT_EQ(kLoggedOn, To(kLogOn));
    EXPECT_EQ(kAccepted, To(kBlock));
    EXPECT_EQ(kEnded, To(kEnd));
    EXPECT_THAT(call_.Pages(), ElementsAre("123: ABC"));
}

TEST_F(TapCentreTest, SomeSendNoCarriageReturnBeforeTheAck) {
    TapOptions options;
    options.bare_ack = true;
    Answer(options);
    To("\r");
    EXPECT_EQ("\x06\r\x1b[p\r", To(kLogOn));
    EXPECT_EQ("\x06\r", To(kBlock));
}

TEST_F(TapCentreTest, BytesMayComeOneByOne) {
    Answer({});
    std::string said;
    for (const char c : "\r" + kLogOn + kBlock + kEnd) {
        said += To({c});
    }
    EXPECT_EQ("ID=" + kLoggedOn + kAccepted + kEnded, said);
}

TEST_F(TapCentreTest, HangsUpAfterTheEnd) {
    LogOn();
    To(kBlock);
    To(kEnd);
    EXPECT_FALSE(call_.HungUp());
    call_.Hear(300ms);
    EXPECT_TRUE(call_.HungUp());
}

TEST_F(TapCentreTest, LenientOneIgnoresNulAndLineFeed) {
    Answer({});
    EXPECT_EQ("ID=", To("\r\0"s));
    EXPECT_EQ(kLoggedOn, To("\x1bPG1\r\n"));
    EXPECT_EQ(kAccepted, To(kBlock));
}

TEST_F(TapCentreTest, StrictOneAnswersANulWith507) {
    TapOptions options;
    options.strict = true;
    Answer(options);
    EXPECT_EQ("ID=", To("\r\0"s));
    EXPECT_EQ("507 Bad log-on\r\x15\rID=", To(kLogOn));
}

TEST_F(TapCentreTest, StrictOneAnswersALineFeedBehindTheLogOnWith502) {
    TapOptions options;
    options.strict = true;
    Answer(options);
    To("\r");
    EXPECT_EQ(kLoggedOn + "502 Unexpected characters\r\x15\r", To("\x1bPG1\r\n"));
    EXPECT_EQ("", To("\n\n")) << "one complaint is enough";
    EXPECT_EQ(kAccepted, To(kBlock));
    EXPECT_EQ("502 Unexpected characters\r\x15\r", To("\n")) << "until the next block";
}

TEST_F(TapCentreTest, SecondKnockIsAnswered) {
    TapOptions options;
    options.knocks = 2;
    Answer(options);
    EXPECT_EQ("", To("\r"));
    EXPECT_EQ("ID=", To("\r"));
}

TEST_F(TapCentreTest, KnockingOnAsksAgain) {
    Answer({});
    To("\r");
    EXPECT_EQ("ID=", To("\r"));
}

TEST_F(TapCentreTest, BadLogOnIsAskedForThreeTimes) {
    Answer({});
    To("\r");
    EXPECT_EQ("507 Bad log-on\r\x15\rID=", To("hello\r"));
    EXPECT_EQ("507 Bad log-on\r\x15\rID=", To("hello\r"));
    EXPECT_EQ("507 Bad log-on\r\x1b\x04\r", To("hello\r"));
    EXPECT_THAT(call_.Notes(), Contains("not a log-on: hello").Times(3));
    EXPECT_EQ("", To("\r" + kLogOn)) << "it is over";
    call_.Hear(300ms);
    EXPECT_TRUE(call_.HungUp());
}

TEST_F(TapCentreTest, PasswordIsCompared) {
    TapOptions options;
    options.password = "SECRET";
    Answer(options);
    To("\r");
    EXPECT_EQ("509 Bad log-on: password\r\x15\rID=", To(kLogOn));
    EXPECT_EQ(kLoggedOn, To("\x1bPG1SECRET\r"));
}

TEST_F(TapCentreTest, WrongChecksumIsAskedForAgain) {
    LogOn();
    EXPECT_EQ("514 Checksum error\r\x15\r", To("\x02"
                                               "123\rABC\r\x03"
                                               "18;\r"));
    EXPECT_THAT(call_.Notes(), ElementsAre("checksum is 17;, not 18;"));
    EXPECT_THAT(call_.Pages(), IsEmpty());
    EXPECT_EQ(kAccepted, To(kBlock));
}

TEST_F(TapCentreTest, TooManyWrongChecksumsEndTheCall) {
    LogOn();
    const std::string wrong =
        "\x02"
        "123\rABC\r\x03"
        "18;\r";
    To(wrong);
    To(wrong);
    EXPECT_EQ("503 Too many checksum errors\r\x1b\x04\r", To(wrong));
}

TEST_F(TapCentreTest, FaultyBlockIsRefused) {
    LogOn();
    EXPECT_EQ("515 Message format error\r\x1e\r", To("\x02"
                                                     "123\rA\tC\r\x03"
                                                     "142\r"));
    EXPECT_THAT(call_.Notes(), Contains("a bare control in A<ht>C"));
    EXPECT_THAT(call_.Pages(), IsEmpty());
}

TEST_F(TapCentreTest, OnlyKnownPagersArePaged) {
    TapOptions options;
    options.pagers = {"124", "125"};
    LogOn(options);
    EXPECT_EQ("511 Invalid pager id\r\x1e\r", To(kBlock));
    EXPECT_THAT(call_.Pages(), IsEmpty());
}

TEST_F(TapCentreTest, StrictOneWantsDigitsForAPager) {
    TapOptions options;
    options.strict = true;
    LogOn(options);
    const std::string block =
        "\x02"
        "12A\rABC\r\x03";
    EXPECT_EQ("510 Illegal pager id\r\x1e\r", To(block + TapChecksum(block) + "\r"));
}

TEST_F(TapCentreTest, AnyDigitsAreAPager) {
    TapOptions options;
    options.strict = true;
    LogOn(options);
    const std::string block =
        "\x02"
        "1023456789\rABC\r\x03";
    EXPECT_EQ(kAccepted, To(block + TapChecksum(block) + "\r"));
}

TEST_F(TapCentreTest, SaysNothingOnceTheCallHasEnded) {
    LogOn();
    centre_->Ended();
    EXPECT_EQ("", To(kBlock));
    EXPECT_THAT(call_.Pages(), IsEmpty());
}

TEST_F(TapCentreTest, EmptyPagerIsIllegal) {
    LogOn();
    const std::string block = "\x02\rABC\r\x03";
    EXPECT_EQ("510 Illegal pager id\r\x1e\r", To(block + TapChecksum(block) + "\r"));
}

struct CodeCase {
    int code;
    const char* said;
    bool delivered;
};

class TapCodes : public TapCentreTest, public ::testing::WithParamInterface<CodeCase> {};

TEST_P(TapCodes, CanBeTheAnswerToEveryBlock) {
    TapOptions options;
    options.answer = GetParam().code;
    LogOn(options);
    EXPECT_EQ(GetParam().said, To(kBlock));
    EXPECT_EQ(GetParam().delivered ? 1U : 0U, call_.Pages().size());
}

INSTANTIATE_TEST_SUITE_P(
    All, TapCodes,
    ::testing::Values(CodeCase{211, "\r\x06\r", true},
                      CodeCase{212, "212 Message truncated, page accepted\r\x06\r", true},
                      CodeCase{213, "213 Message held, page accepted\r\x06\r", true},
                      CodeCase{501, "501 Timed out\r\x1b\x04\r", false},
                      CodeCase{502, "502 Unexpected characters\r\x15\r", false},
                      CodeCase{503, "503 Too many checksum errors\r\x1b\x04\r", false},
                      CodeCase{504, "504 Tone-only pager\r\x1e\r", false},
                      CodeCase{505, "505 Numeric pager\r\x1e\r", false},
                      CodeCase{510, "510 Illegal pager id\r\x1e\r", false},
                      CodeCase{511, "511 Invalid pager id\r\x1e\r", false},
                      CodeCase{512, "512 Try later\r\x1e\r", false},
                      CodeCase{513, "513 Message too long\r\x1e\r", false},
                      CodeCase{514, "514 Checksum error\r\x15\r", false},
                      CodeCase{515, "515 Message format error\r\x1e\r", false},
                      CodeCase{516, "516 Message quota exceeded\r\x1e\r", false}),
    [](const auto& tested) { return "Code" + std::to_string(tested.param.code); });

TEST_F(TapCentreTest, AFaultyBlockIsNotAcceptedByOrder) {
    TapOptions options;
    options.answer = 213;
    LogOn(options);
    EXPECT_EQ("514 Checksum error\r\x15\r", To("\x02"
                                               "123\rABC\r\x03"
                                               "18;\r"));
}

TEST_F(TapCentreTest, MayAcceptAndNeverEnd) {
    TapOptions options;
    options.ends = false;
    LogOn(options);
    EXPECT_EQ(kAccepted, To(kBlock));
    EXPECT_EQ("", To(kEnd));
    EXPECT_EQ("", call_.Hear(60'000ms));
    EXPECT_FALSE(call_.HungUp());
    EXPECT_THAT(call_.Notes(), ElementsAre("never ends the call"));
    EXPECT_THAT(call_.Pages(), ElementsAre("123: ABC"));
}

TEST_F(TapCentreTest, SeveralPagesInACall) {
    LogOn();
    EXPECT_EQ(kAccepted, To(kBlock));
    EXPECT_EQ(kAccepted, To("\x02"
                            "02\r\r\x03"
                            "081\r"));
    EXPECT_THAT(call_.Pages(), ElementsAre("123: ABC", "02: "));
}

// Messages of several blocks.

constexpr char kEtx = '\x03';
constexpr char kEtb = '\x17';
constexpr char kUs = '\x1f';

std::string Block(const std::string& fields, char mark) {
    const std::string block = "\x02" + fields + mark;
    return block + TapChecksum(block) + "\r";
}

TEST_F(TapCentreTest, FieldMayGoOnInTheNextBlock) {
    TapOptions options;
    options.strict = true;
    LogOn(options);
    EXPECT_EQ(kAccepted, To(Block("123\rPump 3 is", kUs)));
    EXPECT_THAT(call_.Pages(), IsEmpty()) << "not yet";
    EXPECT_EQ(kAccepted, To(Block(" hot, very", kUs)));
    EXPECT_EQ(kAccepted, To(Block(" hot\r", kEtx)));
    EXPECT_THAT(call_.Pages(), ElementsAre("123: Pump 3 is hot, very hot"));
}

TEST_F(TapCentreTest, LineFeedWithinABlockCountsInItsChecksum) {
    LogOn();
    EXPECT_EQ(kAccepted, To(Block("123\rA\nB\r", kEtx)));
    EXPECT_THAT(call_.Pages(), ElementsAre("123: AB"));
}

TEST_F(TapCentreTest, FieldsMayComeInBlocksOfTheirOwn) {
    LogOn();
    EXPECT_EQ(kAccepted, To(Block("123\r", kEtb)));
    EXPECT_EQ(kAccepted, To(Block("Pump 3\r", kEtx)));
    EXPECT_THAT(call_.Pages(), ElementsAre("123: Pump 3"));
    EXPECT_EQ(kAccepted, To(kBlock));
    EXPECT_THAT(call_.Pages(), ElementsAre("123: Pump 3", "123: ABC")) << "the next begins anew";
}

TEST_F(TapCentreTest, FurtherFieldsAreFurtherLines) {
    LogOn();
    EXPECT_EQ(kAccepted, To(Block("123\rPump 3\ris hot\r", kEtb)));
    EXPECT_EQ(kAccepted, To(Block("call Anna\r", kEtx)));
    EXPECT_THAT(call_.Pages(), ElementsAre("123: Pump 3\nis hot\ncall Anna"));
}

TEST_F(TapCentreTest, SomeSayUsWhereAFieldHasEnded) {
    LogOn();
    To(Block("123\r", kUs));
    To(Block("Pump 3\r", kEtx));
    EXPECT_THAT(call_.Pages(), ElementsAre("123: Pump 3"));
}

TEST_F(TapCentreTest, BlockOfAMessageThatIsAskedForAgainCountsOnce) {
    LogOn();
    To(Block("123\rPump", kUs));
    const std::string next = Block(" 3", kUs);
    EXPECT_EQ("514 Checksum error\r\x15\r", To(next.substr(0, 4) + "000\r"));
    EXPECT_EQ(kAccepted, To(next));
    EXPECT_EQ(kAccepted, To(Block(" hot\r", kEtx)));
    EXPECT_THAT(call_.Pages(), ElementsAre("123: Pump 3 hot"));
}

TEST_F(TapCentreTest, PageIsAcceptedInWordsWithItsLastBlockOnly) {
    TapOptions options;
    options.text_lines = true;
    Answer(options);
    To("\r");
    To(kLogOn);
    EXPECT_EQ(kAccepted, To(Block("123\r", kEtb)));
    EXPECT_EQ("211 Page accepted\r\x06\r", To(Block("Pump 3\r", kEtx)));
}

TEST_F(TapCentreTest, OrderedAnswerHoldsForEveryBlock) {
    TapOptions options;
    options.answer = 213;
    LogOn(options);
    const std::string held = "213 Message held, page accepted\r\x06\r";
    EXPECT_EQ(held, To(Block("123\r", kEtb)));
    EXPECT_EQ(held, To(Block("Pump 3\r", kEtx)));
    EXPECT_THAT(call_.Pages(), ElementsAre("123: Pump 3"));
}

TEST_F(TapCentreTest, RefusedBlockEndsItsMessage) {
    LogOn();
    To(Block("123\rPump", kUs));
    EXPECT_EQ("515 Message format error\r\x1e\r", To(Block("\t3\r", kEtx)));
    EXPECT_EQ(kAccepted, To(kBlock));
    EXPECT_THAT(call_.Pages(), ElementsAre("123: ABC"));
}

TEST_F(TapCentreTest, MessageNeedsPagerAndText) {
    LogOn();
    EXPECT_EQ("515 Message format error\r\x1e\r", To(Block("123\r", kEtx)));
    EXPECT_EQ("515 Message format error\r\x1e\r", To(Block("", kEtx)));
    EXPECT_THAT(call_.Notes(), Contains("a message needs a pager and a text").Times(2));
}

TEST_F(TapCentreTest, UnknownPagerIsToldBehindTheLastBlock) {
    TapOptions options;
    options.pagers = {"124"};
    LogOn(options);
    EXPECT_EQ(kAccepted, To(Block("123\r", kEtb)));
    EXPECT_EQ("511 Invalid pager id\r\x1e\r", To(Block("Pump 3\r", kEtx)));
}

TEST_F(TapCentreTest, MessageWithoutALastBlockIsNone) {
    LogOn();
    To(Block("123\rPump", kUs));
    EXPECT_EQ(kEnded, To(kEnd));
    EXPECT_THAT(call_.Notes(),
                ElementsAre("the message's last block never came, nothing delivered"));
    EXPECT_THAT(call_.Pages(), IsEmpty());
}

TEST_F(TapCentreTest, CarrierThatIsLostAmidAMessageIsNoted) {
    LogOn();
    To(Block("123\rPump", kUs));
    centre_->Ended();
    EXPECT_THAT(call_.Notes(), Contains("the message's last block never came, nothing delivered"));
}

TEST_F(TapCentreTest, FieldsBehindOneThatWentOnAreTheirOwn) {
    LogOn();
    To(Block("123\rPump", kUs));
    To(Block(" 3\ris hot\r", kEtx));
    EXPECT_THAT(call_.Pages(), ElementsAre("123: Pump 3\nis hot"));
}

TEST_F(TapCentreTest, MessageOfMoreThan4096CharactersIsTooLong) {
    LogOn();
    To(Block("123\r", kEtb));
    for (int i = 0; i < 16; ++i) {
        To(Block(std::string(245, 'x'), kUs));
    }
    EXPECT_EQ(kAccepted, To(Block(std::string(4096 - 3 - 16 * 245, 'x'), kUs)));
    EXPECT_EQ("513 Message too long\r\x1e\r", To(Block("x", kUs)));
    EXPECT_EQ(kAccepted, To(kBlock));
    EXPECT_THAT(call_.Pages(), ElementsAre("123: ABC"));
}

TEST_F(TapCentreTest, InputWithoutEndIsForgotten) {
    LogOn();
    EXPECT_EQ("", To("\x02" + std::string(4096, 'x')));
    EXPECT_EQ("502 Unexpected characters\r\x15\r", To("x"));
    EXPECT_EQ(kAccepted, To(kBlock));
}

}  // namespace
}  // namespace pagersim
