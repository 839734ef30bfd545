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

}  // namespace
