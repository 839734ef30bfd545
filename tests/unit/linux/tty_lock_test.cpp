// Lock files of serial lines, in all their forms. fchown is wrapped at link time: only root could
// see its effect.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "linux/tty.h"
#include "linux/tty_lock.h"
#include "linux/win_system.h"
#include "sim/testing.h"
#include "tests/support/without_descriptors.h"
#include "tests/unit/linux/temp_folder.h"
#include "tests/unit/linux/tty_fixture.h"

namespace {

using namespace std::chrono_literals;
using pagersim::VirtualClock;

using Owner = std::pair<uid_t, gid_t>;
std::vector<Owner> givenTo;  // by the calls of fchown of this test

}  // namespace

extern "C" {
int __real_fchown(int fd, uid_t user, gid_t group);

int __wrap_fchown(int fd, uid_t user, gid_t group) {
    givenTo.emplace_back(user, group);
    return __real_fchown(fd, user, group);
}
}

namespace {

// Runs a check in a process of its own; true when it holds there.
bool HoldsInAChild(const std::function<bool()>& check) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(check() ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(child, waitpid(child, &status, 0));
    return status == 0;
}

// The number of a process that no longer exists.
std::string EndedProcess() {
    const pid_t child = fork();
    if (child == 0) {
        _exit(0);
    }
    EXPECT_EQ(child, waitpid(child, nullptr, 0));
    return std::to_string(child);
}

std::string TenColumns(pid_t number) {
    char text[16];
    snprintf(text, sizeof text, "%10d\n", static_cast<int>(number));
    return text;
}

std::string RawBytes(int32_t number) {
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

struct LockTest : testing::Test {
    LockTest() { givenTo.clear(); }

    std::string Prefix() const { return folder / "LCK.."; }
    std::string File(const std::string& name = "ttyX1") const { return Prefix() + name; }

    bool Take(const char* options = nullptr, const char* device = "/dev/ttyX1") {
        return lock.Take(device, Prefix().c_str(), options);
    }

    TempFolder folder;
    TtyLock lock;
};

TEST_F(LockTest, WithoutAPrefixThereIsNone) {
    EXPECT_TRUE(lock.Take("/dev/ttyX1", nullptr, nullptr));
    EXPECT_TRUE(std::filesystem::is_empty(folder / ""));
}

TEST_F(LockTest, HoldsTheProcessNumberInTenColumns) {
    ASSERT_TRUE(Take());
    EXPECT_EQ(TenColumns(getpid()), ReadText(File()));
}

TEST_F(LockTest, IsReadableForAllWhateverTheMask) {
    const mode_t mask = umask(077);
    ASSERT_TRUE(Take());
    umask(mask);
    struct stat status {};
    ASSERT_EQ(0, stat(File().c_str(), &status));
    EXPECT_EQ(0644U, status.st_mode & 07777);
    EXPECT_EQ(geteuid(), status.st_uid);
    EXPECT_EQ(getegid(), status.st_gid);
}

// A shared folder may hand down its own group.
TEST_F(LockTest, IsGivenToTheEffectiveUserAndGroup) {
    ASSERT_TRUE(Take());
    EXPECT_EQ((std::vector<Owner>{{geteuid(), getegid()}}), givenTo);
}

TEST_F(LockTest, IsRemovedWithTheLock) {
    {
        TtyLock shorter;
        ASSERT_TRUE(shorter.Take("/dev/ttyX1", Prefix().c_str(), nullptr));
        EXPECT_TRUE(Exists(File()));
    }
    EXPECT_FALSE(Exists(File()));
}

TEST_F(LockTest, NameIsTheLastPartOfTheDevice) {
    EXPECT_TRUE(Take(nullptr, "plain"));
    EXPECT_TRUE(Exists(File("plain")));
}

TEST_F(LockTest, CannotBeMadeWithoutItsFolder) {
    EXPECT_FALSE(lock.Take("/dev/ttyX1", (folder / "none/LCK..").c_str(), nullptr));
}

struct OptionCase {
    const char* options;
    const char* name;
    bool binary;
};

TEST_F(LockTest, OptionsChooseNameAndForm) {
    const OptionCase cases[] = {
        {nullptr, "MyTty", false},
        {"", "MyTty", false},
        {"ascii", "MyTty", false},
        {"binary", "MyTty", true},
        {"lower", "mytty", false},
        {"upper", "MYTTY", false},
        {"b", "MyTty", true},
        {"bin", "MyTty", true},
        {"l", "mytty", false},
        {"u", "MYTTY", false},
        {"binary,lower", "mytty", true},
        {"upper, \tbin", "MYTTY", true},
        {"binary,ascii", "MyTty", false},
        {"binary,a", "MyTty", false},
        {"binary,", "MyTty", false},  // an empty item is ascii
        {",binary", "MyTty", true},
        {"lower,upper", "MYTTY", false},
        {"upper,lower", "mytty", false},
        {"binary=0", "MyTty", true},
        {"binaries,lower", "mytty", false},  // no keyword begins so
        {"Binary", "MyTty", false},
        {"b ,l", "mytty", false},
        {"sysv4", "MyTty", false},  // no device of that name
        {"s,b", "MyTty", true},
        {"t,u", "MYTTY", false},
        {"timeout=-5,u", "MYTTY", false},
        {"nonsense,b", "MyTty", true},
    };
    for (const OptionCase& c : cases) {
        SCOPED_TRACE(c.options == nullptr ? "none" : c.options);
        TtyLock taken;
        ASSERT_TRUE(taken.Take("/dev/MyTty", Prefix().c_str(), c.options));
        EXPECT_EQ(c.binary ? RawBytes(getpid()) : TenColumns(getpid()), ReadText(File(c.name)));
    }
}

TEST_F(LockTest, LetterCaseChangesLettersAndNothingElse) {
    {
        TtyLock lower;
        ASSERT_TRUE(lower.Take("@AZ[`az{", Prefix().c_str(), "lower"));
        EXPECT_TRUE(Exists(File("@az[`az{")));
    }
    ASSERT_TRUE(lock.Take("@AZ[`az{", Prefix().c_str(), "upper"));
    EXPECT_TRUE(Exists(File("@AZ[`AZ{")));
}

TEST_F(LockTest, LetterCaseIsTheNamesOnly) {
    ASSERT_TRUE(lock.Take("/dev/MyTty", (folder / "Mixed_").c_str(), "lower"));
    EXPECT_TRUE(Exists(folder / "Mixed_mytty"));
}

TEST_F(LockTest, NameOfDeviceNumbers) {
    const Pty pty;
    struct stat status {};
    ASSERT_EQ(0, stat(pty.Path().c_str(), &status));
    char name[64];
    snprintf(name, sizeof name, "%03u.%03u.%03u", major(status.st_dev), major(status.st_rdev),
             minor(status.st_rdev));
    ASSERT_TRUE(Take("sysv4", pty.Path().c_str()));
    EXPECT_TRUE(Exists(File(name))) << name;
}

TEST_F(LockTest, OnlyACharacterDeviceHasNumbers) {
    WriteText(folder / "file", "");
    ASSERT_TRUE(Take("sysv4", (folder / "file").c_str()));
    EXPECT_TRUE(Exists(File("file")));
}

// Takes the lock while a file with this content is there; when that fails the file must be as it
// was.
bool TakenOver(const std::string& file, const std::string& prefix, const std::string& content,
               const char* options) {
    WriteText(file, content);
    TtyLock lock;
    const bool taken = lock.Take("/dev/ttyX1", prefix.c_str(), options);
    EXPECT_EQ(taken, ReadText(file) != content);
    return taken;
}

TEST_F(LockTest, OfAProcessThatIsGoneIsTakenOver) {
    const std::string ended = EndedProcess();
    EXPECT_TRUE(TakenOver(File(), Prefix(), ended + "\n", nullptr));
    EXPECT_TRUE(TakenOver(File(), Prefix(), "  " + ended + "\n", "ascii"));
    EXPECT_TRUE(TakenOver(File(), Prefix(), ended + " program user\n", nullptr));
    EXPECT_TRUE(TakenOver(File(), Prefix(), RawBytes(std::stoi(ended)), "binary"));
    EXPECT_TRUE(TakenOver(File(), Prefix(), RawBytes(std::stoi(ended)) + "more", "binary"));
    EXPECT_TRUE(TakenOver(File(), Prefix(), "2147483647\n", nullptr)) << "the largest number";
    ASSERT_FALSE(Exists(File()));
    WriteText(File(), ended + "\n");
    ASSERT_TRUE(Take());
    EXPECT_EQ(TenColumns(getpid()), ReadText(File()));
}

TEST_F(LockTest, KeepsDroppingTheLastByte) {
    const std::string ended = EndedProcess();
    EXPECT_TRUE(TakenOver(File(), Prefix(), ended + "#", nullptr));
    // With the last digit it would be the running process.
    const std::string running = std::to_string(getpid());
    EXPECT_FALSE(TakenOver(File(), Prefix(), running + "9", nullptr));
    EXPECT_FALSE(TakenOver(File(), Prefix(), "7", nullptr)) << "one byte is none";
}

TEST_F(LockTest, OnlyThirtyOneBytesAreRead) {
    const std::string ended = EndedProcess();
    const std::string fits = std::string(30 - ended.size(), ' ') + ended;
    EXPECT_TRUE(TakenOver(File(), Prefix(), fits + "\n", nullptr));
    const std::string running = std::to_string(getpid());
    const std::string cut = std::string(30 - running.size(), ' ') + running;
    EXPECT_FALSE(TakenOver(File(), Prefix(), cut + "99\n", nullptr));
    EXPECT_FALSE(TakenOver(File(), Prefix(), std::string(31, ' ') + ended + "\n", nullptr));
}

TEST_F(LockTest, WithoutASensibleNumberIsHeld) {
    const char* const contents[] = {"0\n",  "garbage\n", "\n",           "",
                                    "-5\n", "-1\n",      "4294967297\n", "99999999999999999999\n"};
    for (const char* const content : contents) {
        SCOPED_TRACE(content);
        EXPECT_FALSE(TakenOver(File(), Prefix(), content, nullptr));
    }
    const std::string beyond = std::to_string((1LL << 32) + std::stoi(EndedProcess()));
    EXPECT_FALSE(TakenOver(File(), Prefix(), beyond + "\n", nullptr));
    EXPECT_FALSE(TakenOver(File(), Prefix(), RawBytes(0), "binary"));
    EXPECT_FALSE(TakenOver(File(), Prefix(), RawBytes(-7), "binary"));
    EXPECT_FALSE(TakenOver(File(), Prefix(), RawBytes(INT32_MAX).substr(0, 3), "binary"));
}

TEST_F(LockTest, OfALivingProcessIsHeld) {
    for (const pid_t living : {getpid(), getppid(), pid_t{1}}) {
        SCOPED_TRACE(living);
        EXPECT_FALSE(TakenOver(File(), Prefix(), TenColumns(living), nullptr));
        EXPECT_FALSE(TakenOver(File(), Prefix(), RawBytes(living), "binary"));
    }
}

TEST_F(LockTest, OfAProcessThatMayNotBeProbedIsHeld) {
    WriteText(File(), TenColumns(1));
    ASSERT_EQ(0, chmod((folder / "").c_str(), 0777));
    ASSERT_EQ(0, chmod(File().c_str(), 0666));
    EXPECT_TRUE(HoldsInAChild([this] {
        constexpr uid_t kNobody = 65534;
        // 0 = done; the first process is then another user's.
        const bool changed = geteuid() != 0 || setuid(kNobody) == 0;
        return changed && kill(1, 0) != 0 && errno == EPERM && !Take();
    }));
    EXPECT_EQ(TenColumns(1), ReadText(File()));
}

TEST_F(LockTest, ThatCannotBeReadIsHeld) {
    ASSERT_EQ(0, mkdir(File().c_str(), 0700));
    EXPECT_FALSE(Take());
    EXPECT_FALSE(Take("binary"));
    EXPECT_TRUE(Exists(File()));
}

TEST_F(LockTest, IsMadeAndReadAsDescriptorZeroToo) {
    const test_support::WithoutStandardInput closed;
    WriteText(File(), EndedProcess() + "\n");
    ASSERT_TRUE(Take());
    EXPECT_EQ(TenColumns(getpid()), ReadText(File()));
}

TEST_F(LockTest, LeavesNoDescriptorOpen) {
    const int next = test_support::NextDescriptor();
    WriteText(File(), "0\n");
    EXPECT_FALSE(Take());
    WriteText(File(), EndedProcess() + "\n");
    EXPECT_TRUE(Take());
    EXPECT_EQ(next, test_support::NextDescriptor());
}

TEST_F(LockTest, IsHeldAgainstThisProcessToo) {
    ASSERT_TRUE(Take());
    TtyLock second;
    EXPECT_FALSE(second.Take("/dev/ttyX1", Prefix().c_str(), nullptr));
    EXPECT_TRUE(Exists(File()));
}

TEST_F(LockTest, IsNotLeftBehindWithoutItsNumber) {
    EXPECT_TRUE(HoldsInAChild([this] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit nothing{0, 0};  // a file can be made, but not written
        return setrlimit(RLIMIT_FSIZE, &nothing) == 0 && !Take();
    }));
    EXPECT_FALSE(Exists(File()));
}

struct LockTimeoutTest : LockTest {
    VirtualClock clock;
};

TEST_F(LockTimeoutTest, WithoutATimeoutThereIsOneRound) {
    WriteText(File(), "0\n");
    for (const char* const options : {"timeout=0", "timeout", "timeout=-5", "timeout=soon"}) {
        SCOPED_TRACE(options);
        EXPECT_FALSE(Take(options));
    }
    EXPECT_EQ(0ms, VirtualClock::Now());
}

TEST_F(LockTimeoutTest, HeldLockIsTriedOncePlusTheTimeout) {
    WriteText(File(), "0\n");
    EXPECT_FALSE(Take("timeout=3"));
    EXPECT_EQ(4000ms, VirtualClock::Now()) << "four rounds, a second after each";
    EXPECT_FALSE(Take("t=1"));
    EXPECT_EQ(6000ms, VirtualClock::Now());
    EXPECT_FALSE(Take("t=10"));
    EXPECT_EQ(17000ms, VirtualClock::Now());
}

TEST_F(LockTimeoutTest, LockThatBecomesFreeIsTaken) {
    for (const char* const options : {"timeout=3", "binary, t=3", "timeout=99999999999999999999"}) {
        SCOPED_TRACE(options);
        const auto start = VirtualClock::Now();
        WriteText(File(), "0\n");
        std::thread owner([this] {
            Sleep(1500);
            unlink(File().c_str());
        });
        {
            TtyLock late;
            EXPECT_TRUE(late.Take("/dev/ttyX1", Prefix().c_str(), options));
            EXPECT_EQ(2000ms, VirtualClock::Now() - start);
        }
        owner.join();
    }
}

TEST_F(LockTimeoutTest, LastRoundCounts) {
    WriteText(File(), "0\n");
    std::thread owner([this] {
        Sleep(1500);
        unlink(File().c_str());
    });
    EXPECT_TRUE(Take("timeout=2"));
    owner.join();
}

// The lock as a part of opening a line.

TEST_F(LockTest, IsHeldFromOpenToClose) {
    const Pty pty;
    const std::string name = pty.Path().substr(pty.Path().rfind('/') + 1);
    TtyLine* const line = tty_open(pty.Path().c_str(), Prefix().c_str(), "binary");
    ASSERT_NE(nullptr, line);
    EXPECT_EQ(RawBytes(getpid()), ReadText(File(name)));
    EXPECT_EQ(nullptr, tty_open(pty.Path().c_str(), Prefix().c_str(), "binary"));
    EXPECT_TRUE(Exists(File(name)));
    tty_close(line);
    EXPECT_FALSE(Exists(File(name)));
}

TEST_F(LockTest, IsGivenBackWhenTheDeviceCannotBeOpened) {
    EXPECT_EQ(nullptr, tty_open((folder / "none").c_str(), Prefix().c_str(), nullptr));
    WriteText(folder / "file", "");  // opens, but is no terminal
    EXPECT_EQ(nullptr, tty_open((folder / "file").c_str(), Prefix().c_str(), nullptr));
    EXPECT_FALSE(Exists(File("none")));
    EXPECT_FALSE(Exists(File("file")));
}

}  // namespace
