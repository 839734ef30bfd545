// Faults on the line at every byte of every dialogue. Each test counts the bytes of a page that
// goes well, then lets a fault meet each of them; what has to hold then, tests/proof/line_site.h
// tells.
#include <chrono>
#include <set>
#include <string>

#include "modem/COMHdl.h"
#include "tests/proof/line_calls.h"
#include "tests/proof/line_site.h"

namespace proof {
namespace {

using namespace std::chrono_literals;

class LineFaults : public LineSite {};

const std::set<int> kModemCodes = {0, 6, 7, 8};

TEST_P(LineFaults, LostByteFromTheProgram) {
    const size_t count = CountBytes().sent;
    for (size_t nth = 1; nth <= count; ++nth) {
        PageWith(LineFault::kDropsSent, nth, kModemCodes);
        ExpectThatAllIsWell(nth);
    }
}

TEST_P(LineFaults, GarbledByteFromTheProgram) {
    const size_t count = CountBytes().sent;
    for (size_t nth = 1; nth <= count; ++nth) {
        PageWith(LineFault::kGarblesSent, nth, kModemCodes);
        ExpectThatAllIsWell(nth);
    }
}

TEST_P(LineFaults, LostByteToTheProgram) {
    const size_t count = CountBytes().heard;
    for (size_t nth = 1; nth <= count; ++nth) {
        PageWith(LineFault::kDropsHeard, nth, kModemCodes);
        ExpectThatAllIsWell(nth);
    }
}

TEST_P(LineFaults, GarbledByteToTheProgram) {
    const size_t count = CountBytes().heard;
    for (size_t nth = 1; nth <= count; ++nth) {
        PageWith(LineFault::kGarblesHeard, nth, kModemCodes);
        ExpectThatAllIsWell(nth);
    }
}

TEST_P(LineFaults, AnswersSplitAtEveryByteChangeNothing) {
    const size_t count = CountBytes().heard;
    for (size_t nth = 1; nth < count; ++nth) {
        PageWith(LineFault::kSplits, nth, {0});
        EXPECT_TRUE(WasDelivered()) << "split at byte " << nth;
    }
    ExpectThatAllIsWell(count);
}

// The bytes wait, and then go through in pieces.
TEST_P(LineFaults, LineThatBlocksForAWhile) {
    constexpr int kTries = 25;  // five seconds
    blocking = {};
    CountBytes();
    const int all = blocking.writes;
    for (int nth = 0; nth < all; ++nth) {
        blocking = {nth, kTries, 0};
        const auto begun = pagersim::VirtualClock::Now();
        const int code = Page();
        EXPECT_EQ(0, code) << "blocked at write " << nth;
        EXPECT_TRUE(WasDelivered()) << "blocked at write " << nth;
        EXPECT_EQ(0, blocking.tries) << "blocked at write " << nth;
        EXPECT_GT(pagersim::VirtualClock::Now() - begun, 5s) << "blocked at write " << nth;
        blocking = {};
    }
    ExpectThatAllIsWell(0);
}

// Pagers with a carrier to lose.
class CarrierFaults : public LineFaults {};

// Code 0 if, and only if, the last text that is waited for had been said.
TEST_P(CarrierFaults, LostAfterEachByteOfTheCentre) {
    CountBytes();
    const std::string said = received.said;
    const std::string last = GetParam().last_awaited;
    const size_t enough = said.rfind(last) + last.size();
    for (size_t nth = 1; nth <= said.size(); ++nth) {
        centre_faults.drop_after_saying = nth;
        EXPECT_EQ(nth >= enough ? 0 : 7, Page()) << "after byte " << nth;
        ExpectThatAllIsWell(nth);
    }
}

// Each code but 0 is 7: the call stood. A centre that has heard all has answered all.
TEST_P(CarrierFaults, LostAfterEachByteToTheCentre) {
    CountBytes();
    const std::string sent = faulty->Sent();
    const size_t connected = sent.find('\r', sent.find("ATD")) + 1;
    const size_t over = sent.find("+++", connected);
    bool done = false;
    for (size_t nth = 1; nth <= over - connected; ++nth) {
        centre_faults.drop_after_hearing = nth;
        const int code = Page();
        EXPECT_TRUE(code == 0 || code == 7) << "code " << code << " after byte " << nth;
        EXPECT_FALSE(done && code != 0) << "after byte " << nth << ", though less was enough";
        done = done || code == 0;
        if (GetParam().text != nullptr && code == 0) {
            EXPECT_TRUE(WasDelivered()) << "after byte " << nth;
        }
        ExpectThatAllIsWell(nth);
    }
    EXPECT_TRUE(done);
}

// The code tells which step the device was lost in; the next write opens it again.
TEST_P(LineFaults, DeviceThatVanishesAndComesBack) {
    CountBytes();
    const std::string sent = faulty->Sent();
    const size_t init = sent.find("AT&F");
    const size_t dial = sent.find("ATD");
    const size_t transfer = sent.find('\r', dial) + 1;
    const size_t over = sent.find("+++", transfer);
    for (size_t nth = 1; nth <= sent.size(); ++nth) {
        const std::set<int> codes = nth <= init       ? std::set<int>{0}
                                    : nth <= dial     ? std::set<int>{8}
                                    : nth <= transfer ? std::set<int>{0, 6}
                                    : nth <= over     ? std::set<int>{0, 7}
                                                      : std::set<int>{0};
        PageWith(LineFault::kVanishes, nth, codes);
        ExpectThatAllIsWell(nth);
    }
}

// Once it can't be opened, the port stays taken for this engine; the next one finds it.
TEST_P(LineFaults, DeviceThatIsAwayForHours) {
    CountBytes();
    const std::string sent = faulty->Sent();
    constexpr size_t kEach = 9;  // bytes: every step is met, without a restart for every byte
    for (size_t nth = 1; nth <= sent.size(); nth += kEach) {
        PageWith(LineFault::kGoesFor3Hours, nth, {0, 6, 7, 8});
        faulty->Plan(LineFault::kNone, 0);
        EXPECT_EQ(5, Page()) << "away since byte " << nth;
        EXPECT_TRUE(CCOMHdl::COMPortTable[0]->inUse) << "away since byte " << nth;
        EXPECT_EQ(5, Page()) << "away since byte " << nth;
        line->PlugIn();
        EXPECT_EQ(5, Page()) << "taken since byte " << nth;
        StopAlarmFwdPager();
        StartAlarmFwdPager(&info);
        ExpectThatAllIsWell(nth);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryDialogue, LineFaults, ::testing::ValuesIn(kPagerKinds), NameOf);
INSTANTIATE_TEST_SUITE_P(EveryDialogue, CarrierFaults,
                         ::testing::ValuesIn(kPagerKinds.begin(),
                                             kPagerKinds.begin() + kKindsWithCarrier),
                         NameOf);

}  // namespace
}  // namespace proof
