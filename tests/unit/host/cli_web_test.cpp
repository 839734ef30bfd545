// pagerfwd web: the process as a whole.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <thread>
#include <utility>

#include "host/files/descriptor.h"
#include "tests/unit/host/cli_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class CliWeb : public CliFixture {
 protected:
    CliWeb() { EXPECT_EQ(0, Run({"init"}).exit_code); }

    static ChildProcess Serve() {
        return ChildProcess({"/bin/sh", "-c",
                             "exec " PAGERFWD_PROGRAM
                             " --database site.db web --listen unix:web.sock 2>&1"});
    }
    // Not open where nobody listens any more.
    static host::Descriptor Connected() {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strcpy(&address.sun_path[0], "web.sock");
        host::Descriptor made(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        return connect(made.Number(), reinterpret_cast<const sockaddr*>(&address),
                       sizeof address) == 0
                   ? std::move(made)
                   : host::Descriptor();
    }
    // Empty: there was none.
    static std::string Ask(const std::string& first_line, const std::string& token,
                           const std::string& body = "") {
        const host::Descriptor made = Connected();
        const std::string request = first_line + " HTTP/1.1\r\nHost: x\r\nConnection: close\r\n" +
                                    "Authorization: Bearer " + token +
                                    "\r\nContent-Length: " + std::to_string(body.size()) +
                                    "\r\n\r\n" + body;
        send(made.Number(), request.data(), request.size(), MSG_NOSIGNAL);
        std::string answer;
        char buffer[4096];
        for (ssize_t count = 0; (count = recv(made.Number(), buffer, sizeof buffer, 0)) > 0;) {
            answer.append(buffer, static_cast<size_t>(count));
        }
        return answer;
    }
    static std::string Token(const std::string& may) {
        const std::string out = Run({"token", "add", may, "--may", may}).out;
        return out.substr(0, out.find('\n'));
    }
};

TEST_F(CliWeb, TakesAlarmsUntilItIsEnded) {
    const std::string token = Token("raise");
    ChildProcess web = Serve();
    EXPECT_THAT(web.ReadLine(), HasSubstr("serving site.db on unix:web.sock"));
    EXPECT_THAT(Ask("POST /api/v1/alarms", token, R"({"text": "No water"})"),
                AllOf(StartsWith("HTTP/1.1 200 OK\r\n"), HasSubstr("\"new\":true")));
    EXPECT_THAT(Run({"alarm", "list"}).out, HasSubstr("No water"));
    EXPECT_THAT(Ask("GET /api/v1/alarms", token), StartsWith("HTTP/1.1 403 "));
    Run({"token", "revoke", "raise"});
    EXPECT_THAT(Ask("POST /api/v1/alarms", token, R"({"text": "x"})"), StartsWith("HTTP/1.1 401 "));
    kill(web.Number(), SIGTERM);
    EXPECT_THAT(web.ReadLine(), HasSubstr("ended"));
    EXPECT_EQ(0, web.Finish());
}

TEST_F(CliWeb, ShowsPagesToWhoHasSignedIn) {
    const std::string token = Token("manage");
    ChildProcess web = Serve();
    web.ReadLine();
    EXPECT_THAT(Ask("GET /", token),
                AllOf(StartsWith("HTTP/1.1 303 "), HasSubstr("Location: /sign-in\r\n")));
    const std::string answer = Ask("POST /sign-in", "", "token=" + token);
    EXPECT_THAT(answer, AllOf(StartsWith("HTTP/1.1 303 "), HasSubstr("Location: /\r\n"),
                              HasSubstr("; HttpOnly; SameSite=Strict;")));
    const size_t at = answer.find("pagerfwd_session=");
    const std::string cookie = "x\r\nCookie: " + answer.substr(at, answer.find(';', at) - at);
    EXPECT_THAT(Ask("GET /", cookie),
                AllOf(StartsWith("HTTP/1.1 200 "), HasSubstr("text/html; charset=utf-8"),
                      HasSubstr("style-src 'self'"), HasSubstr("<h1>Overview</h1>")));
    EXPECT_THAT(Ask("GET /api/v1/alarms", cookie), StartsWith("HTTP/1.1 401 "))
        << "a browser's cookie is no token";
}

// Raises one alarm after the other until nobody answers, and keeps the texts of those that were.
class Poster {
 public:
    Poster(std::string name, std::function<bool(const std::string& text)> post)
        : name_(std::move(name)), post_(std::move(post)), thread_([this] { Run(); }) {}
    ~Poster() { thread_.join(); }
    Poster(const Poster&) = delete;
    Poster& operator=(const Poster&) = delete;

    int Count() const { return count_; }
    bool HasEnded() const { return ended_; }
    const std::vector<std::string>& Finish() {
        thread_.join();
        thread_ = std::thread([] {});
        return answered_;
    }

 private:
    void Run() {
        for (std::string text = name_ + "0"; post_(text);
             text = name_ + std::to_string(count_.load())) {
            answered_.push_back(text);
            ++count_;
        }
        ended_ = true;
    }

    const std::string name_;
    const std::function<bool(const std::string&)> post_;
    std::vector<std::string> answered_;
    std::atomic<int> count_{0};
    std::atomic<bool> ended_{false};
    std::thread thread_;
};

// While two are at it, at a moment that is another each time.
TEST_F(CliWeb, KeepsEveryAlarmThatItHasAnsweredHoweverItEnds) {
    const std::string token = Token("raise");
    const auto post = [&token](const std::string& text) {
        return Ask("POST /api/v1/alarms", token, "{\"text\": \"" + text + "\"}")
                   .find("HTTP/1.1 200 ") == 0;
    };
    for (int round = 0; round < 8; ++round) {
        ChildProcess web = Serve();
        web.ReadLine();
        const std::string name = "round " + std::to_string(round);
        Poster first(name + " a", post);
        Poster second(name + " b", post);
        while (first.Count() < 1 + round && !first.HasEnded()) {
            std::this_thread::yield();
        }
        web.Kill();
        std::vector<std::string> answered = first.Finish();
        const std::vector<std::string> others = second.Finish();
        answered.insert(answered.end(), others.begin(), others.end());
        EXPECT_LE(static_cast<size_t>(1 + round), answered.size());
        host::Connection connection("site.db");
        for (const std::string& text : answered) {
            host::Statement found(connection, "SELECT count(*) FROM AlarmLog WHERE details = ?");
            EXPECT_EQ(1, found.Bind(text).FirstNumber()) << text;
        }
        EXPECT_EQ(0, host::Statement(connection,
                                     "SELECT count(*) FROM (SELECT details FROM AlarmLog"
                                     " GROUP BY details HAVING count(*) > 1)")
                         .FirstNumber());
    }
}

TEST_F(CliWeb, LetsNobodyConnectToItsSocketWhoIsNeitherOwnerNorGroup) {
    ChildProcess web = Serve();
    web.ReadLine();
    using std::filesystem::perms;
    EXPECT_EQ(perms::none, std::filesystem::status("web.sock").permissions() & perms::others_all);
}

TEST_F(CliWeb, IsRefusedWhereItCannotListen) {
    ProgramRun run = Run({"web", "--listen", "nowhere"});
    EXPECT_EQ(3, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("no address to listen on"));
    run = RunProgram({PAGERFWD_PROGRAM, "--database", "none.db", "web", "--listen", "unix:x"});
    EXPECT_EQ(3, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("none.db"));
}

TEST_F(CliWeb, AnswersThatTheDatabaseIsAway) {
    const std::string token = Token("raise");
    ChildProcess web = Serve();
    web.ReadLine();
    std::filesystem::rename("site.db", "away.db");
    EXPECT_THAT(Ask("POST /api/v1/alarms", token, R"({"text": "x"})"),
                AllOf(StartsWith("HTTP/1.1 503 "), HasSubstr("Retry-After: 5\r\n")));
    std::filesystem::rename("away.db", "site.db");
    EXPECT_THAT(Ask("POST /api/v1/alarms", token, R"({"text": "x"})"), StartsWith("HTTP/1.1 200 "));
}

}  // namespace
