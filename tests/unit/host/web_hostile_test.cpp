// Hostile clients, slow, huge, half closed or lying, and what each is answered. The server and the
// API are the real ones.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "host/web/api.h"
#include "host/web/server.h"
#include "host/web/token.h"
#include "tests/support/serving.h"
#include "tests/unit/host/raw_client.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using test_support::kServedAt;
using test_support::Serving;
using ::testing::HasSubstr;
using ::testing::Not;

class HostileClients : public ServiceTest {
 protected:
    HostileClients() {
        WriteTransaction transaction(connection);
        token = MakeToken(connection, {"maria", "raise", 0, kNow});
        transaction.Commit();
        WebLimits limits;
        limits.header = std::chrono::milliseconds(500);
        limits.body = std::chrono::seconds(4);  // a busy machine takes long for a megabyte
        server_.emplace([this](const WebRequest& request) { return api_.Answer(request); }, limits);
    }

    // The status of each answer, until the server ends the connection: "200 400".
    static std::string StatusesIn(const std::string& answers) {
        const std::string begin = "HTTP/1.1 ";
        std::string statuses;
        for (size_t at = 0; (at = answers.find(begin, at)) != std::string::npos; ++at) {
            statuses += (statuses.empty() ? "" : " ") + answers.substr(at + begin.size(), 3);
        }
        return statuses;
    }

    std::string token;

 private:
    Api api_{database, log};
    std::optional<Serving<WebServer>> server_;
};

std::string Times(size_t times, const std::string& text) {
    std::string all;
    for (size_t i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

// An announced length, and what comes.
std::string Body(const std::string& length, const std::string& body) {
    return "Content-Length: " + length + "\r\n\r\n" + body;
}

std::string Pieces(const std::string& pieces) {
    return "Transfer-Encoding: chunked\r\n\r\n" + pieces;
}

TEST_F(HostileClients, AreAnsweredOrCut) {
    const std::string host = "Host: x\r\nAuthorization: Bearer " + token + "\r\n";
    const std::string post = "POST /api/v1/alarms HTTP/1.1\r\n" + host;
    const std::string last = post + "Connection: close\r\n";
    const std::string alarm = R"({"text": "x"})";
    const std::string whole = last + Body("13", alarm);
    constexpr bool kHalfClosed = true;
    struct Case {
        const char* name;
        std::string bytes;
        std::string statuses;  // of what is answered; empty: nothing is
        bool half_closed = false;
    };
    const std::vector<Case> cases = {
        {"a friend", whole, "200"},

        // Slow, and half closed: nothing more comes.
        {"says nothing", "", ""},
        {"stops in its first line", "POST / HT", ""},
        {"stops in its header", "POST / HTTP/1.1\r\nHost: x\r\n", ""},
        {"stops in its body", last + Body("13", R"({"te)"), ""},
        {"stops in a piece", last + Pieces("d\r\n{\"te"), ""},
        {"stops behind a request", post + Body("13", alarm), "200"},
        {"closes half at once", "", "", kHalfClosed},
        {"closes half in its header", "POST / HTTP/1.1\r\nHo", "", kHalfClosed},
        {"closes half in its body", last + Body("13", R"({"te)"), "", kHalfClosed},
        {"closes half behind a request", post + Body("13", alarm), "200", kHalfClosed},

        // Pipelined.
        {"asks twice at once", post + Body("13", alarm) + whole, "200 200"},
        {"asks twenty times at once", Times(20, post + Body("13", alarm)) + whole,
         Times(20, "200 ") + "200"},
        {"asks rightly, then wrongly", post + Body("13", alarm) + "x\r\n\r\n", "200 400"},
        {"goes on behind its last request", whole + whole, "200"},

        // Huge.
        {"has a header of 9 KiB", last + "A: " + std::string(9 * 1024, 'a') + "\r\n\r\n", "431"},
        {"has a header without end", "GET / HTTP/1.1\r\n" + Times(1000, "A: 0123456789\r\n"),
         "431"},
        {"has an address without end", "GET /" + std::string(9000, 'a'), "431"},
        {"announces 100 MB", last + Body("104857600", "{"), "413"},
        {"announces a byte too many", last + Body("1048577", ""), "413"},
        {"announces pieces beyond all bounds", last + Pieces("200000\r\n"), "413"},

        // Wrong lengths.
        {"announces more than there is", last + Body("99999999999999999999999", ""), "400"},
        {"announces less than nothing", last + Body("-1", ""), "400"},
        {"announces no number", last + Body("1x", "a"), "400"},
        {"announces two lengths", last + "Content-Length: 1\r\n" + Body("2", "ab"), "400"},
        {"announces one length twice", last + "Content-Length: 13\r\n" + Body("13", alarm), "200"},
        {"announces a length and pieces", last + "Content-Length: 3\r\n" + Pieces("0\r\n\r\n"),
         "400"},
        {"announces pieces and a length",
         last + "Transfer-Encoding: chunked\r\n" + Body("3", "0\r\n\r\n"), "400"},
        {"announces less than it sends", last + Body("3", alarm), "400"},
        {"announces nothing", last + "\r\n" + alarm, "400"},

        // Pieces.
        {"sends its body in pieces", last + Pieces("7\r\n{\"text\"\r\n6\r\n: \"x\"}\r\n0\r\n\r\n"),
         "200"},
        {"sends a piece of no length", last + Pieces("xyz\r\n"), "400"},
        {"sends a piece of less than nothing", last + Pieces("-1\r\n"), "400"},
        {"sends a piece of more than there is", last + Pieces("fffffffffffffffff\r\n"), "400"},
        {"sends more than its piece has", last + Pieces("1\r\n{\"text\"\r\n"), "400"},
        {"asks for pieces of its own kind", last + "Transfer-Encoding: xchunked\r\n\r\n", "400"},

        // Nonsense.
        {"says nothing sensible", "hello\r\n\r\n", "400"},
        {"speaks TLS", std::string("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03\r\n\r\n", 15),
         "400"},
        {"sends zero bytes", std::string(64, '\0'), "400"},
        {"has a zero byte in its address", std::string("GET /\0 HTTP/1.1\r\n", 17) + host + "\r\n",
         "400"},
        {"has a zero byte in a field", last + std::string("A: b\0c\r\n\r\n", 10), "400"},
        {"has a zero byte in its body", last + Body("14", std::string("{\"text\": \"\0x\"}", 14)),
         "400"},
        {"speaks another version", "GET / HTTP/9.9\r\n\r\n", "400"},
        {"has an address that is none", "GET /% HTTP/1.1\r\nConnection: close\r\n\r\n", "400"},
        {"nests without end", last + Body("100000", std::string(100000, '[')), "400"},
        {"nests deeper than anybody would",
         last + Body("80", std::string(40, '[') + std::string(40, ']')), "400"},
        {"names a number that is none", last + Body("13", R"({"text":1e9)" + std::string("99}")),
         "400"},
        {"has no token", "GET /api/v1/alarms HTTP/1.1\r\nConnection: close\r\n\r\n", "401"},
        {"has a token without end",
         "GET /api/v1/alarms HTTP/1.1\r\nConnection: close\r\nAuthorization: Bearer " +
             std::string(7000, 'a') + "\r\n\r\n",
         "401"},
        {"has a method of its own",
         "BREW /api/v1/alarms HTTP/1.1\r\n" + host + "Connection: close\r\n\r\n", "405"},
    };
    for (const Case& one : cases) {
        const RawClient client(kServedAt);
        client.Send(one.bytes);
        if (one.half_closed) {
            client.EndSending();
        }
        const std::string answers = client.ReceiveAll();
        EXPECT_EQ(one.statuses, StatusesIn(answers)) << one.name << ": " << answers.substr(0, 200);
        EXPECT_THAT(answers, Not(HasSubstr("oost"))) << one.name;
    }
}

TEST_F(HostileClients, AreToldHowLongAHeaderMayBe) {
    const RawClient client(kServedAt);
    client.Send("GET / HTTP/1.1\r\nA: " + std::string(9 * 1024, 'a') + "\r\n\r\n");
    EXPECT_THAT(client.ReceiveAll(), HasSubstr("\"the header is longer than 8 KiB"));
}

}  // namespace
}  // namespace host
