// What it costs to take alarms over HTTP, beside what the database itself takes for as many; how
// long `alarm raise` keeps whoever calls it; and what pages have of an attack.
//   bench_web PAGERFWD [DATABASE]   the program; a database of PostgreSQL, or none for one of
//   SQLite
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/web_client.h"
#include "host/store/connection.h"
#include "host/store/tables/alarm_log.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/started_program.h"

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr std::chrono::seconds kRun{5};

void Run(const std::vector<std::string>& command) {
    const ProgramRun run = RunProgram(command);
    if (run.exit_code != 0) {
        throw std::runtime_error("failed: " + command[1] + ": " + run.err);
    }
}

// A connection that is kept, and posts one alarm after the other.
class Poster {
 public:
    explicit Poster(std::string token) : token_(std::move(token)), socket_(bench::ConnectToWeb()) {}

    void Post() const {
        const std::string body = R"({"text": "No water", "group": "plant/17"})";
        const std::string request =
            "POST /api/v1/alarms HTTP/1.1\r\nHost: x\r\nAuthorization: Bearer " + token_ +
            "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
        char answer[2048] = "";
        if (send(socket_.Number(), request.data(), request.size(), 0) < 0 ||
            recv(socket_.Number(), answer, sizeof answer - 1, 0) <= 0 ||
            std::strncmp(answer, "HTTP/1.1 200", 12) != 0) {
            throw std::runtime_error(std::string("not taken: ") + answer);
        }
    }

 private:
    const std::string token_;
    const host::Descriptor socket_;
};

// Each alone, committed before the next, by as many as the web process has for it.
double BareInsertsASecond(const std::string& database) {
    std::vector<int> counts(2);
    std::vector<std::thread> threads;
    threads.reserve(counts.size());
    for (int& count : counts) {
        threads.emplace_back([&count, &database] {
            host::Connection connection(database);
            for (const Clock::time_point end = Clock::now() + kRun; Clock::now() < end; ++count) {
                host::RaiseAlarm(connection, {"plant/17", "1", "bench", "No water"},
                                 std::time(nullptr));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return (counts[0] + counts[1]) / std::chrono::duration<double>(kRun).count();
}

double PostsASecond(const std::string& token, size_t clients) {
    std::vector<int> counts(clients);
    std::vector<std::thread> threads;
    threads.reserve(clients);
    for (int& count : counts) {
        threads.emplace_back([&count, &token] {
            const Poster poster(token);
            for (const Clock::time_point end = Clock::now() + kRun; Clock::now() < end; ++count) {
                poster.Post();
            }
        });
    }
    int sum = 0;
    for (size_t i = 0; i < clients; ++i) {
        threads[i].join();
        sum += counts[i];
    }
    return sum / std::chrono::duration<double>(kRun).count();
}

double Percentile(std::vector<double> values, double part) {
    std::sort(values.begin(), values.end());
    return values[static_cast<size_t>(static_cast<double>(values.size() - 1) * part)];
}

void Show(const char* what, const std::vector<double>& milliseconds) {
    std::printf("%-44s median %6.1f ms, p99 %6.1f ms\n", what, Percentile(milliseconds, 0.5),
                Percentile(milliseconds, 0.99));
}

// From when each was to be sent, whoever is late.
std::vector<double> Latencies(const std::string& token, int a_second) {
    constexpr int kClients = 10;
    const Clock::time_point begin = Clock::now();
    std::mutex mutex;
    std::vector<double> all;
    std::vector<std::thread> threads;
    threads.reserve(kClients);
    for (int client = 0; client < kClients; ++client) {
        threads.emplace_back([&, client] {
            const Poster poster(token);
            const auto every = std::chrono::milliseconds(1000 * kClients / a_second);
            for (Clock::time_point due = begin + client * every / kClients; due < begin + kRun;
                 due += every) {
                std::this_thread::sleep_until(due);
                poster.Post();
                const double took = Milliseconds(Clock::now() - due).count();
                const std::lock_guard<std::mutex> lock(mutex);
                all.push_back(took);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return all;
}

std::vector<double> RaiseTimes(const std::vector<std::string>& command) {
    std::vector<double> all;
    for (int i = 0; i < 50; ++i) {
        const Clock::time_point begin = Clock::now();
        Run(command);
        all.push_back(Milliseconds(Clock::now() - begin).count());
    }
    return all;
}

void Measure(const std::string& program, const std::string& database) {
    setenv("PAGERFWD_DATABASE", database.c_str(), 1);
    Run({program, "init"});
    const std::string said = RunProgram({program, "token", "add", "bench", "--may", "raise"}).out;
    const std::string token = said.substr(0, said.find('\n'));
    if (token.compare(0, 9, "pagerfwd_") != 0) {
        throw std::runtime_error("no token: " + token);
    }
    const StartedProgram web({program, "web", "--listen", "unix:web.sock"}, "web.out");
    while (!std::filesystem::exists("web.sock")) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    bench::ComparePages(program);
    const double bare = BareInsertsASecond(database);
    const double posted = PostsASecond(token, 8);
    std::printf("%-44s %8.0f a second\n", "alarms inserted, each committed", bare);
    std::printf("%-44s %8.0f a second, %.2f of that\n", "alarms posted by 8 clients, each answered",
                posted, posted / bare);
    Show("an answer at 100 alarms a second", Latencies(token, 100));
    Show("alarm raise", RaiseTimes({program, "alarm", "raise", "No water"}));
    Show("alarm raise --spool", RaiseTimes({program, "alarm", "raise", "--spool", "No water"}));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_web PAGERFWD [DATABASE]\n");
        return 2;
    }
    const std::string program = std::filesystem::absolute(argv[1]);
    std::string folder = std::filesystem::current_path() / "bench-web-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) {
        std::perror("bench_web");
        return 1;
    }
    int status = 0;
    try {
        std::filesystem::current_path(folder);
        Measure(program, argc > 2 ? argv[2] : folder + "/site.db");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_web: %s\n", error.what());
        status = 1;
    }
    std::filesystem::remove_all(folder);
    return status;
}
