// Faults on the line at every byte of every dialogue. Each test counts the bytes of a page that
// goes well, then lets a fault meet each of them, and asks after each page:
//   - it ends in time, with a code that a page can end with; with 0 only as told below;
//   - the port is free again;
//   - the next page goes through.
// A centre that speaks a protocol with a checksum and has confirmed a page has it word for word.
#include <gtest/gtest.h>
#include <pagerfwd/pagerfwd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "engine/longest_page.h"
#include "modem/COMHdl.h"
#include "sim/centres/ntt_exchange.h"
#include "sim/centres/plain_service.h"
#include "sim/centres/signal_service.h"
#include "sim/centres/tap_centre.h"
#include "sim/centres/ucp_centre.h"
#include "sim/phone/faults.h"
#include "sim/phone/modem.h"
#include "sim/testing.h"
#include "tests/proof/faulty_line.h"
#include "tests/support/memory_store.h"
#include "tests/support/temp_dir.h"

namespace {

// What becomes of the program's writes to the line: the first so many are as ever; then the device
// takes nothing for so many tries, and after that three bytes at a time. Negative: as ever.
int writes_until_blocked = -1;
int blocked_tries = 0;
int writes = 0;  // to the line, that took something

// Calls on the line that answer EIO, of one kind, though the device is there.
struct InputOutputErrors {
    int first = -1;  // from the so manyth call on, counted from 0; negative: none
    int count = 0;
    int calls = 0;

    bool MeetsOne() {
        const int nth = calls++;
        return first >= 0 && nth >= first && nth - first < count;
    }
};
InputOutputErrors read_errors;
InputOutputErrors write_errors;

// What was written to the line, and how many reads there had been before.
struct LineWrite {
    std::string bytes;
    int reads_before;
};
std::vector<LineWrite> line_writes;

}  // namespace

extern "C" {
ssize_t __real_write(int fd, const void* bytes, size_t count);
ssize_t __wrap_write(int fd, const void* bytes, size_t count) {
    if (isatty(fd) == 0) {
        return __real_write(fd, bytes, count);
    }
    line_writes.push_back({std::string(static_cast<const char*>(bytes), count), read_errors.calls});
    if (write_errors.MeetsOne()) {
        errno = EIO;
        return -1;
    }
    const bool is_slow = writes_until_blocked >= 0 && writes >= writes_until_blocked;
    if (is_slow && blocked_tries > 0) {
        --blocked_tries;
        errno = EAGAIN;
        return -1;
    }
    ++writes;
    return __real_write(fd, bytes, is_slow ? std::min<size_t>(count, 3) : count);
}

ssize_t __real_read(int fd, void* bytes, size_t count);
ssize_t __wrap_read(int fd, void* bytes, size_t count) {
    if (isatty(fd) == 0) {
        return __real_read(fd, bytes, count);
    }
    if (!read_errors.MeetsOne()) {
        return __real_read(fd, bytes, count);
    }
    __real_read(fd, bytes, 0);  // takes nothing, but tells the clock that there was nothing
    errno = EIO;
    return -1;
}
}

namespace proof {
namespace {

using namespace std::chrono_literals;

constexpr const char* kText = "TEST/Informational/TESTSERVER/test";

struct PagerKind {
    const char* name;
    const char* type;
    const char* number;
    const char* recipient;     // as the centre sees it
    const char* text;          // ... and this, where the protocol has a checksum; else null
    const char* last_awaited;  // of what the centre says; null: nothing is awaited from it
};

constexpr PagerKind kKinds[] = {
    {"Tap", "4", "5550111", "5550111", kText, "\x1b\x04"},
    {"Ucp", "5", "5550112", "5550112", kText, "/A/"},
    {"Alphanumeric", "2", "5550100@3003", "3003", nullptr, ">"},
    {"Numeric", "1", "5550100@2002", "2002", nullptr, ">"},
    {"Signal", "0", "5550104@", "5550104", nullptr, nullptr},
    {"Ntt", "3", "5550103", "5550103", nullptr, nullptr},
};

std::ostream& operator<<(std::ostream& out, const PagerKind& kind) {
    return out << kind.name;
}

// What reached the centres.
class Received : public pagersim::Recorder {
 public:
    void Record(const pagersim::Event& event) override {
        if (event.kind == pagersim::EventKind::kDelivers) {
            pages.push_back({event.recipient, event.text});
        } else if (event.kind == pagersim::EventKind::kSends && event.who != pagersim::kProgram &&
                   event.who != pagersim::kModem) {
            said += event.text;
        }
    }
    std::vector<pagersim::ReceivedPage> pages;
    std::string said;  // by the centre
};

class LineFaults : public ::testing::TestWithParam<PagerKind> {
 protected:
    LineFaults() {
        pagersim::VirtualClock::SetStep(50ms);
        FillTables();
        AddCentres();
        auto front = std::make_unique<FaultyLine>(std::make_unique<pagersim::Modem>(
            "COM 1", pagersim::ModemOptions{}, exchange, received));
        faulty = front.get();
        line = std::make_unique<pagersim::AttachedLine>(1, std::move(front));
        faulty->plug_out = [this] { line->PlugOut(); };
        faulty->plug_in = [this] { line->PlugIn(); };
        StartAlarmFwdPager(&info);
    }
    ~LineFaults() override {
        StopAlarmFwdPager();
        EXPECT_EQ("", store.Verdict());
    }

    // A page; its code.
    int Page() {
        received.pages.clear();
        received.said.clear();
        const auto begun = pagersim::VirtualClock::Now();
        std::string number = GetParam().number;
        std::string type = GetParam().type;
        const int code = TestPager(&info, name, number.data(), port, type.data(), hours);
        EXPECT_LE(pagersim::VirtualClock::Now() - begun,
                  std::chrono::milliseconds(LongestPageMs()));
        return code;
    }

    bool WasDelivered() const {
        const PagerKind& kind = GetParam();
        return received.pages.size() == 1 && received.pages[0].recipient == kind.recipient &&
               (kind.text == nullptr || received.pages[0].text == kind.text);
    }

    void ExpectThatAllIsWell(size_t nth) {
        EXPECT_FALSE(CCOMHdl::COMPortTable[0]->inUse) << "at byte " << nth;
        EXPECT_EQ(line->Opens(), line->Closes()) << "at byte " << nth;
        faulty->Plan(LineFault::kNone, 0);
        centre_faults = {};
        EXPECT_EQ(0, Page()) << "after byte " << nth;
        EXPECT_TRUE(WasDelivered()) << "after byte " << nth;
    }

    // The page with the fault; its code, which is one of these.
    int PageWith(LineFault fault, size_t nth, const std::set<int>& codes) {
        faulty->Plan(fault, nth);
        const int code = Page();
        EXPECT_TRUE(faulty->HasHappened()) << "at byte " << nth;
        EXPECT_EQ(1U, codes.count(code)) << "code " << code << " at byte " << nth;
        if (GetParam().text != nullptr && code == 0) {
            EXPECT_TRUE(WasDelivered()) << "at byte " << nth;
        }
        return code;
    }

    struct Counts {
        size_t sent, heard;
    };
    // Of a page that goes well.
    Counts CountBytes() {
        faulty->Plan(LineFault::kNone, 0);
        EXPECT_EQ(0, Page());
        EXPECT_TRUE(WasDelivered());
        return {faulty->Sent().size(), faulty->Heard().size()};
    }

    pagersim::VirtualClock clock;
    const test_support::TempDir folder;
    test_support::MemoryStore store;
    pagersim::Exchange exchange;
    pagersim::Faults centre_faults;
    Received received;
    FaultyLine* faulty = nullptr;  // the line's
    std::unique_ptr<pagersim::AttachedLine> line;
    char database[7] = "alarms";
    char name[5] = "test";
    char port[6] = "COM 1";
    char hours[7] = "always";
    int32_t no_alarm = 0;
    FwdSpecialInfoStr info{database, &no_alarm, nullptr, nullptr};

 private:
    void FillTables() {
        store.AddAllTables();
        store.InsertTimeModel("always", std::string(168, '1'));
        store.Insert("AlarmFwd_COMProperties", {{"Description", "COM 1"},
                                                {"Baud", "9600"},
                                                {"PagerData", "8"},
                                                {"PagerParity", "None"},
                                                {"PagerStop", "1"},
                                                {"Flow", "None"},
                                                {"Select", "1"},
                                                {"Init", "AT&F"},
                                                {"Reset", "ATZ"},
                                                {"PagerDial", "ATDT"},
                                                {"PagerActivity", ">"},
                                                {"SMS1Dial", "ATDT5550101"},
                                                {"SMS1Protocol", "TAP"},
                                                {"SMS1Data", "7"},
                                                {"SMS1Parity", "Even"},
                                                {"SMS1Stop", "1"},
                                                {"SMS2Dial", "ATDT5550102"},
                                                {"SMS2Protocol", "UCP"},
                                                {"SMS2Data", "8"},
                                                {"SMS2Parity", "None"},
                                                {"SMS2Stop", "1"}});
    }

    void AddCentres() {
        const auto add = [&](const char* number, bool has_modem, auto make) {
            pagersim::Subscriber subscriber;
            subscriber.name = "centre";
            subscriber.numbers = {number};
            subscriber.has_modem = has_modem;
            subscriber.make_centre = [this, make] {
                return std::make_unique<pagersim::FaultyCentre>(make(), centre_faults);
            };
            exchange.Add(std::move(subscriber));
        };
        add("5550100", true,
            [] { return std::make_unique<pagersim::PlainService>(pagersim::PlainOptions{}); });
        add("5550101", true,
            [] { return std::make_unique<pagersim::TapCentre>(pagersim::TapOptions{}); });
        add("5550102", true,
            [] { return std::make_unique<pagersim::UcpCentre>(pagersim::UcpOptions{}); });
        add("5550103", false, [] { return std::make_unique<pagersim::NttExchange>(); });
        add("5550104", false, [] { return std::make_unique<pagersim::SignalService>(); });
    }
};

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
    writes = 0;
    CountBytes();
    const int all = writes;
    for (int nth = 0; nth < all; ++nth) {
        writes = 0;
        writes_until_blocked = nth;
        blocked_tries = kTries;
        const auto begun = pagersim::VirtualClock::Now();
        const int code = Page();
        writes_until_blocked = -1;
        EXPECT_EQ(0, code) << "blocked at write " << nth;
        EXPECT_TRUE(WasDelivered()) << "blocked at write " << nth;
        EXPECT_EQ(0, blocked_tries) << "blocked at write " << nth;
        EXPECT_GT(pagersim::VirtualClock::Now() - begun, 5s) << "blocked at write " << nth;
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

// The device is there all the time, but reads or writes answer EIO.
class InputOutputFaults : public LineFaults {
 protected:
    // In the order of a page.
    enum class Step { kInit, kDial, kTransfer, kReset };

    // The first calls of a page that belong to each step but the first.
    struct Marks {
        int dial, transfer, reset, end;

        Step StepOf(int nth) const {
            return nth < dial       ? Step::kInit
                   : nth < transfer ? Step::kDial
                   : nth < reset    ? Step::kTransfer
                                    : Step::kReset;
        }
    };

    // Of a page that goes well.
    void Measure() {
        Forget();
        EXPECT_EQ(0, Page());
        const auto place = [](size_t from, const char* begin) {
            while (from < line_writes.size() && line_writes[from].bytes.rfind(begin, 0) != 0) {
                ++from;
            }
            return from;
        };
        const size_t dial = place(0, "ATD");
        const size_t reset = place(dial, "+++");
        const size_t transfer = dial + 1;
        ASSERT_LT(reset, line_writes.size());
        const auto reads_before = [](size_t nth) { return line_writes[nth].reads_before; };
        written = {static_cast<int>(dial), static_cast<int>(transfer), static_cast<int>(reset),
                   static_cast<int>(line_writes.size())};
        read = {reads_before(dial), reads_before(transfer), reads_before(reset), read_errors.calls};
        EXPECT_GE(read.dial, 1);
        EXPECT_GE(read.end, 5) << "three answers before and after the call, at the least";
    }

    static void Forget() {
        read_errors = write_errors = {};
        line_writes.clear();
    }

    // A page with errors from the nth call on; it ends with one of these codes.
    void PageWith(InputOutputErrors& errors, int nth, int count, const std::set<int>& codes) {
        Forget();
        errors.first = nth;
        errors.count = count;
        const int code = Page();
        EXPECT_GT(errors.calls, nth) << "not reached";
        EXPECT_EQ(1U, codes.count(code)) << "code " << code << " at call " << nth;
        if (GetParam().text != nullptr && code == 0) {
            EXPECT_TRUE(WasDelivered()) << "at call " << nth;
        }
        Forget();
        ExpectThatAllIsWell(static_cast<size_t>(nth));
    }

    // What a page ends with whose line is lost for good in this step. A centre without a checksum
    // takes a page on trust, and the call of a signal pager is the page, answered or not.
    static std::set<int> CodesOfALossIn(Step step) {
        const PagerKind& kind = GetParam();
        switch (step) {
            case Step::kInit:
                return {8};
            case Step::kDial:
                return {std::string(kind.name) == "Signal" ? 0 : 6};
            case Step::kTransfer:
                return kind.text != nullptr ? std::set<int>{7} : std::set<int>{0, 7};
            case Step::kReset:
                return {0};
        }
        return {};
    }

    ~InputOutputFaults() override { Forget(); }

    Marks written{};
    Marks read{};
};

constexpr int kOnce = 1;
constexpr int kForAWhile = 8;  // fewer than the times that a device is opened again in a row
constexpr int kForEver = 1000000;

// The device is opened again and the write repeated; only a call that stands may be lost by it.
TEST_P(InputOutputFaults, WritesOnceAndForAWhile) {
    Measure();
    for (const int count : {kOnce, kForAWhile}) {
        for (int nth = 0; nth < written.end; ++nth) {
            const bool loses_call = written.StepOf(nth) == Step::kTransfer;
            PageWith(write_errors, nth, count, loses_call ? std::set<int>{0, 7} : std::set<int>{0});
        }
    }
}

TEST_P(InputOutputFaults, WritesForEver) {
    Measure();
    for (int nth = 0; nth < written.end; ++nth) {
        PageWith(write_errors, nth, kForEver, CodesOfALossIn(written.StepOf(nth)));
    }
}

// What could not be read is read at the next look.
TEST_P(InputOutputFaults, ReadsOnceAndForAWhile) {
    Measure();
    for (const int count : {kOnce, kForAWhile}) {
        for (int nth = 0; nth < read.end; ++nth) {
            PageWith(read_errors, nth, count, {0});
        }
    }
}

TEST_P(InputOutputFaults, ReadsForEver) {
    Measure();
    for (int nth = 0; nth < read.end; ++nth) {
        PageWith(read_errors, nth, kForEver, CodesOfALossIn(read.StepOf(nth)));
    }
}

INSTANTIATE_TEST_SUITE_P(EveryDialogue, InputOutputFaults, ::testing::ValuesIn(kKinds),
                         [](const auto& kind) { return kind.param.name; });
INSTANTIATE_TEST_SUITE_P(EveryDialogue, CarrierFaults,
                         ::testing::Values(kKinds[0], kKinds[1], kKinds[2], kKinds[3]),
                         [](const auto& kind) { return kind.param.name; });
INSTANTIATE_TEST_SUITE_P(EveryDialogue, LineFaults, ::testing::ValuesIn(kKinds),
                         [](const auto& kind) { return kind.param.name; });

}  // namespace
}  // namespace proof
