// pagerfwd notify, and the examples of commands, run as the engine would.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "tests/unit/host/cli_fixture.h"
#include "tests/unit/host/files.h"

namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class CliNotify : public CliFixture {
 protected:
    static void MakeSiteWith(const std::string& command) {
        MakeSite("[notify]\ncommand = [" + command + "]\n[[port]]\nname = \"COM 1\"\n");
    }
    // A program that keeps what it is given: its arguments, and its input.
    static void MakeFake(const char* name) {
        WriteFile(name, "#!/bin/sh\n{ printf '<%s>' \"$@\"; echo; cat; } >given\n");
        chmod(name, 0755);
    }
    static std::string Given() { return ReadFile("given"); }
};

TEST_F(CliNotify, ShowsTheCommandAndAnExample) {
    MakeSiteWith("\"/bin/sh\", \"-c\", \"cat >given\"");
    const ProgramRun run = Run({"notify"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.out,
                StartsWith("the command: \"/bin/sh\" \"-c\" \"cat >given\"\nan example: {"));
    EXPECT_EQ("", Given()) << "it wasn't run";
}

TEST_F(CliNotify, TriesTheCommand) {
    MakeSiteWith("\"/bin/sh\", \"-c\", \"cat >given\"");
    const ProgramRun run = Run({"notify", "--try"});
    EXPECT_EQ(0, run.exit_code) << run.out << run.err;
    EXPECT_THAT(run.out, EndsWith("\ntold\n"));
    const auto event = nlohmann::json::parse(Given());
    EXPECT_EQ("line-sick", event["kind"]);
    EXPECT_EQ("this is only a try: no line is sick", event["text"]);
    EXPECT_EQ((folder.Path() / "site.db").string(), event["database"]);
}

TEST_F(CliNotify, SaysWhyTheCommandFails) {
    MakeSiteWith("\"/bin/sh\", \"-c\", \"exit 7\"");
    ProgramRun run = Run({"notify", "--try"});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_THAT(run.out, EndsWith("\nnot told: it ended with status 7\n"));
    MakeSiteWith("\"/none-such\"");
    run = Run({"notify", "--try"});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_THAT(run.out, HasSubstr("not told: it can't be started: No such file"));
}

TEST_F(CliNotify, SaysThatNobodyIsTold) {
    MakeSiteWith("");
    const ProgramRun run = Run({"notify", "--try"});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_EQ("nobody is told: the site file has no [notify] command\n", run.out);
}

TEST_F(CliNotify, MailsByTheExample) {
    MakeFake("sendmail");
    setenv("SENDMAIL", (folder.Path() / "sendmail").c_str(), 1);
    MakeSiteWith("\"" EXAMPLES "/notify/mail\", \"duty@example.org\"");
    const ProgramRun run = Run({"notify", "--try"});
    unsetenv("SENDMAIL");
    EXPECT_EQ(0, run.exit_code) << run.out << run.err;
    EXPECT_THAT(Given(), AllOf(StartsWith("<-i><--><duty@example.org>\nTo: duty@example.org\n"
                                          "Subject: pagerfwd on "),
                               HasSubstr(": line-sick\n"),
                               HasSubstr("\n\nthis is only a try: no line is sick\n\nat "),
                               HasSubstr(", database /")));
}

TEST_F(CliNotify, LogsByTheExample) {
    MakeFake("logger");
    setenv("LOGGER", (folder.Path() / "logger").c_str(), 1);
    MakeSiteWith("\"" EXAMPLES "/notify/log\"");
    const ProgramRun run = Run({"notify", "--try"});
    unsetenv("LOGGER");
    EXPECT_EQ(0, run.exit_code) << run.out << run.err;
    EXPECT_THAT(Given(),
                StartsWith("<-t><pagerfwd-notice><-p><daemon.warning>\n{\"kind\":\"line-sick\","));
}

// --- The example that answers Icinga, which a server of a few lines stands for: it keeps one
// request.

class AnswersToIcinga : public CliNotify {
 protected:
    // What Icinga is asked after a notice; empty: nothing.
    static std::string Asked(const std::string& notice) {
        WriteFile(
            "icinga.pl",
            "use IO::Socket::INET; $| = 1;"
            "my $s = IO::Socket::INET->new(Listen => 1, LocalAddr => '127.0.0.1') or die;"
            "print $s->sockport, \"\\n\"; alarm 20; my $c = $s->accept; my ($all, $n) = ('', 0);"
            "while (<$c>) { $all .= $_; $n = $1 if /^Content-Length: (\\d+)/i; last if /^\\r$/ }"
            "read $c, my $body, $n;"
            "print $c \"HTTP/1.1 200 OK\\r\\nContent-Length: 2\\r\\n\\r\\n{}\";"
            "open my $f, '>', 'asked'; print $f $all, $body;");
        WriteFile("notice", notice);
        ChildProcess icinga({"/usr/bin/perl", "icinga.pl"});
        const std::string port = icinga.ReadLine();
        const ProgramRun run =
            RunProgram({"/bin/sh", "-c",
                        "ICINGA=http://127.0.0.1:" + port.substr(0, port.find('\n')) +
                            " ICINGA_USER=pages ICINGA_PASSWORD=secret ICINGA_SETTINGS=/dev/null "
                            "exec " EXAMPLES "/notify/icinga <notice"});
        EXPECT_EQ(0, run.exit_code) << run.err;
        if (notice.find("\"line-sick\"") == std::string::npos) {
            icinga.Finish();
        }
        return ReadFile("asked");
    }
    static std::string Notice(const std::string& kind, const std::string& key) {
        return "{\"kind\": \"" + kind +
               "\", \"over\": false, \"text\": \"alarm 7 was acknowledged by maria\", \"source\":"
               " \"monitoring\", \"key\": \"" +
               key + "\"}";
    }
    static nlohmann::json BodyOf(const std::string& asked) {
        return nlohmann::json::parse(asked.substr(asked.find("\r\n\r\n") + 4));
    }
};

TEST_F(AnswersToIcinga, AcknowledgeTheServiceThere) {
    const std::string asked = Asked(Notice("acknowledged", "web1!disk"));
    EXPECT_THAT(asked, AllOf(StartsWith("POST /v1/actions/acknowledge-problem HTTP/1.1\r\n"),
                             HasSubstr("Authorization: Basic cGFnZXM6c2VjcmV0\r\n")));
    const nlohmann::json body = BodyOf(asked);
    EXPECT_EQ("Service", body["type"]);
    EXPECT_EQ("host.name == h && service.name == s", body["filter"]);
    EXPECT_EQ("web1", body["filter_vars"]["h"]);
    EXPECT_EQ("disk", body["filter_vars"]["s"]);
    EXPECT_EQ("alarm 7 was acknowledged by maria", body["comment"]);
}

TEST_F(AnswersToIcinga, CommentOnTheHostThere) {
    const std::string asked = Asked(Notice("delivered", "web1!"));
    EXPECT_THAT(asked, StartsWith("POST /v1/actions/add-comment HTTP/1.1\r\n"));
    EXPECT_EQ("Host", BodyOf(asked)["type"]);
    EXPECT_EQ("host.name == h", BodyOf(asked)["filter"]);
}

TEST_F(AnswersToIcinga, AreNoneWhereIcingaDidNotAsk) {
    EXPECT_EQ("", Asked(R"({"kind": "line-sick", "over": false, "text": "x"})"));
}

}  // namespace
