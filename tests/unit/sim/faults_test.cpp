// Faults on the way to a centre, at the end of a whole call.
#include "sim/phone/faults.h"

#include <gmock/gmock.h>

#include "sim/centres/tap_centre.h"
#include "sim/phone/modem_call.h"
#include "sim/phone/trickle.h"
#include "tests/unit/sim/fakes.h"

namespace pagersim {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

const std::string kSession =
    "\r\x1bPG1\r\x02"
    "123\rABC\r\x03"
    "17;\r\x04\r";
const std::string kAllAnswers = "ID=\r\x06\r\x1b[p\r\r\x06\r\r\x1b\x04\r";

// A call to a TAP centre with faults; the test is the caller.
class FaultsTest : public ::testing::Test {
 protected:
    ModemCall& Answered() {
        if (call_ == nullptr) {
            subscriber_.name = "tap";
            subscriber_.response = response_;
            subscriber_.make_centre = [this] {
                return std::make_unique<FaultyCentre>(std::make_unique<TapCentre>(TapOptions{}),
                                                      faults_);
            };
            call_ = std::make_unique<ModemCall>(
                wire_, Exchange::Connection{&subscriber_, "5550101", ""}, "COM 1", recorder_,
                ModemCall::Caller{
                    [this](const std::string&, std::string_view bytes) { wire_.Send(bytes); },
                    [this] { dropped_ = true; }});
            call_->Answer();
        }
        return *call_;
    }

    std::string To(const std::string& bytes, Milliseconds wait = 0ms) {
        Answered().CallerSays(bytes);
        return wire_.Read(wait);
    }

    Faults faults_;
    Subscriber subscriber_;
    FakeRecorder recorder_;
    FakeWire wire_;
    std::unique_ptr<ModemCall> call_;
    bool dropped_ = false;
    Milliseconds response_{0};
};

TEST_F(FaultsTest, WithoutAnyTheCallGoesWell) {
    EXPECT_EQ(kAllAnswers, To(kSession, 0ms));
    EXPECT_THAT(recorder_.Texts(EventKind::kDelivers), ElementsAre("ABC"));
    EXPECT_FALSE(dropped_);
    wire_.Read(300ms);
    EXPECT_TRUE(dropped_) << "it hangs up by itself";
}

TEST_F(FaultsTest, AnswersTakeTheCentresTime) {
    response_ = 100ms;
    EXPECT_EQ("", To("\r", 99ms));
    EXPECT_EQ("ID=", wire_.Read(1ms));
    EXPECT_EQ("", To("\x1bPG1\r\x02"
                     "123\rABC\r\x03"
                     "17;\r\x04\r",
                     99ms));
    EXPECT_EQ(kAllAnswers.substr(3), wire_.Read(1ms));
    EXPECT_FALSE(dropped_) << "it hangs up behind its last word";
    wire_.Read(300ms);
    EXPECT_TRUE(dropped_);
}

TEST_F(FaultsTest, LateCentre) {
    faults_.late = 40'000ms;
    EXPECT_EQ("", To("\r", 39'999ms));
    EXPECT_EQ("ID=", wire_.Read(1ms));
}

TEST_F(FaultsTest, LateCentreHangsUpBehindItsLastWord) {
    faults_.late = 5000ms;
    EXPECT_EQ("", To(kSession, 4999ms));
    EXPECT_FALSE(dropped_);
    EXPECT_EQ(kAllAnswers, wire_.Read(1ms));
    EXPECT_TRUE(dropped_);
}

TEST_F(FaultsTest, CentreFallsSilentAtEveryPoint) {
    const std::vector<std::string> so_far = {
        "",         "ID=", "ID=\r\x06\r", "ID=\r\x06\r\x1b[p\r", "ID=\r\x06\r\x1b[p\r\r\x06\r",
        kAllAnswers};
    for (unsigned words = 0; words < so_far.size(); ++words) {
        faults_.silent_after = words;
        call_.reset();
        EXPECT_EQ(so_far[words], To(kSession, 60'000ms)) << words;
    }
    EXPECT_THAT(recorder_.Texts(EventKind::kNotes), Contains("silent"));
}

TEST_F(FaultsTest, CarrierIsLostAfterEveryNumberOfBytesHeard) {
    for (std::size_t bytes = 1; bytes <= kSession.size(); ++bytes) {
        faults_.drop_after_hearing = bytes;
        call_.reset();
        recorder_.events.clear();
        dropped_ = false;
        To(kSession, 0ms);
        EXPECT_TRUE(dropped_) << bytes;
        const bool had_the_block = bytes >= kSession.size() - 2;
        EXPECT_EQ(had_the_block ? 1U : 0U, recorder_.Texts(EventKind::kDelivers).size()) << bytes;
        EXPECT_THAT(
            recorder_.Texts(EventKind::kNotes),
            ElementsAre("the carrier is lost after hearing " + std::to_string(bytes) + " bytes"));
    }
}

TEST_F(FaultsTest, CarrierIsLostAfterBytesInSeveralWrites) {
    faults_.drop_after_hearing = 3;
    EXPECT_EQ("ID=", To("\r"));
    EXPECT_FALSE(dropped_);
    To("\x1bPG1\r");
    EXPECT_TRUE(dropped_);
}

TEST_F(FaultsTest, CarrierIsLostAfterEveryNumberOfBytesSaid) {
    for (std::size_t bytes = 1; bytes <= kAllAnswers.size(); ++bytes) {
        faults_.drop_after_saying = bytes;
        call_.reset();
        dropped_ = false;
        EXPECT_EQ(kAllAnswers.substr(0, bytes), To(kSession, 0ms));
        EXPECT_TRUE(dropped_) << bytes;
    }
}

TEST_F(FaultsTest, NoiseGarblesSomeBytesTheSameInEachRun) {
    faults_.noise = 4;
    const std::string first = To(std::string(30, '\r'));
    EXPECT_NE(90U, first.size()) << "some knocks were not heard as such";
    call_.reset();
    EXPECT_EQ(first, To(std::string(30, '\r')));
    call_.reset();
    faults_.noise = 0;
    EXPECT_EQ(90U, To(std::string(30, '\r')).size());
}

TEST_F(FaultsTest, NoiseChangesEveryByteItHits) {
    faults_.noise = 1;
    Answered();
    EXPECT_EQ("", To("\r")) << "none is right";
}

TEST_F(FaultsTest, SlowLineDelaysBothWays) {
    subscriber_.speed = 300;  // 33.3 ms a byte
    EXPECT_EQ("I", To("\r"));
    EXPECT_EQ("", wire_.Read(32ms));
    EXPECT_EQ("D", wire_.Read(1ms));
    EXPECT_EQ("=", wire_.Read(34ms));
    EXPECT_EQ("", To("\x1bPG1\r", 4 * 33ms)) << "the last byte is still on its way";
    EXPECT_EQ("\r", wire_.Read(34ms));
}

TEST_F(FaultsTest, SlowLineKeepsItsAverage) {
    subscriber_.speed = 300;
    To("\r" + std::string(300, '\r'), 10'000ms);
    EXPECT_EQ("", wire_.Read(0ms));
    std::string all = To("", 21'000ms);
    EXPECT_THAT(all, HasSubstr("ID="));
    EXPECT_FALSE(dropped_);
}

TEST(Pace, OfALine) {
    EXPECT_EQ(0U, PaceOfLine(0).chunk);
    EXPECT_EQ(33'333us, PaceOfLine(300).interval);
    EXPECT_EQ(4'166us, PaceOfLine(2400).interval);
}

TEST(Trickle, AverageIsExact) {
    FakeWire wire;
    std::size_t arrived = 0;
    Trickle trickle(wire, PaceOfLine(2400),
                    [&](std::string_view bytes) { arrived += bytes.size(); });
    trickle.Push(std::string(1000, 'x'));
    wire.Read(1000ms);
    EXPECT_EQ(241U, arrived) << "240 bytes a second, and the first at once";
}

TEST(Trickle, FastLineSendsSeveralBytesAMillisecond) {
    FakeWire wire;
    std::size_t arrived = 0;
    Trickle trickle(wire, PaceOfLine(115'200),
                    [&](std::string_view bytes) { arrived += bytes.size(); });
    trickle.Push(std::string(20'000, 'x'));
    wire.Read(1000ms);
    EXPECT_NEAR(11'520, static_cast<double>(arrived), 150);
}

TEST(Trickle, TheEndComesBehindTheLastByteAndMayDestroyIt) {
    FakeWire wire;
    std::string arrived;
    auto trickle = std::make_unique<Trickle>(wire, PaceOfLine(10'000),
                                             [&](std::string_view bytes) { arrived += bytes; });
    trickle->Push("abc");
    trickle->Finally([&] {
        arrived += "|";
        trickle.reset();
    });
    wire.Read(10ms);
    EXPECT_EQ("abc|", arrived);
}

TEST(Trickle, NothingComesOnceItIsGone) {
    FakeWire wire;
    std::string arrived;
    {
        Trickle trickle(wire, PaceOfLine(10'000),
                        [&](std::string_view bytes) { arrived += bytes; });
        trickle.Push("abc");
    }
    wire.Read(10ms);
    EXPECT_EQ("a", arrived);
}

}  // namespace
}  // namespace pagersim
