// The server on a real socket: what it does with every kind of client.
#include "host/web/server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "host/web/listen.h"
#include "tests/support/temp_dir.h"

namespace host {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

// A client that sends what it likes.
class Client {
 public:
    explicit Client(const std::string& path)
        : socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(&address.sun_path[0], path.c_str(), sizeof address.sun_path - 1);
        timeval patience{20, 0};
        setsockopt(socket_.Number(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        EXPECT_EQ(0, connect(socket_.Number(), reinterpret_cast<const sockaddr*>(&address),
                             sizeof address));
    }

    void Send(std::string_view bytes) const {
        while (!bytes.empty()) {
            const ssize_t sent = send(socket_.Number(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (sent <= 0) {
                return;
            }
            bytes.remove_prefix(static_cast<size_t>(sent));
        }
    }
    void EndSending() const { shutdown(socket_.Number(), SHUT_WR); }

    // All until the server ends the connection.
    std::string ReceiveAll() const {
        std::string all;
        char buffer[4096];
        for (ssize_t count = 0; (count = recv(socket_.Number(), buffer, sizeof buffer, 0)) > 0;) {
            all.append(buffer, static_cast<size_t>(count));
        }
        return all;
    }
    // Up to these bytes.
    std::string ReceiveUntil(std::string_view end) const {
        std::string all;
        char c = 0;
        while (all.find(end) == std::string::npos && recv(socket_.Number(), &c, 1, 0) == 1) {
            all += c;
        }
        return all;
    }

 private:
    const Descriptor socket_;
};

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
        const Client client("web.sock");
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
    const Client client("web.sock");
    client.Send("GET /1 HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_THAT(client.ReceiveUntil(" unix"), HasSubstr("GET /1"));
    client.Send("GET /2 HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_THAT(client.ReceiveUntil(" unix"), HasSubstr("GET /2"));
}

TEST_F(TheServer, AnswersRequestsThatComeAtOnceInTheirOrder) {
    Start();
    const std::string answers = AnswerTo(std::string("GET /1 HTTP/1.1\r\nHost: x\r\n\r\n") +
                                         "GET /2 HTTP/1.1\r\n" + kClose + "\r\n");
    EXPECT_LT(answers.find("GET /1"), answers.find("GET /2"));
    EXPECT_NE(std::string::npos, answers.find("GET /2"));
}

TEST_F(TheServer, AnswersWhoHasEndedSending) {
    Start();
    const Client client("web.sock");
    client.Send("GET /1 HTTP/1.1\r\nHost: x\r\n\r\n");
    client.EndSending();
    EXPECT_THAT(client.ReceiveAll(), HasSubstr("GET /1"));
}

struct Hostile {
    const char* name;
    std::string bytes;
    const char* answer;  // how it begins; empty: none
};

std::string Repeated(const std::string& text, size_t times) {
    std::string all;
    for (size_t i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

TEST_F(TheServer, EndsAllKindsOfHostileClients) {
    Start();
    const std::string head = std::string("POST / HTTP/1.1\r\n") + kClose;
    const std::vector<Hostile> clients = {
        {"says nothing sensible", "hello\r\n\r\n", "HTTP/1.1 400 "},
        {"speaks TLS", std::string("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03\r\n\r\n", 15),
         "HTTP/1.1 400 "},
        {"sends zero bytes", std::string(64, '\0'), "HTTP/1.1 400 "},
        {"has a zero byte in a field", head + std::string("A: b\0c\r\n\r\n", 10), "HTTP/1.1 400 "},
        {"folds a line", head + "A: b\r\n c\r\n\r\n", ""},
        {"has a header without end", "GET / HTTP/1.1\r\n" + Repeated("A: 0123456789\r\n", 1000),
         "HTTP/1.1 431 "},
        {"has an address without end", "GET /" + std::string(9000, 'a'), "HTTP/1.1 431 "},
        {"announces too much", head + "Content-Length: 1048577\r\n\r\n", "HTTP/1.1 413 "},
        {"announces more than there is", head + "Content-Length: 99999999999999999999999\r\n\r\n",
         "HTTP/1.1 400 "},
        {"announces less than nothing", head + "Content-Length: -1\r\n\r\n", "HTTP/1.1 400 "},
        {"announces two lengths", head + "Content-Length: 1\r\nContent-Length: 2\r\n\r\nab",
         "HTTP/1.1 400 "},
        {"announces a length and pieces",
         head + "Content-Length: 3\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n",
         "HTTP/1.1 400 "},
        {"sends pieces without end",
         head + "Transfer-Encoding: chunked\r\n\r\n" +
             Repeated("10000\r\n" + std::string(65536, 'x') + "\r\n", 17),
         "HTTP/1.1 413 "},
        {"sends a piece of no length", head + "Transfer-Encoding: chunked\r\n\r\nxyz\r\n",
         "HTTP/1.1 400 "},
        {"speaks another version", "GET / HTTP/9.9\r\n\r\n", "HTTP/1.1 400 "},
    };
    for (const Hostile& client : clients) {
        const std::string answer = AnswerTo(client.bytes);
        if (*client.answer != '\0') {
            EXPECT_THAT(answer, StartsWith(client.answer)) << client.name;
        }
        EXPECT_THAT(answer, Not(HasSubstr("boost"))) << client.name;
    }
    EXPECT_THAT(AnswerTo(std::string("GET /still HTTP/1.1\r\n") + kClose + "\r\n"),
                HasSubstr("GET /still"));
}

TEST_F(TheServer, CutsSlowClients) {
    WebLimits limits;
    limits.header = limits.body = std::chrono::milliseconds(50);
    Start(limits);
    EXPECT_EQ("", AnswerTo("GET / HT")) << "in its header";
    EXPECT_EQ("", AnswerTo("POST / HTTP/1.1\r\nHost: x\r\nContent-Length: 5\r\n\r\nab"))
        << "in its body";
    EXPECT_EQ("", AnswerTo("")) << "before it says anything";
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
    const Client first("web.sock");
    const Client second("web.sock");
    for (const Client* client : {&first, &second}) {
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
    const Client slow("web.sock");
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
    const Client idle("web.sock");
    const Client client("web.sock");
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
