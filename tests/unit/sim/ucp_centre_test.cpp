// The UCP centre's answers.
#include "sim/centres/ucp_centre.h"

#include <gmock/gmock.h>

#include "tests/unit/sim/fakes.h"

namespace pagersim {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kSubmit =
    "\x02"
    "18/00113/O/51/012345/09876//1/1920870340125000/4/0539//////3012961212//////3//"
    "4D657373616765203531/////////////CD\x03";
constexpr const char* kCallInput =
    "\x02"
    "00/00070/O/01/01234567890/09876543210//3/53686F7274204D657373616765/D9\x03";
constexpr const char* kOpenSession =
    "\x02"
    "02/00059/O/60/07656765/2/1/1/50617373776F7264//0100//////61\x03";

// 9 September 1996, 10:10:10 UTC.
constexpr std::time_t kStart = 842263810;

// A frame with its length and checksum. `body`: "/O/51/...", up to the last slash.
std::string Frame(const std::string& body) {
    char length[8];
    std::snprintf(length, sizeof length, "%05u", static_cast<unsigned>(body.size() + 10));
    const std::string frame = std::string("07/") + length + body;
    return "\x02" + frame + UcpChecksum(frame) + "\x03";
}

std::string Submit(const std::string& recipient, const std::string& type, const std::string& text) {
    return Frame("/O/51/" + recipient + "/12345/////////////////" + type + "//" + text +
                 "/////////////");
}

class UcpCentreTest : public ::testing::Test {
 protected:
    UcpCentreTest() { options_.start = kStart; }

    std::string To(const std::string& bytes) {
        if (centre_ == nullptr) {
            centre_ = std::make_unique<UcpCentre>(options_);
            centre_->Answered(call_);
        }
        centre_->Heard(bytes);
        return call_.Hear();
    }

    UcpOptions options_;
    FakeCall call_;
    std::unique_ptr<UcpCentre> centre_;
};

TEST_F(UcpCentreTest, PublishedSubmissionIsTaken) {
    options_.strict = true;
    EXPECT_EQ(
        "\x02"
        "18/00039/R/51/A//012345:090996101010/74\x03",
        To(kSubmit));
    EXPECT_THAT(call_.Pages(), ElementsAre("012345: Message 51"));
}

TEST_F(UcpCentreTest, PublishedCallInputIsTaken) {
    options_.strict = true;
    EXPECT_EQ(
        "\x02"
        "00/00043/R/01/A/01234567890:090996101010/40\x03",
        To(kCallInput));
    EXPECT_THAT(call_.Pages(), ElementsAre("01234567890: Short Message"));
}

TEST_F(UcpCentreTest, PublishedSessionIsOpened) {
    EXPECT_EQ(
        "\x02"
        "02/00019/R/60/A//6F\x03",
        To(kOpenSession));
}

TEST_F(UcpCentreTest, PublishedAlertIsAnswered) {
    options_.strict = true;
    EXPECT_EQ(
        "\x02"
        "02/00023/R/31/A/0000/28\x03",
        To("\x02"
           "02/00035/O/31/0234765439845/0139/A0\x03"))
        << "as published, but that no message waits";
    EXPECT_THAT(call_.Pages(), IsEmpty());
}

TEST_F(UcpCentreTest, AlertsAreRefusedWithTheReason) {
    options_.pagers = {"0123"};
    const auto answer = [this](const std::string& fields) { return To(Frame("/O/31/" + fields)); };
    EXPECT_THAT(answer("0123/0139/"), ::testing::HasSubstr("/R/31/A/0000/"));
    EXPECT_THAT(answer("0124/0139/"), ::testing::HasSubstr("/R/31/N/06//"));
    EXPECT_THAT(answer("0123/"), ::testing::HasSubstr("/R/31/N/02//"));
    EXPECT_THAT(answer("0123/139/"), ::testing::HasSubstr("/R/31/N/02//"));
    EXPECT_THAT(answer("0123/013x/"), ::testing::HasSubstr("/R/31/N/02//"));
    EXPECT_THAT(answer("0123/0139//"), ::testing::HasSubstr("/R/31/N/02//"));
    options_.password = "Password";
    centre_.reset();
    EXPECT_THAT(answer("0123/0139/"), ::testing::HasSubstr("/R/31/N/07//"));
}

TEST_F(UcpCentreTest, TextsMayBeShownInTheAlphabetOfGsm) {
    options_.gsm = true;
    To(Submit("0123", "3", "5B407C7D1B65"));
    To(Submit("0123", "4", "5B40"));
    To(Submit("0123", "2", "47"));
    EXPECT_THAT(call_.Pages(), ElementsAre("0123: Ä¡öñ€", "0123: [@", "0123: 47"));
}

TEST_F(UcpCentreTest, OtherwiseTextsAreShownAsTheyAre) {
    To(Submit("0123", "3", "5B40"));
    EXPECT_THAT(call_.Pages(), ElementsAre("0123: [@"));
}

TEST_F(UcpCentreTest, TextOf160SeptetsFitsHoweverLongItIsShown) {
    options_.gsm = true;
    std::string hex;
    for (int i = 0; i < 160; ++i) {
        hex += "5B";
    }
    EXPECT_THAT(To(Submit("0123", "3", hex)), ::testing::HasSubstr("/A//"));
}

TEST_F(UcpCentreTest, LowerCaseChecksumIsTaken) {
    options_.strict = true;
    EXPECT_EQ(
        "\x02"
        "07/00037/R/51/A//0123:090996101010/07\x03",
        To("\x02"
           "07/00063/O/51/0123/12345/////////////////3//4869/////////////b3\x03"));
    EXPECT_THAT(call_.Pages(), ElementsAre("0123: Hi"));
}

TEST_F(UcpCentreTest, TimeStampShowsTheVirtualTime) {
    call_.Hear(51'000ms);
    EXPECT_THAT(To(Submit("0123", "3", "4869")), ::testing::HasSubstr("0123:090996101101/"));
}

TEST_F(UcpCentreTest, SaysNothingByItself) {
    EXPECT_EQ("", To(""));
    EXPECT_EQ("", call_.Hear(60'000ms));
}

TEST_F(UcpCentreTest, NumericMessageIsTakenAsItIs) {
    To(Submit("0123", "2", "4711"));
    EXPECT_THAT(call_.Pages(), ElementsAre("0123: 4711"));
}

TEST_F(UcpCentreTest, EmptyMessageIsTaken) {
    To(Submit("0123", "3", ""));
    EXPECT_THAT(call_.Pages(), ElementsAre("0123: "));
}

struct Refusal {
    const char* why;
    std::string frame;
    const char* code;
};

TEST_F(UcpCentreTest, RefusesWithTheReason) {
    const std::string long_text = [] {
        std::string hex;
        for (int i = 0; i < 161; ++i) {
            hex += "41";
        }
        return hex;
    }();
    const std::string wrong_sum =
        "\x02"
        "07/00063/O/51/0123/12345/////////////////3//4869"
        "/////////////b4\x03";
    const Refusal refusals[] = {
        {"checksum", wrong_sum, "01"},
        {"too few fields", Frame("/O/51/0123/12345/"), "02"},
        {"odd hexadecimal", Submit("0123", "3", "486"), "02"},
        {"no hexadecimal", Submit("0123", "3", "Hi"), "02"},
        {"session without password field", Frame("/O/60/0765/"), "02"},
        {"an operation it doesn't know", Frame("/O/52/0123/"), "04"},
        {"no recipient", Submit("", "3", "4869"), "06"},
        {"recipient with letters", Submit("01A3", "3", "4869"), "06"},
        {"recipient too long", Submit("01234567890123456", "3", "4869"), "06"},
        {"text too long", Submit("0123", "3", long_text), "24"},
        {"unknown message type", Submit("0123", "5", "4869"), "26"},
    };
    for (const Refusal& refusal : refusals) {
        EXPECT_THAT(To(refusal.frame),
                    ::testing::HasSubstr(std::string("/N/") + refusal.code + "//"))
            << refusal.why;
    }
    EXPECT_THAT(call_.Pages(), IsEmpty());
}

TEST_F(UcpCentreTest, TextOf160CharactersIsTaken) {
    std::string hex;
    for (int i = 0; i < 160; ++i) {
        hex += "41";
    }
    To(Submit("0123", "3", hex));
    EXPECT_EQ(1U, call_.Pages().size());
}

TEST_F(UcpCentreTest, CanRefuseWithEachCode) {
    for (const int code : {1, 2, 4, 5, 6, 7, 24, 26, 99}) {
        options_.answer = code;
        centre_.reset();
        char expected[16];
        std::snprintf(expected, sizeof expected, "/N/%02d//", code);
        EXPECT_THAT(To(Submit("0123", "3", "4869")), ::testing::HasSubstr(expected));
    }
    EXPECT_THAT(call_.Pages(), IsEmpty());
}

TEST_F(UcpCentreTest, OnlyKnownRecipients) {
    options_.pagers = {"0124"};
    EXPECT_THAT(To(Submit("0123", "3", "4869")), ::testing::HasSubstr("/N/06//"));
    EXPECT_THAT(To(Submit("0124", "3", "4869")), ::testing::HasSubstr("/A//0124:"));
}

TEST_F(UcpCentreTest, PasswordNeedsASession) {
    options_.password = "Password";
    EXPECT_THAT(To(kSubmit), ::testing::HasSubstr("/N/07//"));
    EXPECT_THAT(To(kOpenSession), ::testing::HasSubstr("/R/60/A//"));
    EXPECT_THAT(To(kSubmit), ::testing::HasSubstr("/A//"));
}

TEST_F(UcpCentreTest, WrongPasswordOpensNothing) {
    options_.password = "other";
    EXPECT_THAT(To(kOpenSession), ::testing::HasSubstr("/R/60/N/07//"));
    EXPECT_THAT(To(kSubmit), ::testing::HasSubstr("/N/07//"));
}

TEST_F(UcpCentreTest, LenientOneIgnoresWhatStandsBetweenFrames) {
    EXPECT_THAT(To(std::string("\0\n+++", 5) + Submit("0123", "3", "4869")),
                ::testing::HasSubstr("/A//"));
}

TEST_F(UcpCentreTest, StrictOneWantsNothingBetweenFrames) {
    options_.strict = true;
    EXPECT_THAT(To("\n" + Submit("0123", "3", "4869")), ::testing::HasSubstr("/N/02//"));
    EXPECT_THAT(To(Submit("0123", "3", "4869")), ::testing::HasSubstr("/A//"))
        << "only the next frame is spoilt";
}

TEST_F(UcpCentreTest, StrictOneNoticesWhatStandsBetweenTwoFrames) {
    options_.strict = true;
    EXPECT_THAT(To(Submit("0123", "3", "4869")), ::testing::HasSubstr("/A//"));
    EXPECT_THAT(To("\n" + Submit("0123", "3", "4869")), ::testing::HasSubstr("/N/02//"));
    EXPECT_THAT(call_.Notes(), ElementsAre("something stands before the frame"));
}

TEST_F(UcpCentreTest, OneFieldTooFewIsASyntaxError) {
    EXPECT_THAT(To(Frame("/O/51/0123/12345/////////////////3//")), ::testing::HasSubstr("/N/02//"));
    EXPECT_THAT(call_.Notes(), ElementsAre("operation 51 with 20 fields"));
    EXPECT_THAT(To(Frame("/O/60/0765/2/1/1/")), ::testing::HasSubstr("/N/02//"));
}

TEST_F(UcpCentreTest, RecipientOf16DigitsIsTaken) {
    EXPECT_THAT(To(Submit("0123456789012345", "3", "4869")), ::testing::HasSubstr("/A//"));
}

TEST_F(UcpCentreTest, LenientOneTakesMissingLastFields) {
    const std::string short_frame = Frame("/O/51/0123/12345/////////////////3//4869/");
    EXPECT_THAT(To(short_frame), ::testing::HasSubstr("/A//"));
    options_.strict = true;
    centre_.reset();
    EXPECT_THAT(To(short_frame), ::testing::HasSubstr("/N/02//"));
}

TEST_F(UcpCentreTest, ResultsAndBrokenFramesAreNotAnswered) {
    EXPECT_EQ("", To("\x02"
                     "00/00019/R/60/A//6D\x03"));
    EXPECT_EQ("", To("\x02hello\x03"));
    EXPECT_THAT(call_.Notes(), ElementsAre("no frame: hello"));
}

TEST_F(UcpCentreTest, ANewStartForgetsAnUnfinishedFrame) {
    EXPECT_THAT(To("\x02"
                   "18/0011" +
                   Submit("0123", "3", "4869")),
                ::testing::HasSubstr("/A//"));
}

TEST_F(UcpCentreTest, BytesMayComeOneByOne) {
    std::string said;
    for (const char c : Submit("0123", "3", "4869")) {
        said += To({c});
    }
    EXPECT_THAT(said, ::testing::HasSubstr("/A//"));
}

}  // namespace
}  // namespace pagersim
