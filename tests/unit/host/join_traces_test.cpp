// Traces of several lines, read as one.
#include "host/trace/join_traces.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <sstream>

#include "tests/unit/host/recorded_trace.h"

namespace {

using ::testing::ElementsAre;

// "1 north duty": its number, its line, its pager; "north: north an event" of what stands between.
class Order : public host::TraceSink {
 public:
    void OnPage(const host::TracedPage& page) override {
        told.push_back(std::to_string(page.number) + " " + page.Port() + " " + page.pager);
    }
    void OnEvent(const host::TraceEvent& event) override {
        told.push_back(std::string(event.line) + ": " + std::string(event.entry.text));
    }
    std::vector<std::string> told;
};

std::vector<std::string> Joined(const std::vector<std::pair<std::string, std::string>>& traces) {
    std::deque<std::istringstream> streams;
    std::vector<host::TraceOfLine> lines;
    for (const auto& [line, text] : traces) {
        lines.push_back({line, streams.emplace_back(text)});
    }
    Order order;
    host::JoinTraces(lines, order, [](size_t) { return true; });
    return order.told;
}

constexpr int kTen = 10 * 3600;

TEST(JoinedTraces, AreInTheOrderInWhichPagesBegan) {
    TraceWriter north(kTen);
    north.Begin("first").Pass(90).End().Begin("third").Pass(10).End();
    TraceWriter south(kTen + 30);
    south.Begin("second").Pass(10).End().Pass(90).Begin("fourth").End();
    EXPECT_THAT(Joined({{"south", south.Text()}, {"north", north.Text()}}),
                ElementsAre("1 north first", "2 south second", "3 north third", "4 south fourth"));
}

TEST(JoinedTraces, GoOnOverMidnight) {
    TraceWriter north(kTen);
    north.Begin("second", "01/09/01").End();
    TraceWriter south(23 * 3600);
    south.Begin("first", "01/08/01").End().Pass(12 * 3600).Begin("third", "01/09/01").End();
    EXPECT_THAT(Joined({{"north", north.Text()}, {"south", south.Text()}}),
                ElementsAre("1 south first", "2 north second", "3 south third"));
}

TEST(JoinedTraces, SayWhoseNewsItIs) {
    TraceWriter north(kTen + 5);
    north.Say("made later").Begin("north's").End();
    TraceWriter south(kTen);
    south.Say("made first").Pass(10).Begin("south's").End();
    EXPECT_THAT(Joined({{"north", north.Text()}, {"south", south.Text()}}),
                ElementsAre("south: made first", "north: made later", "1 north north's",
                            "2 south south's"));
}

TEST(JoinedTraces, AreJoinedThoughLongerThanOnePieceOfReading) {
    TraceWriter north(kTen);
    TraceWriter south(kTen + 1);
    std::vector<std::string> expected;
    for (int page = 0; page < 1000; page += 2) {
        north.Begin("duty").Pass(2).End();
        south.Begin("duty").Pass(2).End();
        expected.push_back(std::to_string(page + 1) + " north duty");
        expected.push_back(std::to_string(page + 2) + " south duty");
    }
    ASSERT_GT(north.Text().size(), size_t{2 * 65536});
    EXPECT_EQ(expected, Joined({{"south", south.Text()}, {"north", north.Text()}}));
}

TEST(JoinedTraces, OfALineWhoseNameIsNotKnownKeepTheLibrarysName) {
    EXPECT_THAT(Joined({{"", TraceWriter().Begin("duty").End().Text()}}),
                ElementsAre("1 COM 1 duty"));
}

TEST(JoinedTraces, WithoutADayComeFirst) {
    TraceWriter north(kTen);
    north.Begin("duty").End();
    EXPECT_THAT(Joined({{"north", north.Text()}, {"south", Stamp(kTen + 9) + "no day\n"}}),
                ElementsAre("south: no day", "1 north duty"));
}

TEST(JoinedTraces, EndWhereNobodyListensAnyMore) {
    std::istringstream text(TraceWriter().Begin("cut off").Text() + std::string(200000, 'x'));
    Order order;
    host::JoinTraces({{"north", text}}, order, [](size_t) { return false; });
    EXPECT_EQ(65536, text.tellg());
    EXPECT_THAT(order.told, ElementsAre("1 north cut off"));
}

}  // namespace
