// The UCP frame: the known frame, the fields of EMI-UCP 4.0's operation 51, length and checksum.

#include "modem/ucp_frame.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

std::string FrameOf(const char* number, const char* message) {
    const CString frame = CreateUCPFrame(number, message);
    return {frame, static_cast<size_t>(frame.GetLength())};
}

std::vector<std::string> Fields(const std::string& frame) {
    std::vector<std::string> fields(1);
    for (const char c : frame.substr(1, frame.size() - 2)) {
        if (c == '/') {
            fields.emplace_back();
        } else {
            fields.back() += c;
        }
    }
    return fields;
}

// As the standard says it: all between STX and the checksum, low eight bits.
std::string UcpSumOf(const std::string& frame) {
    unsigned sum = 0;
    for (const char c : frame.substr(1, frame.size() - 4)) {
        sum += static_cast<unsigned char>(c);
    }
    char digits[3];
    snprintf(digits, sizeof digits, "%02x", sum % 256);
    return digits;
}

TEST(UcpFrame, IsTheKnownOne) {
    EXPECT_EQ(
        "\x02"
        "03/00063/O/51/0123/12345/////////////////3//4869/////////////af"
        "\x03",
        FrameOf("0123", "Hi"));
}

TEST(UcpFrame, HasTheFieldsOfASubmittedMessage) {
    const std::vector<std::string> fields = Fields(FrameOf("4917", "Hi"));
    ASSERT_EQ(38U, fields.size()) << "4 of the header, 33 of the operation, the checksum";
    EXPECT_EQ("03", fields[0]) << "transaction number";
    EXPECT_EQ("O", fields[2]) << "an operation";
    EXPECT_EQ("51", fields[3]) << "submit short message";
    EXPECT_EQ("4917", fields[4]) << "recipient";
    EXPECT_EQ("12345", fields[5]) << "originator";
    for (size_t i = 6; i < 22; ++i) {
        EXPECT_EQ("", fields[i]) << "field " << i;
    }
    EXPECT_EQ("3", fields[22]) << "message type: alphanumeric";
    EXPECT_EQ("", fields[23]) << "number of bits";
    EXPECT_EQ("4869", fields[24]) << "message";
    for (size_t i = 25; i < 37; ++i) {
        EXPECT_EQ("", fields[i]) << "field " << i;
    }
}

TEST(UcpFrame, WithoutAMessageIsStillAFrame) {
    EXPECT_EQ(
        "\x02"
        "03/00059/O/51/0123/12345/////////////////3///////////////d9"
        "\x03",
        FrameOf("0123", ""));
}

TEST(UcpFrame, KeepsSevenBitsOfEachCharacter) {
    EXPECT_EQ("69", Fields(FrameOf("1", "\xE9"))[24]);
    EXPECT_EQ("7F00", Fields(FrameOf("1", "\xFF\x80"))[24]);
}

TEST(UcpFrame, WritesTheMessageInUpperCase) {
    EXPECT_EQ("6A4B2F0A", Fields(FrameOf("1", "jK/\n"))[24]);
}

TEST(UcpFrame, CountsFromTheTransactionNumberToTheChecksum) {
    for (const size_t length : {0U, 1U, 80U, 140U, 4000U}) {
        const std::string message(length, 'x');
        const std::string frame = FrameOf("0170", message.c_str());
        EXPECT_EQ(frame.size() - 2, std::stoul(Fields(frame)[1])) << length << " characters";
        EXPECT_EQ(5U, Fields(frame)[1].size());
    }
}

TEST(UcpFrame, KeepsALowerCaseChecksumOfAllBetween) {
    bool sawALetter = false;
    for (int i = 0; i < 256; ++i) {
        const std::string number = std::to_string(i * 7919);
        const std::string frame = FrameOf(number.c_str(), "Pump 3 stopped");
        const std::string sum = Fields(frame).back();
        EXPECT_EQ(UcpSumOf(frame), sum) << number;
        sawALetter = sawALetter || sum.find_first_of("abcdef") != std::string::npos;
    }
    EXPECT_TRUE(sawALetter);
}

TEST(UcpFrame, TakesANumberOfAnyBytesAndLength) {
    const std::string number = "\xE9\xFF" + std::string(64 * 1024, '1');
    const std::string frame = FrameOf(number.c_str(), "x");
    EXPECT_EQ(number, Fields(frame)[4]);
    EXPECT_EQ(UcpSumOf(frame), Fields(frame).back());
}

}  // namespace
