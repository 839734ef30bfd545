// What a scripted line answers, and what it says of a program that kept to the script or did not.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>

#include "sim/testing.h"

using namespace std::chrono_literals;

namespace pagersim {
namespace {

class ScriptedLineTest : public testing::Test {
 protected:
    ~ScriptedLineTest() override {
        if (fd >= 0) {
            close(fd);
        }
    }

    void Open() {
        fd = open("/dev/ttyS0", O_RDWR);
        ASSERT_GE(fd, 0);
    }

    void Send(std::string_view bytes) const {
        ASSERT_EQ(static_cast<ssize_t>(bytes.size()), write(fd, bytes.data(), bytes.size()));
    }

    // What arrives within that time.
    std::string Receive(Milliseconds wait) const {
        pollfd look{fd, POLLIN, 0};
        if (poll(&look, 1, static_cast<int>(wait.count())) <= 0) {
            return "";
        }
        char buffer[100];
        const ssize_t count = read(fd, buffer, sizeof buffer);
        return count > 0 ? std::string(buffer, static_cast<size_t>(count)) : "";
    }

    VirtualClock clock;
    ScriptedLine line{1};
    int fd = -1;
};

TEST_F(ScriptedLineTest, PlaysAWholeDialogue) {
    line.Hears("ATZ\r").Says("OK\r\n", 200ms);
    line.Hears("ATDT1\r").Says("CONNECT", 5s).Says(" 2400\r\n");
    Open();

    Send("ATZ\r");
    EXPECT_EQ("OK\r\n", Receive(10s));
    EXPECT_EQ(200ms, VirtualClock::Now());
    Send("ATDT1\r");
    EXPECT_EQ("CONNECT 2400\r\n", Receive(10s));
    EXPECT_EQ(5200ms, VirtualClock::Now());
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ("ATZ\rATDT1\r", line.Heard());
}

TEST_F(ScriptedLineTest, HearsATextHoweverItIsSplit) {
    line.Hears("ABC").Hears("DEF").Says("!");
    Open();
    Send("A");
    Send("BCD");
    EXPECT_EQ("", Receive(0ms));
    Send("EF");
    EXPECT_EQ("!", Receive(0ms));
    EXPECT_EQ("", line.Verdict());
}

TEST_F(ScriptedLineTest, HearsAnythingOfALength) {
    line.HearsAnything(3).Says("!");
    Open();
    Send("xyz");
    EXPECT_EQ("!", Receive(0ms));
    EXPECT_EQ("", line.Verdict());
}

TEST_F(ScriptedLineTest, TheFirstStepSpeaksAfterTheOpening) {
    line.Says("RING", 3s);
    poll(nullptr, 0, 10'000);
    Open();
    EXPECT_EQ("RING", Receive(10s));
    EXPECT_EQ(13s, VirtualClock::Now());
}

TEST_F(ScriptedLineTest, AWrongByteIsShown) {
    line.Hears(
            "\x02"
            "123\r")
        .Says("never");
    Open();
    Send(
        "\x02"
        "12");
    Send("4\r");
    EXPECT_EQ("step 1: expected <02>123<0d>, heard <02>124<0d>", line.Verdict());
    EXPECT_EQ("", Receive(60s));
}

TEST_F(ScriptedLineTest, AMissingByteIsShown) {
    line.Hears("ATZ\r").Says("OK").Hears("ATDT\r");
    Open();
    Send("ATZ\r");
    Send("ATD");
    EXPECT_EQ("step 3: expected ATDT<0d>, heard ATD", line.Verdict());
}

TEST_F(ScriptedLineTest, AnUntouchedLineIsNoSuccess) {
    line.Hears("ATZ\r");
    EXPECT_EQ("step 1: expected ATZ<0d>, heard nothing", line.Verdict());
}

TEST_F(ScriptedLineTest, BytesBehindTheEndAreShown) {
    line.Hears("A");
    Open();
    Send("A");
    EXPECT_EQ("", line.Verdict());
    Send("B\xff<");
    EXPECT_EQ("after the last step: heard B<ff><3c>", line.Verdict());
}

TEST_F(ScriptedLineTest, SpeakingOutOfTurnIsAMistake) {
    line.Hears("A").Says("ready", 1s).Hears("B");
    Open();
    Send("A");
    Send("B");
    EXPECT_EQ("step 2: expected to say ready, heard B", line.Verdict());
}

TEST_F(ScriptedLineTest, WhatIsNotSaidYetIsNoSuccess) {
    line.Hears("A").Says("later", 1s);
    Open();
    Send("A");
    EXPECT_EQ("step 2: expected to say later, not done yet", line.Verdict());
    EXPECT_EQ("later", Receive(1s));
    EXPECT_EQ("", line.Verdict());
}

TEST_F(ScriptedLineTest, StepsCanBeAddedWhileItPlays) {
    Open();
    line.Says("first");
    EXPECT_EQ("first", Receive(0ms));
    line.Hears("A").Says("second");
    Send("A");
    EXPECT_EQ("second", Receive(0ms));
    EXPECT_EQ("", line.Verdict());
}

TEST_F(ScriptedLineTest, VanishesUntilOpenedAgain) {
    line.Hears("A").Vanishes(2s).Says("back", 1s);
    Open();
    Send("A");
    EXPECT_EQ("", Receive(10s));
    EXPECT_EQ(2s, VirtualClock::Now()) << "what vanishes ends a wait";
    char byte = 'x';
    EXPECT_EQ(-1, read(fd, &byte, 1));
    EXPECT_EQ(EIO, errno);
    EXPECT_EQ(-1, write(fd, &byte, 1));
    EXPECT_EQ(EIO, errno);
    close(fd);
    Open();
    EXPECT_EQ("back", Receive(10s));
    EXPECT_EQ(3s, VirtualClock::Now());
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ(2, line.Opens());
    EXPECT_EQ(1, line.Closes());
}

TEST_F(ScriptedLineTest, WhatIsSaidToNobodyIsLost) {
    line.Hears("A").Says("lost", 1s).Says("found", 2s);
    Open();
    Send("A");
    close(fd);
    sleep(2);
    Open();
    EXPECT_EQ("found", Receive(10s));
    EXPECT_EQ("", line.Verdict());
}

}  // namespace
}  // namespace pagersim
