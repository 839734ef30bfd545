// Reading traces: entries, times, control characters.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "host/trace/calendar.h"
#include "host/trace/trace_clock.h"
#include "tests/unit/host/recorded_trace.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// --- Entries.

struct Entries {
    EntrySplitter splitter{[this](const TraceEntry& entry) {
        all.push_back(std::to_string(entry.line) + "|" + std::to_string(entry.second) + "|" +
                      std::string(entry.text));
        left_out += entry.left_out;
    }};
    std::vector<std::string> all;
    size_t left_out = 0;
};

std::vector<std::string> EntriesOf(const std::string& text, size_t piece) {
    Entries entries;
    for (size_t at = 0; at < text.size(); at += piece) {
        entries.splitter.Feed(std::string_view(text).substr(at, piece));
    }
    entries.splitter.Finish();
    return entries.all;
}

const std::string kRagged =
    "no stamp\n 0: 0: 1\tone\n 0: 0: 2\ttwo\nlines\n\n23:59:59\t\n"
    " 0: 0: 3\t\n:a\n99: 0: 0\tno time\n 1: 2\n 1: 2: 3\tlast";

TEST(TraceEntries, BeginWithATimeAndLastUntilTheNext) {
    EXPECT_THAT(EntriesOf(kRagged, kRagged.size()),
                ElementsAre("1|-1|no stamp", "2|1|one", "3|2|two\nlines\n", "6|86399|",
                            "7|3|\n:a\n99: 0: 0\tno time\n 1: 2", "11|3723|last"));
}

TEST(TraceEntries, AreTheSameInPiecesOfAnySize) {
    const std::vector<std::string> whole = EntriesOf(kRagged, kRagged.size());
    for (size_t piece = 1; piece < kRagged.size(); ++piece) {
        EXPECT_EQ(whole, EntriesOf(kRagged, piece)) << piece;
    }
}

TEST(TraceEntries, AreTheSameInPiecesWhateverTheBytes) {
    std::mt19937 random(1);
    const std::string letters = " 0123:\t\n\r\x01\xFF*";
    for (int round = 0; round < 300; ++round) {
        std::string text;
        for (size_t i = random() % 200; i > 0; --i) {
            text += random() % 8 == 0 ? Stamp(static_cast<int>(random() % 86400))
                                      : std::string(1, letters[random() % letters.size()]);
        }
        const std::vector<std::string> whole = EntriesOf(text, text.size() + 1);
        EXPECT_EQ(whole, EntriesOf(text, 1 + random() % 7)) << text;
    }
}

TEST(TraceEntries, OfNothingAreNone) {
    EXPECT_THAT(EntriesOf("", 1), IsEmpty());
}

TEST(TraceEntries, AreGivenOnceAtAPause) {
    Entries entries;
    entries.splitter.Feed(" 0: 0: 1\tone\n 0: 0: 2\tt");
    entries.splitter.Pause();
    EXPECT_THAT(entries.all, ElementsAre("1|1|one"));
    entries.splitter.Feed("wo\n");
    entries.splitter.Pause();
    EXPECT_THAT(entries.all, ElementsAre("1|1|one", "2|2|two"));
    entries.splitter.Pause();
    entries.splitter.Feed("rest\n");
    entries.splitter.Finish();
    EXPECT_THAT(entries.all, ElementsAre("1|1|one", "2|2|two", "3|-1|rest"));
}

TEST(TraceEntries, KeepABoundedPartOfALongText) {
    Entries entries;
    entries.splitter.Feed(" 0: 0: 1\t");
    for (int i = 0; i < 1000; ++i) {
        entries.splitter.Feed(std::string(1000, 'x'));
    }
    entries.splitter.Finish();
    ASSERT_THAT(entries.all, SizeIs(1));
    EXPECT_EQ(EntrySplitter::kKept + 4, entries.all[0].size());
    EXPECT_EQ(1000 * 1000 - EntrySplitter::kKept, entries.left_out);
}

TEST(TraceEntries, KeepTheEndOfALongTextInPiecesOfAnySize) {
    const std::string begin(EntrySplitter::kKept - EntrySplitter::kEndKept, 'a');
    const std::string end(EntrySplitter::kEndKept - 1, 'z');
    for (const size_t more : {0U, 1U, 2U, 1500U, 70000U}) {
        const std::string text = " 0: 0: 1\t" + begin + std::string(more, 'b') + end + "\n";
        for (const size_t piece : {size_t{999}, size_t{65000}, text.size()}) {
            Entries entries;
            for (size_t at = 0; at < text.size(); at += piece) {
                entries.splitter.Feed(std::string_view(text).substr(at, piece));
            }
            entries.splitter.Finish();
            ASSERT_THAT(entries.all, SizeIs(1));
            EXPECT_TRUE(entries.all[0] == "1|1|" + begin + end) << more << " by " << piece;
            EXPECT_EQ(more, entries.left_out);
        }
    }
}

// --- Times.

TEST(TraceCalendar, CountsDays) {
    EXPECT_EQ(0, DayOf(1970, 1, 1));
    EXPECT_EQ(-719162, DayOf(1, 1, 1));
    EXPECT_EQ(11330, ParseTraceDate("01/08/01"));
    EXPECT_EQ(11330, ParseIsoDate("2001-01-08"));
    EXPECT_EQ(ParseIsoDate("1999-12-31"), ParseTraceDate("12/31/99"));
    EXPECT_EQ(*ParseIsoDate("2000-02-29") + 1, ParseIsoDate("2000-03-01"));
    for (const char* none : {"", "2001-02-29", "2001-13-01", "2001-1-08", "-001-01-08",
                             "1900-02-29", "2001/01/08", "0000-01-01"}) {
        EXPECT_EQ(std::nullopt, ParseIsoDate(none)) << none;
    }
    for (const char* none : {"1/8/2001", "01/08/xx", "xx/08/01", "01/xx/01", "01-08/01"}) {
        EXPECT_EQ(std::nullopt, ParseTraceDate(none)) << none;
    }
}

TEST(TraceCalendar, HasYearsOfTwoDigitsFrom1969To2068) {
    EXPECT_EQ(-1, ParseTraceDate("12/31/69"));
    EXPECT_EQ(ParseIsoDate("2068-01-01"), ParseTraceDate("01/01/68"));
}

TEST(TraceCalendar, WritesEveryDayAsItReadsIt) {
    for (int64_t day = -800; day < 40000; ++day) {
        ASSERT_EQ(day, ParseIsoDate(IsoDate(day))) << IsoDate(day);
    }
}

TEST(TraceClock, GoesOnOverMidnightAndStandsStillWhenItIsSetBack) {
    TraceClock clock;
    clock.Advance(86390);
    clock.SetDate("12/31/00");
    clock.Advance(5);
    EXPECT_EQ(15, clock.Elapsed());
    EXPECT_EQ(ParseIsoDate("2001-01-01"), clock.Day());
    clock.Advance(3605);
    clock.Advance(5);  // the end of summer time
    EXPECT_EQ(3615, clock.Elapsed());
    clock.Advance(6);
    EXPECT_EQ(3616, clock.Elapsed());
    EXPECT_EQ(ParseIsoDate("2001-01-01"), clock.Day());
}

// --- Control characters.

TEST(TraceControls, AreNamed) {
    EXPECT_EQ("<cr><nul>a b<del>\xE9", NameControls({"\r\0a b\x7F\xE9", 7}));
    EXPECT_EQ("<esc>PG1<cr><lf>", NameControlsOfOut("<1b>PG1< d>< a>"));
    EXPECT_EQ("a b<nul>", NameControlsOfOut("a<20>b< 0>"));
    EXPECT_EQ("J<?>rgen", NameControlsOfOut("J<fffrgen"));
    EXPECT_EQ("<41><x><", NameControlsOfOut("<41><x><"));
    EXPECT_EQ("<1b", NameControlsOfOut(std::string_view("<1b>").substr(0, 3))) << "cut off";
}

}  // namespace
}  // namespace host
