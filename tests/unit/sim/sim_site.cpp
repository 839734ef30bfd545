// A program of several processes that knows nothing of any simulation: one that keeps a child for
// each serial line, with a pipe to it and one back, as services with a process for each modem do.
//
//   sim_site LINES HOURS TICK    every hour each line gets a page, and says when it has sent it;
//                                every TICK seconds, and as often, all look around
//
// The lines begin at COM 1. A page is a dialogue with a TAP centre, 5550101. Says what each line
// said, and when. Ends with 1 when a line failed.
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

namespace {

constexpr int kCommand = 3;  // where a line finds the end of its pipe
constexpr int kAnswer = 4;
constexpr int kLock = 5;  // a lock on a file, which is there as long as one of its holders is

std::string heard;

bool Await(int line, const std::string& text) {
    constexpr int kPatienceMs = 120'000;
    while (heard.find(text) == std::string::npos) {
        pollfd ready = {line, POLLIN, 0};
        char bytes[256];
        const ssize_t count =
            poll(&ready, 1, kPatienceMs) == 1 ? read(line, bytes, sizeof bytes) : 0;
        if (count <= 0) {
            return false;
        }
        heard.append(bytes, static_cast<std::size_t>(count));
    }
    heard.erase(0, heard.find(text) + text.size());
    return true;
}

bool Say(int line, const std::string& text) {
    return write(line, text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

bool SendPage(const std::string& device) {
    const int line = open(device.c_str(), O_RDWR | O_NOCTTY);
    const bool sent = line >= 0 && Say(line, "ATDT0,5550101\r") && Await(line, "CONNECT") &&
                      Say(line, "\r") && Await(line, "ID=") && Say(line, "\x1bPG1\r") &&
                      Await(line, "\x1b[p\r") &&
                      Say(line,
                          "\x02"
                          "1\rABC\r\x03"
                          "116\r") &&
                      Await(line, "\r\x06\r") && Say(line, "\x04\r") && Await(line, "\x1b\x04\r");
    close(line);
    heard.clear();
    return sent;
}

// Until there is nobody any more who could ring.
int ServeLine(const std::string& device, int tick) {
    for (;;) {
        pollfd bell = {kCommand, POLLIN, 0};
        if (poll(&bell, 1, tick * 1000) == 0) {
            continue;
        }
        char ring = 0;
        if (read(kCommand, &ring, 1) != 1) {
            return 0;
        }
        if (!SendPage(device) || write(kAnswer, "+", 1) != 1) {
            return 1;
        }
    }
}

struct Line {
    pid_t process;
    int command, answer;
};

Line StartLine(int number, const std::string& tick, int lock) {
    int command[2], answer[2];
    if (pipe2(command, O_CLOEXEC) != 0 || pipe2(answer, O_CLOEXEC) != 0) {
        std::exit(2);
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    // First out of the way of the numbers they are to have.
    constexpr int kHigh = 20;
    posix_spawn_file_actions_adddup2(&actions, command[0], kHigh + kCommand);
    posix_spawn_file_actions_adddup2(&actions, answer[1], kHigh + kAnswer);
    posix_spawn_file_actions_adddup2(&actions, lock, kHigh + kLock);
    for (const int fd : {kCommand, kAnswer, kLock}) {
        posix_spawn_file_actions_adddup2(&actions, kHigh + fd, fd);
        posix_spawn_file_actions_addclose(&actions, kHigh + fd);
    }
    std::string name = "sim_site", word = "line";
    std::string device = "/dev/ttyS" + std::to_string(number), ticks = tick;
    char* const arguments[] = {name.data(), word.data(), device.data(), ticks.data(), nullptr};
    Line line{0, command[1], answer[0]};
    posix_spawn(&line.process, "/proc/self/exe", &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(command[0]);
    close(answer[1]);
    return line;
}

int LockedFile() {
    const int fd = open("site.lock", O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    struct flock all {};
    all.l_type = F_WRLCK;
    return fcntl(fd, F_OFD_SETLK, &all) == 0 ? fd : -1;
}

// Until that instant.
void Listen(const std::vector<Line>& lines, time_t end, int tick) {
    while (time(nullptr) < end) {
        std::vector<pollfd> bells;
        for (const Line& line : lines) {
            bells.push_back({line.answer, POLLIN, 0});
        }
        const auto left = static_cast<int>(end - time(nullptr));
        poll(bells.data(), bells.size(), std::min(tick, left) * 1000);
        for (std::size_t i = 0; i < bells.size(); ++i) {
            char answer = 0;
            if (bells[i].revents == 0) {
                continue;
            }
            if (read(bells[i].fd, &answer, 1) != 1) {
                std::exit(1);
            }
            std::printf("%lld: line %zu\n", static_cast<long long>(time(nullptr)), i + 1);
        }
    }
}

int Keep(int count, int hours, const std::string& tick) {
    const int lock = LockedFile();
    std::vector<Line> lines;
    for (int i = 0; i < count; ++i) {
        lines.push_back(StartLine(i, tick, lock));
    }
    const time_t start = time(nullptr);
    for (int hour = 0; hour < hours; ++hour) {
        for (const Line& line : lines) {
            if (write(line.command, "!", 1) != 1) {
                return 1;
            }
        }
        Listen(lines, start + (hour + 1) * 3600, std::stoi(tick));
    }
    int worst = 0;
    for (const Line& line : lines) {
        close(line.command);
        int status = 0;
        waitpid(line.process, &status, 0);
        worst = status != 0 ? 1 : worst;
    }
    return worst;
}

}  // namespace

int main(int count, char** arguments) {
    if (count == 4 && std::string(arguments[1]) == "line") {
        return ServeLine(arguments[2], std::stoi(arguments[3]));
    }
    if (count != 4) {
        return 2;
    }
    return Keep(std::stoi(arguments[1]), std::stoi(arguments[2]), arguments[3]);
}
