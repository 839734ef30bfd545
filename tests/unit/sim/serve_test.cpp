// `pagersim serve`: the exchange in real time, with this process as the program that dials in. What
// is waited for comes within milliseconds; the limits are only for when it doesn't.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>

#include "tests/support/planted.h"
#include "tests/support/temp_dir.h"

namespace pagersim {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr std::chrono::seconds kLongest{30};

// A modem and a centre with no time of their own, but for the guard time.
constexpr const char* kExchange = R"([[line]]
port = "COM 1"
digit_ms = 0
training_ms = 0
guard_ms = 60
[[centre]]
name = "tap"
protocol = "tap"
numbers = ["5550101"]
answers_after_ms = 0
response_ms = 0
)";

// Reads from a descriptor until a text has come.
std::string ReadUntil(int descriptor, const std::string& wanted) {
    std::string heard;
    const auto limit = std::chrono::steady_clock::now() + kLongest;
    while (heard.find(wanted) == std::string::npos && std::chrono::steady_clock::now() < limit) {
        pollfd ready = {descriptor, POLLIN, 0};
        char bytes[256];
        if (poll(&ready, 1, 100) > 0) {
            const ssize_t count = read(descriptor, bytes, sizeof bytes);
            if (count <= 0) {
                return heard + (count == 0 ? "<end>" : "<error>");
            }
            heard.append(bytes, static_cast<size_t>(count));
        }
    }
    return heard;
}

// A line that this process has open.
class OpenLine {
 public:
    explicit OpenLine(const std::string& path)
        : descriptor_(open(path.c_str(), O_RDWR | O_NOCTTY)) {
        EXPECT_GE(descriptor_, 0) << path;
    }
    ~OpenLine() { close(descriptor_); }
    OpenLine(const OpenLine&) = delete;
    OpenLine& operator=(const OpenLine&) = delete;

    // What comes back until `wanted` has.
    std::string Say(const std::string& bytes, const std::string& wanted) const {
        EXPECT_EQ(static_cast<ssize_t>(bytes.size()),
                  write(descriptor_, bytes.data(), bytes.size()));
        return ReadUntil(descriptor_, wanted);
    }
    void SetSpeed(speed_t speed) const {
        termios settings{};
        tcgetattr(descriptor_, &settings);
        cfsetspeed(&settings, speed);
        tcsetattr(descriptor_, TCSANOW, &settings);
    }
    int Descriptor() const { return descriptor_; }

 private:
    const int descriptor_;
};

// The server, as a process of its own.
class Served {
 public:
    explicit Served(std::vector<std::string> arguments) {
        int out[2];
        EXPECT_EQ(0, pipe2(out, O_CLOEXEC));
        arguments.insert(arguments.begin(), {test_support::WithPlanted(PAGERSIM), "serve"});
        std::vector<char*> pointers;
        for (std::string& argument : arguments) {
            pointers.push_back(argument.data());
        }
        pointers.push_back(nullptr);
        process_ = fork();
        if (process_ == 0) {
            dup2(out[1], STDOUT_FILENO);
            dup2(out[1], STDERR_FILENO);
            execv(pointers[0], pointers.data());
            _exit(127);
        }
        close(out[1]);
        output_ = out[0];
    }
    ~Served() {
        End(SIGKILL);
        close(output_);
    }
    Served(const Served&) = delete;
    Served& operator=(const Served&) = delete;

    std::string ReadUntil(const std::string& wanted) const {
        return pagersim::ReadUntil(output_, wanted);
    }

    // Returns the exit status; what was said since is in Rest().
    int End(int signal) {
        if (process_ < 0) {
            return -1;
        }
        kill(process_, signal);
        return Wait();
    }
    int Wait() {
        rest_ = ReadUntil("nothing says this");
        int status = 0;
        waitpid(process_, &status, 0);
        process_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    const std::string& Rest() const { return rest_; }

 private:
    pid_t process_ = -1;
    int output_ = -1;
    std::string rest_;
};

class Serve : public ::testing::Test {
 protected:
    static void Write(const std::string& exchange) { std::ofstream("exchange.toml") << exchange; }

    const test_support::TempDir folder;
};

TEST_F(Serve, ProgramThatKnowsNothingOfItSendsAPage) {
    Write(kExchange);
    Served served({"--links", "lines"});
    EXPECT_EQ("COM 1  lines/ttyS0\n", served.ReadUntil("\n"));
    {
        const OpenLine line("lines/ttyS0");
        line.SetSpeed(B2400);
        EXPECT_EQ("ATZ\r\r\nOK\r\n", line.Say("ATZ\r", "OK\r\n"));
        EXPECT_EQ("ATDT5550101\r\r\nCONNECT 2400\r\n", line.Say("ATDT5550101\r", "2400\r\n"));
        EXPECT_EQ("ID=", line.Say("\r", "ID="));
        EXPECT_EQ("\r\x06\r\x1b[p\r", line.Say("\x1bPG1\r", "[p\r"));
        EXPECT_EQ("\r\x06\r", line.Say("\x02"
                                       "123\rABC\r\x03"
                                       "17;\r",
                                       "\x06\r"));
        EXPECT_EQ("\r\x1b\x04\r\r\nNO CARRIER\r\n", line.Say("\x04\r", "CARRIER\r\n"));
    }
    served.ReadUntil("closes the line\n");
    EXPECT_EQ(0, served.End(SIGTERM));
    EXPECT_THAT(served.Rest(),
                AllOf(HasSubstr("tap received 1 page:\n  123: \"ABC\", in a call of "),
                      HasSubstr("\ntime: ")));
    EXPECT_FALSE(std::filesystem::is_symlink("lines/ttyS0")) << "the links are gone";
}

TEST_F(Serve, DeviceThatIsPulledAndPutBack) {
    // As the exchange file has it, in the zone of the process that serves.
    const auto in = [](int seconds) {
        const std::time_t instant = std::time(nullptr) + seconds;
        std::ostringstream text;
        text << std::put_time(std::localtime(&instant), "%Y-%m-%d %H:%M:%S");
        return text.str();
    };
    Write("[[line]]\nport = \"COM 1\"\nthere_until = \"" + in(2) + "\"\nthere_from = \"" + in(3) +
          "\"\n");
    Served served({});
    std::string path = served.ReadUntil("\n");
    path = path.substr(path.find('/'), path.size() - path.find('/') - 1);
    const OpenLine line(path);
    EXPECT_EQ("AT\r\r\nOK\r\n", line.Say("AT\r", "OK\r\n"));
    EXPECT_THAT(served.ReadUntil("gone\n"), HasSubstr("COM 1  gone\n"));
    EXPECT_THAT(served.ReadUntil("\n"), StartsWith("COM 1  /dev/pts/"));
    EXPECT_EQ(0, served.End(SIGTERM));
}

TEST_F(Serve, WithoutLinksItSaysWhereThePtysAre) {
    Write(kExchange);
    Served served({"--quiet"});
    std::string said = served.ReadUntil("\n");
    ASSERT_THAT(said, AllOf(StartsWith("COM 1  /dev/pts/"), EndsWith("\n")));
    said.pop_back();
    const OpenLine line(said.substr(said.find('/')));
    EXPECT_EQ("AT\r\r\nOK\r\n", line.Say("AT\r", "OK\r\n"));
    EXPECT_EQ(0, served.End(SIGINT));
    EXPECT_EQ("<end>", served.Rest()) << "quiet: no dialogue and no summary";
}

TEST_F(Serve, ClosingTheLineHangsUp) {
    Write(kExchange);
    Served served({"--links", "."});
    served.ReadUntil("\n");
    {
        const OpenLine line("ttyS0");
        line.Say("ATDT5550101\r", "CONNECT 9600\r\n");
    }
    EXPECT_THAT(served.ReadUntil("closes the line\n"), HasSubstr("tap      # the call is over\n"));
    const OpenLine line("ttyS0");
    EXPECT_EQ("AT\r\r\nOK\r\n", line.Say("AT\r", "OK\r\n"));
}

TEST_F(Serve, SpeedZeroHangsUpThoughNothingIsSent) {
    Write(kExchange);
    Served served({"--links", "."});
    served.ReadUntil("\n");
    const OpenLine line("ttyS0");
    line.Say("ATDT5550101\r", "CONNECT 9600\r\n");
    line.SetSpeed(B0);
    EXPECT_THAT(served.ReadUntil("the call is over\n"), EndsWith("the call is over\n"));
}

TEST_F(Serve, OtherProgramsMayHaveTheLineOpenMeanwhile) {
    Write(kExchange);
    Served served({"--links", "."});
    served.ReadUntil("\n");
    const OpenLine line("ttyS0");
    line.Say("ATDT5550101\r", "CONNECT 9600\r\n");
    { const OpenLine other("ttyS0"); }
    EXPECT_EQ("ID=", line.Say("\r", "ID=")) << "the call stands";
}

TEST_F(Serve, EscapeTakesItsRealTime) {
    Write(kExchange);
    Served served({"--links", "."});
    served.ReadUntil("\n");
    const OpenLine line("ttyS0");
    line.Say("ATDT5550101\r", "CONNECT 9600\r\n");
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ("\r\nOK\r\n", line.Say("+++", "OK\r\n"));
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(79));
}

TEST_F(Serve, WhatNobodyReadsIsLostWithTheClosing) {
    Write(kExchange);
    Served served({"--links", "."});
    served.ReadUntil("\n");
    {
        const OpenLine line("ttyS0");
        line.Say("AT\r", "");
        served.ReadUntil("OK<cr><lf>");
    }
    served.ReadUntil("closes the line\n");
    const OpenLine line("ttyS0");
    EXPECT_EQ("ATI9\r\r\nERROR\r\n", line.Say("ATI9\r", "ERROR\r\n"));
}

TEST_F(Serve, DeviceThatVanishesComesBackUnderItsLink) {
    Write("[[line]]\nport = \"COM 2\"\nvanish_after = 6\n");
    Served served({"--links", "."});
    EXPECT_EQ("COM 2  ./ttyS1\n", served.ReadUntil("\n"));
    {
        const OpenLine line("ttyS1");
        EXPECT_THAT(line.Say("ATZATZ\r", "nothing says this"), EndsWith("<end>"));
    }
    const OpenLine line("ttyS1");
    EXPECT_EQ("AT\r\r\nOK\r\n", line.Say("AT\r", "OK\r\n"));
}

TEST_F(Serve, EveryLineHasItsPty) {
    Write(std::string(kExchange) + "[[line]]\nport = \"COM 3\"\n");
    Served served({"--links", "."});
    EXPECT_EQ("COM 1  ./ttyS0\nCOM 3  ./ttyS2\n", served.ReadUntil("S2\n"));
    const OpenLine one("ttyS0");
    const OpenLine three("ttyS2");
    EXPECT_EQ("ATE0\r\r\nOK\r\n", three.Say("ATE0\r", "OK\r\n"));
    EXPECT_EQ("AT\r\r\nOK\r\n", one.Say("AT\r", "OK\r\n"));
    EXPECT_EQ("\r\nOK\r\n", three.Say("AT\r", "OK\r\n"));
}

TEST_F(Serve, LinkOfAnEarlierServerIsReplaced) {
    Write(kExchange);
    std::filesystem::create_symlink("/dev/pts/none", "ttyS0");
    Served served({"--links", "."});
    served.ReadUntil("\n");
    const OpenLine line("ttyS0");
    EXPECT_EQ("AT\r\r\nOK\r\n", line.Say("AT\r", "OK\r\n"));
}

TEST_F(Serve, OtherFilesAreLeftAlone) {
    Write(kExchange);
    std::ofstream("ttyS0") << "precious";
    Served served({"--links", "."});
    EXPECT_EQ(2, served.Wait());
    EXPECT_THAT(served.Rest(),
                AllOf(StartsWith("pagersim: "), HasSubstr("File exists"), HasSubstr("ttyS0")));
    std::string text;
    std::ifstream("ttyS0") >> text;
    EXPECT_EQ("precious", text);
}

TEST_F(Serve, MistakesAreTold) {
    Write("[[line]]\n");
    Served served({});
    EXPECT_EQ(2, served.Wait());
    EXPECT_THAT(served.Rest(), StartsWith("pagersim: exchange.toml:1: [[line]] needs port"));
    Served odd({"--loud"});
    EXPECT_EQ(2, odd.Wait());
    EXPECT_THAT(odd.Rest(), HasSubstr("--loud"));
    Served help({"--help"});
    EXPECT_EQ(0, help.Wait());
    EXPECT_THAT(help.Rest(), AllOf(HasSubstr("--links FOLDER"), Not(HasSubstr("mistake"))));
}

}  // namespace
}  // namespace pagersim
