// The server of a shared world, and clients that the test plays: what an ill one says harms nobody.
#include "sim/server/world_server.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "sim/runner/processes.h"
#include "sim/server/local_socket.h"

using namespace std::chrono_literals;

namespace pagersim {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;

class SilentEnd final : public FarEnd {
 public:
    void Opened(Wire&) override {}
    void Heard(std::string_view) override {}
    void SettingsChanged(const termios&) override {}
    void Closed() override {}
};

// A process's end of its connection.
class Client {
 public:
    explicit Client(Descriptor link) : link_(std::move(link)) {}

    void Say(const Request& request) const { SayBytes(&request, sizeof request); }
    void SayBytes(const void* bytes, std::size_t size) const {
        EXPECT_EQ(static_cast<ssize_t>(size), send(link_.Number(), bytes, size, 0));
    }

    // The answer, if it has come; or, with `flags` 0, when it comes.
    std::optional<Reply> Hear(int flags = MSG_DONTWAIT) const {
        Reply reply{};
        const ssize_t count = recv(link_.Number(), &reply, sizeof reply, flags);
        return count == sizeof reply ? std::optional<Reply>(reply) : std::nullopt;
    }

    // What comes with the first answer.
    Descriptor HearClock() const {
        Reply reply{};
        iovec part = {&reply, sizeof reply};
        msghdr message{};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        alignas(cmsghdr) std::array<char, 256> control{};
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        EXPECT_GT(recvmsg(link_.Number(), &message, 0), 0);
        std::array<int, 2> given = {-1, -1};
        for (cmsghdr* each = CMSG_FIRSTHDR(&message); each != nullptr;
             each = CMSG_NXTHDR(&message, each)) {
            if (each->cmsg_type == SCM_RIGHTS) {
                std::memcpy(given.data(), CMSG_DATA(each), sizeof given);
            }
        }
        close(given[0]);
        return Descriptor(given[1]);
    }

 private:
    Descriptor link_;
};

Request Ask(Question question, uint32_t number = 0) {
    Request request{};
    request.ask = question;
    request.number = number;
    return request;
}

Request AskLine(Question question, uint32_t connection = 0) {
    Request request = Ask(question);
    request.com = 1;
    request.connection = connection;
    return request;
}

// Until somebody else does something.
Request RestForEver() {
    Request request = Ask(Question::kRest);
    request.deadline = kNever.count();
    return request;
}

class WorldServerTest : public ::testing::Test {
 protected:
    WorldServerTest() : ready_(eventfd(1, EFD_CLOEXEC)) {}
    ~WorldServerTest() override { std::filesystem::remove_all(folder_); }

    Client Join() {
        Client client(world_.Invite());
        client.Say(Ask(Question::kStart));
        return client;
    }

    // A command that comes of itself.
    Client JoinAs(const std::string& name) {
        Client client(world_.Invite());
        const Request join = Ask(Question::kJoin);
        const std::string header(reinterpret_cast<const char*>(&join), sizeof join);
        client.SayBytes((header + name).data(), header.size() + name.size());
        return client;
    }

    // A process that begins in the world, and then does this.
    template <typename Deed>
    pid_t ChildThat(Deed deed) {
        const Client client(world_.Invite());
        const pid_t child = fork();
        if (child == 0) {
            client.Say(Ask(Question::kStart));
            deed(client);
        }
        return child;
    }

    // As far as it goes without waiting.
    void Serve() { world_.Serve(ready_.Number()); }

    static std::string Folder() {
        std::string pattern = "/tmp/world-server-test-XXXXXX";
        return mkdtemp(pattern.data());
    }

    const std::string folder_ = Folder();
    const Descriptor ready_;
    WorldServer world_{folder_ + "/world", 0, 10ms};
};

// Runs until it is killed.
pid_t Child() {
    const pid_t child = fork();
    if (child == 0) {
        for (;;) {
            pause();
        }
    }
    return child;
}

int EndOf(pid_t child) {
    int status = 0;
    EXPECT_EQ(child, waitpid(child, &status, 0));
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

// Else what is done to those left behind would be done to all that its user runs.
TEST_F(WorldServerTest, AProcessIsTheOneThatSpeaksWhateverNumberItSays) {
    const Client client(world_.Invite());
    client.Say(Ask(Question::kStart, static_cast<uint32_t>(-1)));
    Serve();
    EXPECT_TRUE(client.Hear());
    EXPECT_THAT(world_.Participants(), ElementsAre(getpid()));
}

TEST_F(WorldServerTest, OnlyOnesOwnChildrenComeIn) {
    const Client parent = Join();
    Serve();
    const Client link(world_.Invite());
    for (const int stranger : {-1, 0, 1}) {
        parent.Say(Ask(Question::kChild, static_cast<uint32_t>(stranger)));
        Serve();
        EXPECT_THAT(world_.Participants(), ElementsAre(getpid())) << stranger;
    }
    const pid_t child = Child();
    parent.Say(Ask(Question::kChild, static_cast<uint32_t>(child)));
    Serve();
    EXPECT_THAT(world_.Participants(), UnorderedElementsAre(getpid(), child));
    kill(child, SIGKILL);
    EndOf(child);
}

TEST_F(WorldServerTest, AChildComesInByTheLinkOfItsParentAlone) {
    const Client parent = Join();
    Serve();
    const Descriptor linked(eventfd(0, EFD_CLOEXEC));
    const pid_t child = fork();
    if (child == 0) {
        const Descriptor own(ConnectTo(folder_ + "/world"));
        eventfd_write(linked.Number(), 1);
        for (;;) {
            pause();
        }
    }
    eventfd_t done = 0;
    eventfd_read(linked.Number(), &done);
    parent.Say(Ask(Question::kChild, static_cast<uint32_t>(child)));
    Serve();
    EXPECT_THAT(world_.Participants(), ElementsAre(getpid()));
    kill(child, SIGKILL);
    EndOf(child);
}

TEST_F(WorldServerTest, OfTwoCommandsOfOneNameTheOneThatCameFirstBegins) {
    world_.Await(2);
    const Client first = JoinAs("same");
    const Client second = JoinAs("same");
    Serve();
    second.Say(Ask(Question::kStart));
    first.Say(Ask(Question::kStart));
    Serve();
    EXPECT_TRUE(first.Hear());
    EXPECT_FALSE(second.Hear());
}

TEST_F(WorldServerTest, OneIsNotAsleepWhileASignalIsOnItsWay) {
    const auto to_process = [](pid_t pid) { kill(pid, SIGUSR1); };
    const auto to_thread = [](pid_t pid) { syscall(SYS_tgkill, pid, pid, SIGUSR1); };
    for (void (*const send)(pid_t) : {+to_process, +to_thread}) {
        Member member;
        member.pid = fork();
        if (member.pid == 0) {
            raise(SIGSTOP);
            _exit(0);
        }
        waitpid(member.pid, nullptr, WUNTRACED);
        EXPECT_TRUE(IsAsleep(member));
        send(member.pid);
        EXPECT_FALSE(IsAsleep(member));
        kill(member.pid, SIGKILL);
        EndOf(member.pid);
    }
}

TEST_F(WorldServerTest, OneIsAsleepAlsoWhenItsFirstThreadHasEnded) {
    Member member;
    member.pid = fork();
    if (member.pid == 0) {
        pthread_t other{};
        pthread_create(
            &other, nullptr,
            [](void*) -> void* {
                for (;;) {
                    pause();
                }
            },
            nullptr);
        syscall(SYS_exit, 0);  // of this thread
    }
    const auto is_there = [&] {  // the other thread, and nothing of the first but its name
        const std::string task = "/proc/" + std::to_string(member.pid) + "/task/";
        std::ifstream status(task + std::to_string(member.pid) + "/status");
        const std::string text(std::istreambuf_iterator<char>(status), {});
        return text.find("State:\tZ") != std::string::npos;
    };
    while (!is_there()) {
        std::this_thread::yield();
    }
    constexpr int kEnough = 100'000;
    int looks = 0;
    while (!IsAsleep(member) && ++looks < kEnough) {
    }
    EXPECT_LT(looks, kEnough);
    kill(member.pid, SIGKILL);
    EndOf(member.pid);
}

TEST_F(WorldServerTest, ATimeBeyondAllTimeIsNotBelieved) {
    const Client client = Join();
    Serve();
    ClockPage clock(client.HearClock().Number());
    clock.Set(kNever);
    client.Say(RestForEver());
    Serve();
    EXPECT_EQ(0us, world_.Now());
}

TEST_F(WorldServerTest, WhatOneHasGoneOnByItselfIsNotLostWithIt) {
    const pid_t child = ChildThat([](const Client& client) {
        ClockPage(client.HearClock().Number()).Set(3s);
        _exit(0);
    });
    while (waitpid(child, nullptr, WNOHANG) == 0) {
        world_.Serve(-1);
    }
    Serve();
    EXPECT_EQ(3s, world_.Now());
}

// A parent can see an end before the world does.
TEST_F(WorldServerTest, TimeGoesOnWhereItsEndIsNoticedLate) {
    const pid_t last = ChildThat([](const Client& client) {
        client.Hear(0);
        client.Say(RestForEver());
        client.Hear(0);
        _exit(0);
    });
    const Client other = Join();
    other.Say(RestForEver());  // else none would notice as long as it has the turn
    Serve();
    world_.StopAtEndOf(last);
    kill(last, SIGKILL);
    EndOf(last);
    world_.Resume();
    while (world_.Participants().size() > 1) {
        world_.Serve(-1);
    }
    Request nap = Ask(Question::kRest);
    nap.deadline = Micros(3s).count();
    other.Say(nap);
    for (int i = 0; i < 100 && world_.Now() == 0us; ++i) {
        world_.Serve(-1);
    }
    EXPECT_EQ(3s, world_.Now());
}

TEST_F(WorldServerTest, WhatIsNoQuestionIsPassedOver) {
    const Client client = Join();
    client.SayBytes("???", 3);
    client.Say(Ask(static_cast<Question>(4711)));
    Serve();
    EXPECT_TRUE(client.Hear()) << "to what it said first";
    EXPECT_FALSE(client.Hear());
    client.Say(Ask(Question::kSignal));
    Serve();
    EXPECT_TRUE(client.Hear());
}

TEST_F(WorldServerTest, OneClosesOnlyWhatItHasOpened) {
    world_.AddLine(1, std::make_unique<SilentEnd>());
    const Client owner = Join();
    owner.Say(AskLine(Question::kOpen));
    owner.Say(RestForEver());
    Serve();
    const uint32_t connection = world_.LineOn(1)->Connection();
    ASSERT_NE(0U, connection);
    const Client other = Join();
    other.Say(AskLine(Question::kClose, connection));
    Serve();
    EXPECT_EQ(connection, world_.LineOn(1)->Connection());
    EXPECT_TRUE(other.Hear());
    EXPECT_EQ(EBADF, other.Hear().value_or(Reply{}).error);
}

TEST_F(WorldServerTest, OneClosesWhatItHasOpenedOnce) {
    world_.AddLine(1, std::make_unique<SilentEnd>());
    const Client client = Join();
    client.Say(AskLine(Question::kOpen));
    Serve();
    EXPECT_TRUE(client.Hear()) << "to its start";
    const uint32_t connection = client.Hear().value_or(Reply{}).connection;
    for (const int error : {0, EBADF}) {
        client.Say(AskLine(Question::kClose, connection));
        Serve();
        EXPECT_EQ(error, client.Hear().value_or(Reply{}).error);
    }
}

TEST_F(WorldServerTest, CanBeJoinedWhereThereIsNoStandardInput) {
    const int input = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    EXPECT_NO_THROW(Join());
    dup2(input, STDIN_FILENO);
    close(input);
}

// It takes no part, so that time stands still beside it.
TEST_F(WorldServerTest, WhatIsLeftBehindIsNotAwaitedWhereTimeStandsStill) {
    const std::string pid_file = folder_ + "/pid";
    Processes processes(world_, {});
    processes.Start({"/bin/sh", "-c", "echo $$ >" + pid_file + "; exec sleep 1000"});
    processes.AwaitOthers(100ms);
    pid_t left = 0;
    while (!(std::ifstream(pid_file) >> left)) {
        std::this_thread::yield();
    }
    EXPECT_EQ(0, waitpid(left, nullptr, WNOHANG)) << "and left alone";
    kill(left, SIGKILL);
    EndOf(left);
}

// Waits for ever, as one does who waits for a lock.
[[noreturn]] void WaitForEver(const Client& client) {
    client.Hear(0);
    client.Say(RestForEver());
    const auto turn = client.Hear(0);
    client.Say(RestForEver());
    for (;;) {
        if (!turn || turn->why != Why::kTell) {
            _exit(1);
        }
        pause();
    }
}

// As the system has it, which cuts it.
std::string OwnName() {
    std::string name;
    std::getline(std::ifstream("/proc/self/comm"), name);
    return name;
}

TEST_F(WorldServerTest, AllAreAskedAndEndedWhenTheyWaitForEachOtherForEver) {
    world_.SetPatience(120ms);
    const pid_t child = ChildThat([](const Client& client) { WaitForEver(client); });
    ::testing::internal::CaptureStderr();
    int status = 0;
    constexpr int kEnough = 200;
    for (int i = 0; i < kEnough && waitpid(child, &status, WNOHANG) == 0; ++i) {
        world_.Serve(-1);
    }
    EXPECT_THAT(::testing::internal::GetCapturedStderr(),
                HasSubstr("pagersim: after 0 ms all threads wait for each other, for ever:\n"
                          " process " +
                          std::to_string(child) + " (" + OwnName() + ")\n"));
    EXPECT_EQ(SIGABRT, WIFSIGNALED(status) ? WTERMSIG(status) : 0);
}

}  // namespace
}  // namespace pagersim
