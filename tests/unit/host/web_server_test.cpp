// The server on a real socket: what it does with every kind of client.
#include "host/web/server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>

#include "host/net/listen.h"
#include "tests/support/serving.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host/files.h"
#include "tests/unit/host/raw_client.h"

namespace host {
namespace {

using test_support::kServedAt;
using test_support::Serving;
using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class TheServer : public ::testing::Test {
 protected:
    void Start(const WebLimits& limits = {}) {
        server_.emplace([this](const WebRequest& request) { return handler(request); }, limits);
    }
    void Stop() { server_.reset(); }
    static std::string AnswerTo(const std::string& bytes) { return AnswerAt(kServedAt, bytes); }

    const test_support::TempDir folder;
    WebHandler handler = [](const WebRequest& request) {
        return WebAnswer{200, request.method + " " + request.target + " [" + request.body + "] " +
                                  request.token + " " + request.source};
    };

 private:
    std::optional<Serving<WebServer>> server_;
};

constexpr const char* kClose = "Host: x\r\nConnection: close\r\n";

TEST_F(TheServer, HandsOverWhatIsAsked) {
    Start();
    const std::string answer =
        AnswerTo(std::string("POST /a?b HTTP/1.1\r\n") + kClose +
                 "Authorization: bearer abc\r\nContent-Length: 3\r\n\r\nxyz");
    EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 OK\r\n"));
    EXPECT_THAT(answer, EndsWith("\r\n\r\nPOST /a?b [xyz] abc unix"));
    EXPECT_THAT(answer,
                AllOf(HasSubstr("X-Content-Type-Options: nosniff\r\n"),
                      HasSubstr("Cache-Control: no-store\r\n"), HasSubstr("Connection: close\r\n"),
                      HasSubstr("Content-Security-Policy: default-src 'none'"),
                      Not(HasSubstr("Server:")), Not(HasSubstr("Boost"))));
}

TEST_F(TheServer, KeepsAConnectionForTheNextRequest) {
    Start();
    const RawClient client(kServedAt);
    client.Send("GET /1 HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_THAT(client.ReceiveUntil(" unix"),
                AllOf(HasSubstr("GET /1"), Not(HasSubstr("Connection:"))));
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
    const RawClient first(kServedAt);
    const RawClient second(kServedAt);
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
    const RawClient slow(kServedAt);
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
    const RawClient idle(kServedAt);
    const RawClient client(kServedAt);
    client.Send("POST / HTTP/1.1\r\nHost: x\r\nContent-Length: 1\r\n\r\nx");
    while (!asked) {
        std::this_thread::yield();
    }
    std::thread ending([this] { Stop(); });
    EXPECT_EQ("", idle.ReceiveAll()) << "it ends, before the other is answered";
    go = true;
    EXPECT_THAT(client.ReceiveAll(), EndsWith("done"));
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

TEST(Listening, LeavesWhatIsNoSocketOfItsOwn) {
    const test_support::TempDir folder;
    { const Descriptor before = Listen("unix:dead.sock"); }
    std::filesystem::create_symlink("dead.sock", "link");
    std::filesystem::create_directory("folder");
    WriteFile("file", "kept");
    for (const char* stranger : {"link", "folder", "file"}) {
        EXPECT_THROW(Listen(std::string("unix:") + stranger), ListenError) << stranger;
        EXPECT_TRUE(std::filesystem::exists(stranger)) << stranger;
    }
}

TEST(Listening, KnowsWhereItIs) {
    EXPECT_THAT(AddressOf(Listen("127.0.0.1:0")), ::testing::MatchesRegex("127.0.0.1:[0-9]+"));
}

// In a process of its own, whose descriptors from 3 on are the manager's.
TEST(Listening, MayBeOnSocketsOfTheManagerByTheirNames) {
    const auto tell = [](bool ours) {
        dup2(STDERR_FILENO, 3);
        dup2(STDERR_FILENO, 4);
        setenv("LISTEN_PID", std::to_string(ours ? getpid() : 1).c_str(), 1);
        setenv("LISTEN_FDS", "2", 1);
        setenv("LISTEN_FDNAMES", "web:snpp", 1);
        std::string told;
        for (const NamedSocket& given : SocketsOfManager()) {
            told += given.name + " " + std::to_string(given.socket.Number()) + ". ";
        }
        std::fprintf(stderr, "has %s\n", told.c_str());
        _exit(0);
    };
    EXPECT_EXIT(tell(true), ::testing::ExitedWithCode(0), "has web 3. snpp 4. ");
    EXPECT_EXIT(tell(false), ::testing::ExitedWithCode(0), "has \n") << "another's";
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
