// What a page on the line has of those who ask the web process: nothing, it is to be. A node, its
// line and a modem in real time, at a centre that answers at once.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "bench/web_client.h"
#include "host/store/connection.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/started_program.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kPages = 5;
constexpr size_t kIdle = 200;

constexpr const char* kExchange = R"(
[[line]]
port = "COM 1"
answer_delay_ms = 1
answer_gap_ms = 1
digit_ms = 1
comma_ms = 1
training_ms = 1
[[centre]]
name = "tap"
protocol = "tap"
numbers = ["5550101"]
)";
// Behind it: the device, and how it dials.
constexpr const char* kSite = R"(
[[pager]]
description = "duty"
type = "sms1"
number = "5550111"
retries = 2
delay = 1
[[route]]
groups = "measured/*"
pagers = ["duty"]
[[port]]
name = "COM 1"
sms1.dial = "ATDT0,5550101"
)";

// 200 connections that say nothing, and one that asks for whatever costs most, as fast as it is
// answered.
class Attack {
 public:
    Attack() : thread_([this] { Run(); }) {
        for (size_t i = 0; i < kIdle; ++i) {
            idle_.push_back(ConnectToWeb());
        }
    }
    ~Attack() {
        ends_ = true;
        thread_.join();
    }
    Attack(const Attack&) = delete;
    Attack& operator=(const Attack&) = delete;

 private:
    // A token that is none, of the right length, with the longest body.
    void Run() const {
        const std::string request =
            "POST /api/v1/alarms HTTP/1.1\r\nHost: x\r\nConnection: close\r\n"
            "Authorization: Bearer pagerfwd_00000000_" +
            std::string(64, '0') + "\r\nContent-Length: 1048576\r\n\r\n" +
            std::string(1048576, '[');
        while (!ends_) {
            const host::Descriptor client = ConnectToWeb();
            char answer[1024];
            static_cast<void>(send(client.Number(), request.data(), request.size(), MSG_NOSIGNAL));
            static_cast<void>(recv(client.Number(), answer, sizeof answer, 0));
        }
    }

    std::atomic<bool> ends_{false};
    std::vector<host::Descriptor> idle_;
    std::thread thread_;
};

int64_t SentPages(host::Connection& connection) {
    return host::Statement(connection, "SELECT count(*) FROM Host_Sends WHERE outcome = 'sent'")
        .FirstNumber();
}

// Seconds from the alarm to its page's end.
double PageTime(const std::string& program, host::Connection& connection) {
    const int64_t before = SentPages(connection);
    const Clock::time_point begin = Clock::now();
    RunProgram({program, "alarm", "raise", "--group", "measured/1", "No water"});
    while (SentPages(connection) == before) {
        if (Clock::now() > begin + std::chrono::minutes(2)) {
            throw std::runtime_error("no page was sent; run.out says why");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

host::Descriptor ConnectToWeb() {
    host::Descriptor made(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    constexpr char kSocket[] = "web.sock";
    std::memcpy(&address.sun_path[0], kSocket, sizeof kSocket);
    if (connect(made.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw std::runtime_error("nobody listens");
    }
    return made;
}

void ComparePages(const std::string& program) {
    std::ofstream("exchange.toml") << kExchange;
    std::ofstream("site.toml") << kSite << "device = \""
                               << std::filesystem::absolute("lines/ttyS0").string() << "\"\n";
    setenv("PAGERFWD_LOCKS", ".", 1);
    setenv("PAGERFWD_STATE", ".", 1);
    if (RunProgram({program, "import", "site.toml"}).exit_code != 0) {
        throw std::runtime_error("the site isn't taken");
    }
    const std::string beside = std::filesystem::path(program).parent_path();
    const StartedProgram network({beside + "/pagersim", "serve", "--quiet", "--links", "lines"},
                                 "network.out");
    while (!std::filesystem::exists("lines/ttyS0")) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    const StartedProgram node({program, "run"}, "run.out");
    host::Connection connection(getenv("PAGERFWD_DATABASE"));
    std::vector<double> alone;
    std::vector<double> attacked;
    for (int i = 0; i < kPages; ++i) {
        alone.push_back(PageTime(program, connection));
        const Attack attack;
        attacked.push_back(PageTime(program, connection));
    }
    std::printf("%-44s median %6.2f s\n", "a page, while nobody asks", Median(alone));
    std::printf("%-44s median %6.2f s, %.2f of that\n", "... 200 connections idle, and an attack",
                Median(attacked), Median(attacked) / Median(alone));
}

}  // namespace bench
