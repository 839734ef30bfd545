// Every fault of the exchange file, as a program sees it.
#include <gmock/gmock.h>

#include "tests/unit/sim/pagersim_fixture.h"

namespace pagersim {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class PagersimFaults : public PagersimTest {
 protected:
    // What comes of a page to the TAP centre when its entry has these keys, and the line those.
    Result PageWith(const std::string& centre, const std::string& line = "") const {
        Write("exchange.toml", "[[line]]\nport = \"COM 1\"\n" + line +
                                   "[[centre]]\nname = \"tap\"\n"
                                   "protocol = \"tap\"\nnumbers = [\"5550101\"]\n" +
                                   centre);
        return Client(kConnect + kPage);
    }
};

TEST_F(PagersimFaults, Busy) {
    const Result result = PageWith("calls = \"busy\"\n");
    EXPECT_EQ(1, result.status);
    EXPECT_THAT(result.out, HasSubstr("< <cr><lf>BUSY<cr><lf>"));
    EXPECT_THAT(result.out, HasSubstr("no CONNECT"));
}

TEST_F(PagersimFaults, DeviceThatComesLater) {
    Write("exchange.toml", "[[line]]\nport = \"COM 1\"\nthere_from = \"2001-01-08 10:00:05\"\n");
    EXPECT_EQ(2, Client({"sleep:4", "open:/dev/ttyS0"}).status);
    EXPECT_EQ(0, Client({"sleep:5", "open:/dev/ttyS0"}).status);
    EXPECT_EQ(0, Client({"open:/dev/ttyS0"}, {"--start", "2001-01-08 10:00:05"}).status);
}

TEST_F(PagersimFaults, DeviceThatGoesAndComesBack) {
    Write("exchange.toml",
          "[[line]]\nport = \"COM 1\"\nthere_until = \"2001-01-08 10:00:05\"\n"
          "there_from = \"2001-01-08 10:00:10\"\n");
    EXPECT_EQ(0, Client({"sleep:4", "open:/dev/ttyS0"}).status);
    EXPECT_EQ(2, Client({"sleep:5", "open:/dev/ttyS0"}).status);
    EXPECT_EQ(0, Client({"sleep:10", "open:/dev/ttyS0"}).status);
    EXPECT_EQ(1, Client({"open:/dev/ttyS0", "sleep:5", "send:AT\\r", "wait:OK"}).status);
}

TEST_F(PagersimFaults, BusyAtFirst) {
    Write("exchange.toml", std::string(kExchange) + "busy_calls = 1\n");
    EXPECT_EQ(0, Client({"open:/dev/ttyS0", "send:ATDT0,5550100\\r", "wait:BUSY",
                         "send:ATDT0,5550100\\r", "wait:CONNECT"})
                     .status);
}

TEST_F(PagersimFaults, Silence) {
    const Result result = PageWith("silent_after = 1\n");
    EXPECT_EQ(1, result.status);
    EXPECT_THAT(result.out, HasSubstr("tap      # silent\n"));
    EXPECT_THAT(result.out, HasSubstr("tap received nothing\n"));
}

TEST_F(PagersimFaults, LatePrompt) {
    EXPECT_THAT(PageWith("late_ms = 40000\n").out, HasSubstr("   49.400  COM 1  tap      < ID=\n"));
    EXPECT_EQ(1, PageWith("late_ms = 130000\n").status);
}

TEST_F(PagersimFaults, LostCarrier) {
    const Result result = PageWith("drop_after_hearing = 10\n");
    EXPECT_EQ(1, result.status);
    EXPECT_THAT(result.out, HasSubstr("the carrier is lost after hearing 10 bytes\n"));
    EXPECT_THAT(result.out, HasSubstr("<cr><lf>NO CARRIER<cr><lf>"));
}

TEST_F(PagersimFaults, Refusal) {
    EXPECT_THAT(PageWith("answer = 512\n").out, HasSubstr("< 512 Try later<cr><rs><cr>\n"));
}

TEST_F(PagersimFaults, NoEnd) {
    const Result result = PageWith("ends = false\n");
    EXPECT_EQ(1, result.status);
    EXPECT_THAT(result.out, HasSubstr("= page for 123: ABC\n")) << "delivered all the same";
}

TEST_F(PagersimFaults, Noise) {
    EXPECT_NE(0, PageWith("noise = 2\n").status);
}

TEST_F(PagersimFaults, SlowLine) {
    const Result result = PageWith("speed = 50\n");
    EXPECT_EQ(0, result.status);
    EXPECT_THAT(result.out, HasSubstr("   14.500  COM 1  tap      = page for 123: ABC\n"));
}

TEST_F(PagersimFaults, DeadModem) {
    const Result result = PageWith("", "powered = false\n");
    EXPECT_EQ(1, result.status);
    EXPECT_THAT(result.out, HasSubstr("program  > ATDT0,5550101<cr>\n"));
    EXPECT_THAT(result.out, Not(HasSubstr(" < "))) << "nothing comes back";
}

TEST_F(PagersimFaults, DeviceThatVanishes) {
    const Result result = PageWith("", "vanish_after = 16\n");
    EXPECT_THAT(result.out, HasSubstr("modem    # the device is gone\n"));
    EXPECT_THAT(result.out, HasSubstr("read: Input/output error\n"));
}

TEST_F(PagersimFaults, AnswersInPieces) {
    EXPECT_EQ(0, PageWith("", "answer_piece = 1\n").status);
}

}  // namespace
}  // namespace pagersim
