// Small real commands, as the node runs those of its site.
#include "host/process/background_command.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "tests/support/temp_dir.h"
#include "tests/unit/host/files.h"

namespace host {
namespace {

using ::testing::HasSubstr;

class ABackgroundCommand : public ::testing::Test {
 protected:
    static constexpr std::time_t kStart = 1000;

    // Waits until the process can be reaped, and leaves that to Look.
    void WaitForItsEnd() const {
        siginfo_t info{};
        waitid(P_PID, static_cast<id_t>(command.Process()), &info, WEXITED | WNOWAIT);
    }

    std::string RunToItsEnd(const std::vector<std::string>& words, const std::string& input = "") {
        const std::string why_not = command.Start(words, input, kStart);
        if (!why_not.empty()) {
            return why_not;
        }
        WaitForItsEnd();
        return command.Look(kStart).value_or("still runs");
    }

    const test_support::TempDir folder;
    BackgroundCommand command;
};

TEST_F(ABackgroundCommand, GetsTheTextOnItsStandardInput) {
    const std::string text =
        "{\"text\": \"J\xC3\xBCrgen; $(rm -r /) 'x'\"}\n" + std::string(200000, 'x');
    EXPECT_EQ("", RunToItsEnd({"cp", "/dev/stdin", "copy"}, text));
    EXPECT_EQ(text, ReadFile("copy"));
}

TEST_F(ABackgroundCommand, GetsItsInputFromNoFileThatOthersCouldOpen) {
    EXPECT_EQ("", RunToItsEnd({"/bin/sh", "-c", "readlink /proc/$$/fd/0 >name"}, "text"));
    EXPECT_EQ("/memfd:input (deleted)\n", ReadFile("name"));
}

TEST_F(ABackgroundCommand, GetsItsArgumentsAsTheyAre) {
    EXPECT_EQ(
        "", RunToItsEnd({"/bin/sh", "-c", "printf '%s|' \"$@\" >words", "sh", "a b", "$HOME", ""}));
    EXPECT_EQ("a b|$HOME||", ReadFile("words"));
}

TEST_F(ABackgroundCommand, IsNotToldThePasswordOfTheDatabase) {
    const std::vector<std::string> show = {
        "/bin/sh", "-c", "echo \"$PAGERFWD_DATABASE$PAGERFWD_LINE_DATABASE\" >>names"};
    setenv("PAGERFWD_DATABASE", "postgresql://ann:secret@db/site", 1);
    setenv("PAGERFWD_LINE_DATABASE", "postgresql://line:secret@db/site", 1);
    EXPECT_EQ("", RunToItsEnd(show));
    setenv("PAGERFWD_DATABASE", "postgresql://ann@db/site", 1);
    EXPECT_EQ("", RunToItsEnd(show));
    unsetenv("PAGERFWD_DATABASE");
    unsetenv("PAGERFWD_LINE_DATABASE");
    EXPECT_EQ("\npostgresql://ann@db/site\n", ReadFile("names"));
}

TEST_F(ABackgroundCommand, HasFailedWhereItSaysSo) {
    EXPECT_EQ("ended with status 3", RunToItsEnd({"/bin/sh", "-c", "exit 3"}));
    EXPECT_THAT(RunToItsEnd({"/bin/sh", "-c", "kill -9 $$"}), HasSubstr("ended by signal "));
    EXPECT_THAT(RunToItsEnd({"./there-is-none"}), HasSubstr("can't be started: No such file"));
    WriteFile("plain", "no program");
    EXPECT_THAT(RunToItsEnd({"./plain"}), HasSubstr("can't be started: Permission denied"));
}

TEST_F(ABackgroundCommand, MayLeaveItsInputUnread) {
    EXPECT_EQ("", RunToItsEnd({"true"}, std::string(1 << 20, 'x')));
}

TEST_F(ABackgroundCommand, FindsNoSignalBlockedOrIgnored) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, &before);
    EXPECT_EQ("", RunToItsEnd({"/bin/sh", "-c", "grep -q 'SigBlk:.0*$' /proc/self/status"}));
    sigprocmask(SIG_SETMASK, &before, nullptr);
}

TEST_F(ABackgroundCommand, IsKilledWithItsGroupAtTheLimit) {
    WriteFile("hang", "#!/bin/sh\necho $$ >began\nsleep 1000 &\nwait\n");
    ASSERT_EQ("", command.Start({"/bin/sh", "hang"}, "", kStart));
    const pid_t group = command.Process();
    EXPECT_EQ(std::nullopt, command.Look(kStart + BackgroundCommand::kLimit - 1));
    EXPECT_EQ(0, kill(-group, 0)) << "it lives";
    EXPECT_EQ(std::nullopt, command.Look(kStart + BackgroundCommand::kLimit));
    WaitForItsEnd();
    EXPECT_EQ("took longer than 30 s, and was killed",
              command.Look(kStart + BackgroundCommand::kLimit));
    EXPECT_EQ(-1, command.Process());
}

TEST_F(ABackgroundCommand, IsLeftAloneBeforeTheLimit) {
    ASSERT_EQ(0, mkfifo("word", 0600));
    ASSERT_EQ("", command.Start({"/bin/sh", "-c", "read end <word"}, "", kStart));
    EXPECT_EQ(std::nullopt, command.Look(kStart + BackgroundCommand::kLimit - 1));
    const int word = open("word", O_RDWR | O_CLOEXEC);
    EXPECT_EQ(1, write(word, "\n", 1));
    WaitForItsEnd();
    close(word);
    EXPECT_EQ("", command.Look(kStart + BackgroundCommand::kLimit));
}

TEST_F(ABackgroundCommand, DoesNotOutliveWhoStartedIt) {
    pid_t process = -1;
    {
        BackgroundCommand other;
        ASSERT_EQ("", other.Start({"sleep", "1000"}, "", kStart));
        process = other.Process();
    }
    EXPECT_EQ(-1, kill(process, 0));
    EXPECT_EQ(ESRCH, errno);
}

}  // namespace
}  // namespace host
