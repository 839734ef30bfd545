// Reads and writes of the line that answer EIO though the device is there, at every call of every
// dialogue; what has to hold then, tests/proof/line_site.h tells.
#include <set>
#include <string>

#include "tests/proof/line_calls.h"
#include "tests/proof/line_site.h"

namespace proof {
namespace {

// The device is there all the time, but reads or writes answer EIO.
class InputOutputFaults : public LineSite {
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

INSTANTIATE_TEST_SUITE_P(EveryDialogue, InputOutputFaults, ::testing::ValuesIn(kPagerKinds),
                         NameOf);

}  // namespace
}  // namespace proof
