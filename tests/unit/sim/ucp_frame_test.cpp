// UCP frames, held against the published ones (EMI-UCP 4.0).
#include "sim/centres/ucp_frame.h"

#include <gmock/gmock.h>

namespace pagersim {
namespace {

using ::testing::ElementsAre;

struct PublishedFrame {
    const char* use;
    const char* frame;
    const char* transaction;
    const char* type;
    const char* operation;
    std::size_t fields;
};

constexpr PublishedFrame kPublished[] = {
    {"short message",
     "18/00113/O/51/012345/09876//1/1920870340125000/4/0539//////3012961212//////3//"
     "4D657373616765203531/////////////CD",
     "18", "O", "51", 33},
    {"short message, positive", "00/00039/R/51/A//012234:090996101010/68", "00", "R", "51", 3},
    {"short message, negative", "00/00022/R/51/N/31//07", "00", "R", "51", 3},
    {"open session", "02/00059/O/60/07656765/2/1/1/50617373776F7264//0100//////61", "02", "O", "60",
     12},
    {"open session, positive", "00/00019/R/60/A//6D", "00", "R", "60", 2},
    {"open session, negative", "00/00022/R/60/N/01//04", "00", "R", "60", 3},
    {"alert", "02/00035/O/31/0234765439845/0139/A0", "02", "O", "31", 2},
    {"alert, positive", "04/00023/R/31/A/0003/2D", "04", "R", "31", 2},
    {"alert, negative", "00/00022/R/31/N/06//07", "00", "R", "31", 3},
    {"call input", "00/00070/O/01/01234567890/09876543210//3/53686F7274204D657373616765/D9", "00",
     "O", "01", 5},
};

TEST(UcpFrame, PublishedFramesAreRead) {
    for (const auto& published : kPublished) {
        const UcpFrame frame = ReadUcpFrame(published.frame);
        EXPECT_EQ(kUcpNone, frame.error) << published.use << ": " << frame.fault;
        EXPECT_EQ(published.transaction, frame.transaction) << published.use;
        EXPECT_EQ(published.type, frame.type) << published.use;
        EXPECT_EQ(published.operation, frame.operation) << published.use;
        EXPECT_EQ(published.fields, frame.fields.size()) << published.use;
    }
}

TEST(UcpFrame, ChecksumOfEitherCaseIsTaken) {
    for (const auto& published : kPublished) {
        std::string frame = published.frame;
        for (std::size_t i = frame.size() - 2; i < frame.size(); ++i) {
            frame[i] = static_cast<char>(std::tolower(frame[i]));
        }
        EXPECT_EQ(kUcpNone, ReadUcpFrame(frame).error) << frame;
    }
}

TEST(UcpFrame, AnyOneCharacterChangedIsNoticed) {
    const std::string good = kPublished[9].frame;
    for (std::size_t i = 0; i < good.size(); ++i) {
        std::string bad = good;
        bad[i] = bad[i] == '8' ? '9' : '8';
        EXPECT_NE(kUcpNone, ReadUcpFrame(bad).error) << bad;
    }
}

TEST(UcpFrame, FieldsKeepTheirPlaces) {
    const UcpFrame frame = ReadUcpFrame(kPublished[9].frame);
    EXPECT_THAT(frame.fields,
                ElementsAre("01234567890", "09876543210", "", "3", "53686F7274204D657373616765"));
}

TEST(UcpFrame, WrongLengthIsASyntaxError) {
    const std::string body = "00/00071/O/01/01234567890/09876543210//3/53686F7274204D657373616765/";
    const UcpFrame frame = ReadUcpFrame(body + UcpChecksum(body));
    EXPECT_EQ(kUcpSyntax, frame.error);
    EXPECT_EQ("length is 70, not 00071", frame.fault);
    EXPECT_EQ("O", frame.type) << "it can be answered";
}

TEST(UcpFrame, WrongChecksumIsToldWithTheRightOne) {
    const UcpFrame frame = ReadUcpFrame("00/00019/R/60/A//6E");
    EXPECT_EQ(kUcpChecksum, frame.error);
    EXPECT_EQ("checksum is 6D, not 6E", frame.fault);
}

TEST(UcpFrame, OtherTextsAreNone) {
    for (const char* text : {"", "/", "hello", "0/00019/R/60/A//6D", "00/19/R/60/A//6D",
                             "00/00019/X/60/A//6D", "00/00019/R/6/A//6D", "00/00019/R/60"}) {
        const UcpFrame frame = ReadUcpFrame(text);
        EXPECT_EQ(kUcpSyntax, frame.error) << text;
        EXPECT_EQ("", frame.type) << text;
    }
}

UcpFrame Asked(const char* operation) {
    return {"00", "O", operation};
}

TEST(UcpResult, IsAsPublished) {
    EXPECT_EQ("00/00039/R/51/A//012234:090996101010/68",
              UcpResult(Asked("51"), {"A", "", "012234:090996101010"}));
    EXPECT_EQ("00/00022/R/51/N/31//07", UcpResult(Asked("51"), {"N", "31", ""}));
    EXPECT_EQ("00/00019/R/60/A//6D", UcpResult(Asked("60"), {"A", ""}));
    EXPECT_EQ("00/00022/R/60/N/01//04", UcpResult(Asked("60"), {"N", "01", ""}));
}

TEST(FromHex, TakesBothCases) {
    EXPECT_EQ("Message 51", FromHex("4D657373616765203531"));
    EXPECT_EQ("jk\xe9", FromHex("6a6BE9"));
    EXPECT_EQ("", FromHex(""));
    EXPECT_EQ(std::nullopt, FromHex("4D6"));
    EXPECT_EQ(std::nullopt, FromHex("4G"));
}

}  // namespace
}  // namespace pagersim
