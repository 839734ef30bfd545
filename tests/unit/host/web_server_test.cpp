// The server on a real socket: what it does with every kind of client.
#include "host/web/server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "host/net/listen.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host/raw_client.h"

namespace host {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class TheServer : public ::testing::Test {
 protected:
    ~TheServer() override { Stop(); }

    void Start(const WebLimits& limits = {}) {
        std::vector<Descriptor> listeners;
        listeners.push_back(Listen("unix:web.sock"));
        server_ = std::make_unique<WebServer>(
            std::move(listeners), [this](const WebRequest& request) { return handler(request); },
            limits);
        thread_ = std::thread([this] { server_->Run(); });
    }
    void Stop() {
        if (thread_.joinable()) {
            server_->Stop();
            thread_.join();
        }
    }
    static std::string AnswerTo(const std::string& bytes) {
        const RawClient client("web.sock");
        client.Send(bytes);
        return client.ReceiveAll();
    }

    const test_support::TempDir folder;
    WebHandler handler = [](const WebRequest& request) {
        return WebAnswer{200, request.method + " " + request.target + " [" + request.body + "] " +
                                  request.token + " " + request.source};
    };

 private:
    std::unique_ptr<WebServer> server_;
    std::thread thread_;
};

constexpr const char* kClose = "Host: x\r\nConnection: close\r\n";

TEST_F(TheServer, HandsOverWhatIsAsked) {
    Start();
    const std::string answer =
        AnswerTo(std::string("POST /a?b HTTP/1.1\r\n") + kClose +
                 "Authorization: bearer abc\r\nContent-Length: 3\r\n\r\nxyz");
    EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 OK\r\n"));
    EXPECT_THAT(answer, EndsWith("\r\n\r\nPOST /a?b [xyz] abc unix"));
    EXPECT_THAT(answer, AllOf(HasSubstr("X-Content-Type-Options: nosniff\r\n"),
                              HasSubstr("Cache-Control: no-store\r\n"),
                              HasSubstr("Content-Security-Policy: default-src 'none'"),
                              Not(HasSubstr("Server:")), Not(HasSubstr("Boost"))));
}

TEST_F(TheServer, KeepsAConnectionForTheNextRequest) {
    Start();
    const RawClient client("web.sock");
    client.Send("GET /1 HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_THAT(client.ReceiveUntil(" unix"), HasSubstr("GET /1"));
    client.Send("GET /2 HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_THAT(client.ReceiveUntil(" unix"), HasSubstr("GET /2"));
}

TEST_F(TheServer, RefusesASourceThatAsksTooOften) {
    WebLimits limits;
    limits.burst = 2;
    limits.every = std::chrono::hours(1);
    Start(limits);
    const std::string request = std::string("GET / HTTP/1.1\r\n") + kClose + "\r\n";
    EXPECT_THAT(AnswerTo(request), StartsWith("HTTP/1.1 200 "));
    EXPECT_THAT(AnswerTo(request), StartsWith("HTTP/1.1 200 "));
    const std::string refused = AnswerTo(request);
    EXPECT_THAT(refused, StartsWith("HTTP/1.1 429 "));
    EXPECT_THAT(refused, HasSubstr("Retry-After: 1\r\n"));
}

TEST_F(TheServer, RefusesConnectionsBeyondItsMost) {
    WebLimits limits;
    limits.connections = 2;
    Start(limits);
    const RawClient first("web.sock");
    const RawClient second("web.sock");
    for (const RawClient* client : {&first, &second}) {
        client->Send("GET /1 HTTP/1.1\r\nHost: x\r\n\r\n");
        client->ReceiveUntil(" unix");
    }
    EXPECT_THAT(AnswerTo(""), AllOf(StartsWith("HTTP/1.1 503 "), HasSubstr("Retry-After")));
    first.Send("GET /2 HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_THAT(first.ReceiveUntil(" unix"), HasSubstr("GET /2"));
}

TEST_F(TheServer, SaysWhenToComeAgain) {
    handler = [](const WebRequest&) { return WebAnswer{503, "{}", "application/json", 5}; };
    Start();
    EXPECT_THAT(AnswerTo(std::string("GET / HTTP/1.1\r\n") + kClose + "\r\n"),
                AllOf(StartsWith("HTTP/1.1 503 "), HasSubstr("Retry-After: 5\r\n")));
}

// A handler that waits for the database holds up no other client's bytes.
TEST_F(TheServer, AnswersOthersWhileOneWaits) {
    std::atomic<bool> go{false};
    handler = [&go](const WebRequest& request) {
        while (request.target == "/slow" && !go) {
            std::this_thread::yield();
        }
        return WebAnswer{200, request.target};
    };
    Start();
    const RawClient slow("web.sock");
    slow.Send(std::string("GET /slow HTTP/1.1\r\n") + kClose + "\r\n");
    EXPECT_THAT(AnswerTo(std::string("GET /quick HTTP/1.1\r\n") + kClose + "\r\n"),
                EndsWith("/quick"));
    go = true;
    EXPECT_THAT(slow.ReceiveAll(), EndsWith("/slow"));
}

TEST_F(TheServer, AnswersWhatHasComeWholeBeforeItEnds) {
    std::atomic<bool> asked{false};
    std::atomic<bool> go{false};
    handler = [&](const WebRequest&) {
        asked = true;
        while (!go) {
            std::this_thread::yield();
        }
        return WebAnswer{200, "done"};
    };
    Start();
    const RawClient idle("web.sock");
    const RawClient client("web.sock");
    client.Send("POST / HTTP/1.1\r\nHost: x\r\nContent-Length: 1\r\n\r\nx");
    while (!asked) {
        std::this_thread::yield();
    }
    std::thread ending([this] { Stop(); });
    go = true;
    EXPECT_THAT(client.ReceiveAll(), EndsWith("done"));
    EXPECT_EQ("", idle.ReceiveAll());
    ending.join();
}

// --- Where it listens.

TEST(Listening, TakesThePlaceOfASocketThatWasLeftBehind) {
    const test_support::TempDir folder;
    { const Descriptor before = Listen("unix:web.sock"); }
    EXPECT_TRUE(Listen("unix:web.sock").IsOpen());
}

TEST(Listening, LeavesASocketThatIsListenedOn) {
    const test_support::TempDir folder;
    const Descriptor before = Listen("unix:web.sock");
    EXPECT_THROW(Listen("unix:web.sock"), ListenError);
    EXPECT_EQ("unix:web.sock", AddressOf(before));
}

TEST(Listening, KnowsWhereItIs) {
    EXPECT_THAT(AddressOf(Listen("127.0.0.1:0")), ::testing::MatchesRegex("127.0.0.1:[0-9]+"));
}

TEST(Listening, IsRefusedWhereThereIsNoAddress) {
    for (const char* wrong : {"", ":", "x", "localhost:80", "127.0.0.1", "127.0.0.1:x",
                              "127.0.0.1:65536", "127.0.0.1:-1", "unix:", "[::1]"}) {
        EXPECT_THROW(Listen(wrong), ListenError) << wrong;
    }
    EXPECT_THROW(Listen("unix:" + std::string(200, 'x')), ListenError);
    EXPECT_THROW(Listen("unix:no/such/folder"), ListenError);
}

}  // namespace
}  // namespace host
