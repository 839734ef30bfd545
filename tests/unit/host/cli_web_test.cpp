// pagerfwd web: the process as a whole.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <filesystem>

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
    static int Connected() {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strcpy(&address.sun_path[0], "web.sock");
        const int made = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(0, connect(made, reinterpret_cast<const sockaddr*>(&address), sizeof address));
        return made;
    }
    static std::string Ask(const std::string& first_line, const std::string& token,
                           const std::string& body = "") {
        const int made = Connected();
        const std::string request = first_line + " HTTP/1.1\r\nHost: x\r\nConnection: close\r\n" +
                                    "Authorization: Bearer " + token +
                                    "\r\nContent-Length: " + std::to_string(body.size()) +
                                    "\r\n\r\n" + body;
        EXPECT_EQ(static_cast<ssize_t>(request.size()),
                  send(made, request.data(), request.size(), MSG_NOSIGNAL));
        std::string answer;
        char buffer[4096];
        for (ssize_t count = 0; (count = recv(made, buffer, sizeof buffer, 0)) > 0;) {
            answer.append(buffer, static_cast<size_t>(count));
        }
        close(made);
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
