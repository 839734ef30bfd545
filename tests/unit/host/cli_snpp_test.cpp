// pagerfwd web, spoken to over SNPP: by clients of others, and beside HTTP.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "tests/unit/host/cli_fixture.h"
#include "tests/unit/host/raw_client.h"

namespace {

using ::testing::AnyOf;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

class CliSnpp : public CliFixture {
 protected:
    CliSnpp() { MakeSite(); }

    // more: options; to where SNPP is spoken.
    static std::string Serve(std::optional<ChildProcess>& web, const std::string& more) {
        web.emplace(std::vector<std::string>{"/bin/sh", "-c",
                                             "exec " PAGERFWD_PROGRAM
                                             " --database site.db web --listen unix:web.sock " +
                                                 more + " 2>&1"});
        web->ReadLine();
        const std::string line = web->ReadLine();
        const std::string before = "serving SNPP on ";
        return line.substr(line.find(before) + before.size());
    }
    static std::string Token() {
        const std::string out = Run({"token", "add", "scada", "--may", "raise"}).out;
        return out.substr(0, out.find('\n'));
    }
    static nlohmann::json Alarms() {
        return nlohmann::json::parse(Run({"alarm", "list", "--json"}).out);
    }
    // A client that Debian has. code: what it does with its session, $s.
    static std::string RunClient(const std::string& address, const std::string& code) {
        const ProgramRun run = RunProgram({"/usr/bin/perl", "-MNet::SNPP", "-e",
                                           "my $s = Net::SNPP->new('127.0.0.1', Port => " +
                                               address.substr(address.rfind(':') + 1) +
                                               ") or die 'no session'; " + code});
        EXPECT_EQ(0, run.exit_code) << run.err;
        return run.out;
    }
};

TEST_F(CliSnpp, IsSpokenByAClientOfOthers) {
    std::optional<ChildProcess> web;
    const std::string address = Serve(web, "--snpp 127.0.0.1:0 --snpp-from 127.0.0.0/8");
    EXPECT_EQ("", RunClient(address,
                            "$s->send(Pager => 'duty', Message => 'No water') or die $s->message;"
                            "$s->quit;"));
    EXPECT_EQ("No water", Alarms()[0]["details"]);
    EXPECT_EQ("127.0.0.1", Alarms()[0]["server"]);
}

TEST_F(CliSnpp, TellsAClientOfOthersWhatBecameOfItsMessage) {
    std::optional<ChildProcess> web;
    const std::string address = Serve(web, "--snpp 127.0.0.1:0 --snpp-from 127.0.0.1");
    const std::string told = RunClient(
        address,
        "$s->two_way; $s->pager_id('duty') or die; $s->data(\"Pump 3\\nstands still\") or die;"
        "my @sent = $s->send_two_way; my @is = $s->message_status(@sent[0, 1]); $s->quit;"
        "print join('|', $sent[3], @is);");
    EXPECT_THAT(told, MatchesRegex("9\\|1\\|[0-9]+\\|.0\\|being paged\\|960")) << told;
    EXPECT_EQ("Pump 3 stands still", Alarms()[0]["details"]);
}

TEST_F(CliSnpp, WantsATokenOfWhoIsNotKnown) {
    const std::string token = Token();
    std::optional<ChildProcess> web;
    EXPECT_EQ("unix:snpp.sock", Serve(web, "--snpp unix:snpp.sock"));
    const RawClient client("snpp.sock");
    client.Send("PAGE duty\r\nLOGIN " + token + "\r\nPAGE duty\r\nMESS x\r\nSEND\r\nQUIT\r\n");
    EXPECT_THAT(client.ReceiveAll(),
                MatchesRegex("220 .*\r\n550 LOGIn first\r\n250 OK\r\n250 OK\r\n250 OK\r\n"
                             "250 OK, it is kept.*\r\n221 .*\r\n"));
    EXPECT_EQ("scada", Alarms()[0]["server"]);
    EXPECT_EQ("being paged", Alarms()[0]["state"]) << "no engine has to take it up first";
}

TEST_F(CliSnpp, EndsWithTheProcess) {
    std::optional<ChildProcess> web;
    Serve(web, "--snpp unix:snpp.sock");
    const RawClient idle("snpp.sock");
    EXPECT_THAT(idle.ReceiveUntil("\n"), StartsWith("220 "));
    kill(web->Number(), SIGTERM);
    // As the end finds the server: waiting for a line, or not quite behind its greeting yet.
    EXPECT_THAT(idle.ReceiveAll(), AnyOf("", "421 Closing: the server ends\r\n"));
    EXPECT_THAT(web->ReadLine(), HasSubstr("ended"));
    EXPECT_EQ(0, web->Finish());
}

TEST_F(CliSnpp, KnowsNoAddressThatIsNone) {
    const ProgramRun run = Run({"web", "--snpp", "unix:x", "--snpp-from", "192.0.2.0/33"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("192.0.2.0/33: no address or network"));
}

// --- Sockets that the service manager has opened.

class SocketActivation : public CliSnpp {
 protected:
    static std::optional<ChildProcess> Activated(const std::string& names) {
        return std::optional<ChildProcess>(
            std::in_place,
            std::vector<std::string>{
                "/bin/sh", "-c",
                "exec systemd-socket-activate -l $PWD/web.sock -l $PWD/snpp.sock --fdname=" +
                    names + " " PAGERFWD_PROGRAM " --database site.db web 2>&1"});
    }
    // Up to a line that says so.
    static void Await(ChildProcess& process, const std::string& what) {
        std::string line = process.ReadLine();
        while (!line.empty() && line.find(what) == std::string::npos) {
            line = process.ReadLine();
        }
        EXPECT_THAT(line, HasSubstr(what));
    }
};

TEST_F(SocketActivation, ServesEachSocketByItsName) {
    std::optional<ChildProcess> web = Activated("http:snpp");
    Await(*web, "snpp.sock");
    const RawClient snpp("snpp.sock");
    EXPECT_THAT(snpp.ReceiveUntil("\n"), StartsWith("220 ")) << "it comes with the first client";
    const RawClient http("web.sock");
    http.Send("GET /api/v1/openapi.json HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
    EXPECT_THAT(http.ReceiveAll(), StartsWith("HTTP/1.1 200 "));
}

}  // namespace
