// The SNPP server on a real socket.
#include "host/snpp/server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <thread>

#include "tests/support/serving.h"
#include "tests/unit/host/raw_client.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using test_support::kServedAt;
using test_support::Serving;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class TheSnppServer : public ServiceTest {
 protected:
    TheSnppServer() { AddPager("duty"); }

    void Start(const SnppLimits& limits = {}) {
        server_.emplace(
            [this](const std::string& source) { return SnppDialogue(desk, log, source, true); },
            limits);
    }
    void Stop() { server_.reset(); }
    static std::string AnswerTo(const std::string& bytes) { return AnswerAt(kServedAt, bytes); }

    const SnppDesk desk{database};

 private:
    std::optional<Serving<SnppServer>> server_;
};

TEST_F(TheSnppServer, GreetsAndAnswersLineByLine) {
    Start();
    const RawClient client(kServedAt);
    EXPECT_EQ(kSnppGreeting, client.ReceiveUntil("\n"));
    client.Send("PAGER duty\r\n");
    EXPECT_THAT(client.ReceiveUntil("\n"), StartsWith("250 "));
    client.Send("MESS No water\r\n");
    EXPECT_THAT(client.ReceiveUntil("\n"), StartsWith("250 "));
    client.Send("SEND\r\n");
    EXPECT_THAT(client.ReceiveUntil("\n"), StartsWith("250 "));
    EXPECT_THAT(Rows("details FROM AlarmLog"), ::testing::ElementsAre("No water"))
        << "behind the commit";
    client.Send("QUIT\r\n");
    EXPECT_THAT(client.ReceiveAll(), StartsWith("221 "));
}

TEST_F(TheSnppServer, TakesLinesThatComeAtOnceAndWithoutACarriageReturn) {
    Start();
    EXPECT_EQ(std::string(kSnppGreeting) +
                  "250 OK\r\n354 Begin; end with a line of one dot\r\n250 OK\r\n221 Good-bye\r\n",
              AnswerTo("PAGER duty\nDATA\nx\r\n\r\n.\r\nQUIT\n"));
}

TEST_F(TheSnppServer, AnswersWhoHasEndedSending) {
    Start();
    const RawClient client(kServedAt);
    client.Send("PAGER duty\r\nMESS x");
    client.EndSending();
    EXPECT_THAT(client.ReceiveAll(), EndsWith("250 OK\r\n"));
    EXPECT_THAT(Rows("details FROM AlarmLog"), IsEmpty());
}

TEST_F(TheSnppServer, EndsASessionWithALineWithoutEnd) {
    Start();
    EXPECT_THAT(AnswerTo(std::string(8 * 1024, 'x')), HasSubstr("\r\n421 Closing: a line"));
    EXPECT_THAT(AnswerTo(std::string(8 * 1024 - 2, 'x') + "\r\nQUIT\r\n"), HasSubstr("221 "));
}

TEST_F(TheSnppServer, CutsSlowClients) {
    SnppLimits limits;
    limits.line = std::chrono::milliseconds(50);
    Start(limits);
    EXPECT_EQ(kSnppGreeting, AnswerTo("PAGER du"));
}

TEST_F(TheSnppServer, CutsSessionsThatTakeTooLong) {
    SnppLimits limits;
    limits.session = std::chrono::milliseconds(50);
    Start(limits);
    EXPECT_EQ(kSnppGreeting, AnswerTo(""));
}

TEST_F(TheSnppServer, RefusesASourceThatSaysTooMuch) {
    SnppLimits limits;
    limits.burst = 2;
    limits.every = std::chrono::hours(1);
    Start(limits);
    EXPECT_THAT(AnswerTo("HELP\r\nHELP\r\nHELP\r\n"), HasSubstr("421 Closing: too many lines"));
}

TEST_F(TheSnppServer, RefusesSessionsBeyondItsMost) {
    SnppLimits limits;
    limits.sessions = 1;
    Start(limits);
    const RawClient first(kServedAt);
    EXPECT_THAT(first.ReceiveUntil("\n"), StartsWith("220 "));
    EXPECT_THAT(AnswerTo(""), StartsWith("421 Closing: too many sessions"));
}

// By the time that another is greeted, the first waits for its line.
TEST_F(TheSnppServer, EndsIdleSessionsWhenItEnds) {
    Start();
    const RawClient idle(kServedAt);
    EXPECT_THAT(idle.ReceiveUntil("\n"), StartsWith("220 "));
    EXPECT_THAT(RawClient(kServedAt).ReceiveUntil("\n"), StartsWith("220 "));
    std::thread ending([this] { Stop(); });
    EXPECT_EQ("", idle.ReceiveAll());
    ending.join();
}

}  // namespace
}  // namespace host
