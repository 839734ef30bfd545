// Dial strings, command lines and the exchange's numbers.
#include "sim/phone/dial_string.h"

#include <gmock/gmock.h>

#include "sim/phone/at_line.h"
#include "sim/phone/command_buffer.h"
#include "sim/phone/exchange.h"

namespace pagersim {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace std::chrono_literals;

DialString Parsed(std::string_view text) {
    const auto dial = TakeDialString(text, {});
    EXPECT_TRUE(dial.has_value());
    EXPECT_EQ("", text);
    return dial.value_or(DialString{});
}

TEST(DialString, PausesCutItIntoSegments) {
    EXPECT_THAT(Parsed("T0,5550101").segments, ElementsAre("0", "5550101"));
    EXPECT_THAT(Parsed("P5550101").segments, ElementsAre("5550101"));
    EXPECT_THAT(Parsed("0W555@0101").segments, ElementsAre("0", "555", "0101"));
    EXPECT_THAT(Parsed("0,,,5550101,").segments, ElementsAre("0", "5550101"));
    EXPECT_THAT(Parsed(",5550101").segments, ElementsAre("5550101"));
    EXPECT_THAT(Parsed("T").segments, IsEmpty());
    EXPECT_THAT(Parsed("").segments, IsEmpty());
}

TEST(DialString, OrnamentsMeanNothing) {
    EXPECT_THAT(Parsed("T 0 (555) 01-01.!").segments, ElementsAre("05550101"));
}

TEST(DialString, AllKeysOfATelephone) {
    EXPECT_EQ("*2*216#ABCD", Parsed("T*2*216#ABCD").Digits());
}

TEST(DialString, SemicolonStaysInCommandState) {
    EXPECT_FALSE(Parsed("T0,5550101").stays_in_command);
    EXPECT_TRUE(Parsed("T0,5550101;").stays_in_command);
    std::string_view text = "T1;H0";
    EXPECT_TRUE(TakeDialString(text, {})->stays_in_command);
    EXPECT_EQ("H0", text) << "what stands behind it is another command";
}

TEST(DialString, OtherCharactersAreAnError) {
    for (std::string_view text : {"T555X", "L", "S=1", "T5+5"}) {
        EXPECT_EQ(std::nullopt, TakeDialString(text, {}));
    }
}

TEST(DialString, TakesItsTime) {
    EXPECT_EQ(2800ms, Parsed("T0,5550101").duration) << "eight digits and a comma";
    std::string_view text = "12,,";
    EXPECT_EQ(2 * 50ms + 2 * 3000ms, TakeDialString(text, {50ms, 3000ms})->duration);
    EXPECT_EQ(1000ms, Parsed("W").duration);
    EXPECT_EQ(5000ms, Parsed("@").duration);
}

std::vector<std::string> Names(const AtLine& line) {
    std::vector<std::string> names;
    for (const AtCommand& command : line.commands) {
        names.push_back(command.name + "=" + std::to_string(command.value));
    }
    return names;
}

TEST(AtLine, CombinedCommands) {
    EXPECT_THAT(Names(ParseAtLine("&FV1", {})), ElementsAre("&F=0", "V=1"));
    EXPECT_THAT(Names(ParseAtLine("HV1", {})), ElementsAre("H=0", "V=1"));
    EXPECT_THAT(Names(ParseAtLine("e0 q0 &c1\\n3%c2 s8=4 s12?", {})),
                ElementsAre("E=0", "Q=0", "&C=1", "\\N=3", "%C=2", "S8=4", "S12?=0"));
    EXPECT_THAT(Names(ParseAtLine("", {})), IsEmpty());
}

TEST(AtLine, DialTakesTheRest) {
    const AtLine line = ParseAtLine("V1DT0,5550101", {});
    EXPECT_THAT(Names(line), ElementsAre("V=1", "D=0"));
    EXPECT_EQ("05550101", line.commands[1].dial.Digits());
}

TEST(AtLine, BehindASemicolonCommandsGoOn) {
    EXPECT_THAT(Names(ParseAtLine("DT1;H", {})), ElementsAre("D=0", "H=0"));
}

TEST(AtLine, WhatIsNoCommandEndsIt) {
    const AtLine line = ParseAtLine("V1=3E0", {});
    EXPECT_THAT(Names(line), ElementsAre("V=1"));
    EXPECT_FALSE(line.well_formed);
    for (const char* bad : {"1", "&", "&1", "S8", "S8+", "DTX", "+FCLASS=0"}) {
        EXPECT_FALSE(ParseAtLine(bad, {}).well_formed) << bad;
    }
}

TEST(AtLine, HugeNumbersDoNoHarm) {
    EXPECT_THAT(Names(ParseAtLine("E99999999999999999999", {})), ElementsAre("E=99999"));
}

std::vector<std::string> LinesOf(std::string_view typed) {
    CommandBuffer buffer;
    std::vector<std::string> lines;
    for (const char c : typed) {
        if (const auto line = buffer.Heard(c)) {
            lines.push_back(*line);
        }
    }
    return lines;
}

TEST(CommandBuffer, ALineIsWhatStandsBetweenAtAndCarriageReturn) {
    EXPECT_THAT(LinesOf("ATZ\r"), ElementsAre("Z"));
    EXPECT_THAT(LinesOf("at&fV1\rATZ\r"), ElementsAre("&fV1", "Z"));
    EXPECT_THAT(LinesOf("AT\r"), ElementsAre(""));
    EXPECT_THAT(LinesOf("ATZ"), IsEmpty());
}

TEST(CommandBuffer, WhatStandsBeforeAtMeansNothing) {
    EXPECT_THAT(LinesOf("+++ATHV1\r\nATZ\r"), ElementsAre("HV1", "Z"));
    EXPECT_THAT(LinesOf("\rA\rAATZ\r"), ElementsAre("Z"));
}

TEST(CommandBuffer, BackspaceAndControls) {
    EXPECT_THAT(LinesOf(std::string("ATX\bZ\0\n\r", 8)), ElementsAre("Z"));
    EXPECT_THAT(LinesOf("AT\b\bZ\r"), ElementsAre("Z"));
}

TEST(CommandBuffer, SlashRepeatsTheLine) {
    EXPECT_THAT(LinesOf("ATZ\rA/"), ElementsAre("Z", "Z"));
    EXPECT_THAT(LinesOf("A/"), ElementsAre(""));
}

class ExchangeTest : public ::testing::Test {
 protected:
    ExchangeTest() {
        Subscriber sms;
        sms.name = "sms";
        sms.numbers = {"5550101", "5550111"};
        exchange_.Add(sms);
        Subscriber access;
        access.name = "access";
        access.numbers = {"05"};
        exchange_.Add(access);
    }

    // "sms 5550101 123": who answers, at which number, and the tones left over.
    std::string Reached(std::string_view text) {
        const auto connection = exchange_.Find(Parsed(text));
        if (!connection) {
            return "nobody";
        }
        return connection->subscriber->name + " " + connection->number + " " + connection->tones;
    }

    Exchange exchange_;
};

TEST_F(ExchangeTest, NumberWithAndWithoutTheOutsideLine) {
    EXPECT_EQ("sms 5550101 ", Reached("T5550101"));
    EXPECT_EQ("sms 5550101 ", Reached("T0,5550101"));
    EXPECT_EQ("sms 5550111 ", Reached("P0W5550111"));
}

TEST_F(ExchangeTest, PausesInsideANumberDoNoHarm) {
    EXPECT_EQ("sms 5550101 ", Reached("T0,555,0101"));
    EXPECT_EQ("sms 5550101 ", Reached("T555,0101"));
}

TEST_F(ExchangeTest, DigitsBehindTheNumberAreTones) {
    EXPECT_EQ("sms 5550101 4711#", Reached("T0,5550101,,4711#"));
    EXPECT_EQ("sms 5550101 4711", Reached("T5550101,47,11"));
}

TEST_F(ExchangeTest, NobodyElseIsReached) {
    EXPECT_EQ("nobody", Reached("T0,5550102"));
    EXPECT_EQ("nobody", Reached("T05550101")) << "no pause behind the outside line's code";
    EXPECT_EQ("nobody", Reached("T0,0,5550101")) << "one code, not two";
    EXPECT_EQ("nobody", Reached("T555010"));
    EXPECT_EQ("nobody", Reached("T"));
}

TEST_F(ExchangeTest, TheWholeStringComesFirst) {
    EXPECT_EQ("access 05 ", Reached("T0,5"));
}

TEST(Exchange, FirstCallsFindItBusy) {
    Subscriber subscriber;
    subscriber.busy_calls = 2;
    EXPECT_EQ(Fate::kBusy, Exchange::PlaceCall(subscriber));
    EXPECT_EQ(Fate::kBusy, Exchange::PlaceCall(subscriber));
    EXPECT_EQ(Fate::kAnswered, Exchange::PlaceCall(subscriber));
    subscriber.fate = Fate::kNoAnswer;
    EXPECT_EQ(Fate::kNoAnswer, Exchange::PlaceCall(subscriber));
}

TEST(Exchange, EachCallCanHaveAFateOfItsOwn) {
    Subscriber subscriber;
    subscriber.busy_calls = 1;
    int calls = 0;
    subscriber.fates = [&calls] { return ++calls == 1 ? Fate::kNoCarrier : Fate::kAnswered; };
    EXPECT_EQ(Fate::kBusy, Exchange::PlaceCall(subscriber));
    EXPECT_EQ(Fate::kNoCarrier, Exchange::PlaceCall(subscriber));
    EXPECT_EQ(Fate::kAnswered, Exchange::PlaceCall(subscriber));
}

}  // namespace
}  // namespace pagersim
