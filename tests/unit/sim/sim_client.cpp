// A program that knows nothing of any simulation: it opens a serial line, and sends and awaits what
// its arguments say, one after the other.
//
//   open:DEVICE        close            send:TEXT        wait:TEXT (at most two minutes)
//   sleep:SECONDS      now              print:TEXT       close-all
//   exec               kill             stdin            exit:STATUS
//   pause (for a signal)
//
// With processes of its own: what stands between child or spawn and end is done by a child, made by
// fork or as a program of its own; the pipe is one that children inherit.
//
//   child ... end      spawn ... end    await            kill-child
//   bare-child ... end (by _Fork)       queue-child (kills it by sigqueue)
//   pipe               tell:TEXT        hear             shell:COMMAND
//   lock:FILE          unlock           lock-bytes:FILE  unlock-bytes
//   dup-over           close-unshared
//   popen:COMMAND      spin:MS (of real time)            descriptors
//   ask:SOCKET (and wait for what the server says)
//   nap:MS (of real time, in a call that no simulation knows)
//   twins:COUNT (threads, each of which spawns a program and awaits its end)
//
// TEXT knows \r \n \e \0 \xHH. Ends with 1 when a text didn't come, with 2 when a line doesn't
// open.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

namespace {

int line = -1;
std::string heard;  // and not yet awaited

std::string Unescaped(const std::string& text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            bytes += text[i];
            continue;
        }
        switch (text[++i]) {
            case 'r':
                bytes += '\r';
                break;
            case 'n':
                bytes += '\n';
                break;
            case 'e':
                bytes += '\x1b';
                break;
            case '0':
                bytes += '\0';
                break;
            case 'x':
                bytes += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
                i += 2;
                break;
            default:
                bytes += text[i];
        }
    }
    return bytes;
}

void Open(const std::string& device) {
    line = open(device.c_str(), O_RDWR | O_NOCTTY);
    if (line < 0) {
        std::printf("%s: %s\n", device.c_str(), std::strerror(errno));
        std::exit(2);
    }
    termios settings{};
    tcgetattr(line, &settings);
    cfmakeraw(&settings);
    settings.c_cflag = CS7 | PARENB | CREAD | CLOCAL;
    settings.c_cc[VMIN] = 0;
    cfsetspeed(&settings, B2400);
    tcsetattr(line, TCSANOW, &settings);
}

void Send(const std::string& bytes) {
    if (write(line, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
        std::printf("write: %s\n", std::strerror(errno));
        std::exit(1);
    }
}

// The next bytes, or the end: nothing came in time, or the line is gone.
bool Receive() {
    pollfd ready = {line, POLLIN, 0};
    constexpr int kPatienceMs = 120'000;
    char bytes[256];
    if (poll(&ready, 1, kPatienceMs) != 1) {
        return false;
    }
    const ssize_t count = read(line, bytes, sizeof bytes);
    if (count < 0) {
        std::printf("read: %s\n", std::strerror(errno));
    }
    if (count <= 0) {
        return false;
    }
    heard.append(bytes, static_cast<std::size_t>(count));
    return true;
}

void Wait(const std::string& text) {
    while (heard.find(text) == std::string::npos) {
        if (!Receive()) {
            std::printf("no %s\n", text.c_str());
            std::exit(1);
        }
    }
    heard.erase(0, heard.find(text) + text.size());
}

void PrintNow() {
    const time_t now = time(nullptr);
    char text[32];
    strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", localtime(&now));
    std::printf("%s\n", text);
}

void CloseAll() {
    for (int fd = 3; fd < 1024; ++fd) {
        close(fd);
    }
}

void WaitForInput() {
    std::printf("ready\n");
    std::fflush(stdout);
    char byte = 0;
    if (read(STDIN_FILENO, &byte, 1) < 0) {
        std::printf("stdin: %s\n", std::strerror(errno));
    }
}

pid_t child = 0;  // the latest
int ends[2] = {-1, -1};
int locked = -1;

void Run(char** first, char** last);

char** EndOf(char** step) {
    while (*step != nullptr && std::strcmp(*step, "end") != 0) {
        ++step;
    }
    return step;
}

void Fork(char** steps, pid_t (*make)()) {
    std::fflush(stdout);
    child = make();
    if (child == 0) {
        Run(steps, EndOf(steps));
        std::exit(0);
    }
}

void Spawn(char** steps) {
    std::string name = "sim_client";
    std::vector<char*> arguments = {name.data()};
    arguments.insert(arguments.end(), steps, EndOf(steps));
    arguments.push_back(nullptr);
    posix_spawn(&child, "/proc/self/exe", nullptr, nullptr, arguments.data(), environ);
}

void Hear() {
    char text[64];
    const ssize_t count = read(ends[0], text, sizeof text);
    std::printf("%.*s\n", static_cast<int>(count), text);
}

void LockFile(const std::string& path) {
    locked = open(path.c_str(), O_RDWR | O_CREAT, 0600);
    flock(locked, LOCK_EX);
}

void LockBytes(const std::string& path) {
    locked = open(path.c_str(), O_RDWR | O_CREAT, 0600);
    struct flock all {};
    all.l_type = F_WRLCK;
    fcntl(locked, F_SETLKW, &all);
}

void UnlockBytes() {
    struct flock all {};
    all.l_type = F_UNLCK;
    fcntl(locked, F_SETLK, &all);
}

// Its output is shown here.
bool Popen(const std::string& command) {
    FILE* const output = popen(command.c_str(), "r");
    char text[256];
    while (output != nullptr && std::fgets(text, sizeof text, output) != nullptr) {
        std::fputs(text, stdout);
    }
    return output != nullptr && pclose(output) == 0;
}

void Spin(int ms) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    while (std::chrono::steady_clock::now() < end) {
    }
}

void Nap(int ms) {
    const timespec time{ms / 1000, ms % 1000 * 1'000'000L};
    syscall(SYS_nanosleep, &time, nullptr);
}

// Calls a server, and waits for its answer.
void AskServer(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    pollfd call{socket(AF_UNIX, SOCK_STREAM, 0), POLLIN, 0};
    if (connect(call.fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        poll(&call, 1, -1);
    }
    close(call.fd);
}

// What they lead to.
void PrintDescriptors() {
    constexpr int kEnd = 1024;
    for (int fd = STDERR_FILENO + 1; fd < kEnd; ++fd) {
        char target[512];
        const std::string link = "/proc/self/fd/" + std::to_string(fd);
        const ssize_t length = readlink(link.c_str(), target, sizeof target);
        if (length > 0) {
            std::printf("%.*s\n", static_cast<int>(length), target);
        }
    }
}

// Everything else that is open.
void DupOver() {
    constexpr int kEnd = 1024;
    for (int fd = STDERR_FILENO + 1; fd < kEnd; ++fd) {
        dup2(STDERR_FILENO, fd);
    }
}

void SpawnAndAwait() {
    std::string name = "sim_client";
    std::string step = "sleep:1";
    char* const arguments[] = {name.data(), step.data(), nullptr};
    pid_t spawned = 0;
    int status = -1;
    posix_spawn(&spawned, "/proc/self/exe", nullptr, nullptr, arguments, environ);
    waitpid(spawned, &status, 0);
    if (status != 0) {
        std::printf("status %d\n", status);
    }
}

void SpawnAtOnce(int count) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back(SpawnAndAwait);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

bool DoWithProcesses(const std::string& name, const std::string& argument, char** step) {
    if (name == "child") {
        Fork(step + 1, fork);
    } else if (name == "bare-child") {
        Fork(step + 1, _Fork);
    } else if (name == "spawn") {
        Spawn(step + 1);
    } else if (name == "await") {
        wait(nullptr);
    } else if (name == "kill-child") {
        kill(child, SIGKILL);
    } else if (name == "queue-child") {
        sigqueue(child, SIGKILL, {});
    } else if (name == "pipe") {
        return pipe(ends) == 0;
    } else if (name == "tell") {
        return write(ends[1], argument.data(), argument.size()) > 0;
    } else if (name == "hear") {
        Hear();
    } else if (name == "shell") {
        return system(argument.c_str()) == 0;
    } else if (name == "lock") {
        LockFile(argument);
    } else if (name == "unlock") {
        flock(locked, LOCK_UN);
    } else if (name == "lock-bytes") {
        LockBytes(argument);
    } else if (name == "unlock-bytes") {
        UnlockBytes();
    } else if (name == "popen") {
        return Popen(argument);
    } else if (name == "spin") {
        Spin(std::stoi(argument));
    } else if (name == "nap") {
        Nap(std::stoi(argument));
    } else if (name == "ask") {
        AskServer(argument);
    } else if (name == "dup-over") {
        DupOver();
    } else if (name == "close-unshared") {
        close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_UNSHARE);
    } else if (name == "descriptors") {
        PrintDescriptors();
    } else if (name == "twins") {
        SpawnAtOnce(std::stoi(argument));
    } else {
        return false;
    }
    return true;
}

// The step is the last this program does when it replaces itself.
void Do(char** step) {
    const std::string text = *step;
    const std::string name = text.substr(0, text.find(':'));
    const std::string argument =
        text.size() > name.size() ? Unescaped(text.substr(name.size() + 1)) : "";
    if (name == "open") {
        Open(argument);
    } else if (name == "close") {
        close(line);
    } else if (name == "send") {
        Send(argument);
    } else if (name == "wait") {
        Wait(argument);
    } else if (name == "sleep") {
        sleep(static_cast<unsigned>(std::stoi(argument)));
    } else if (name == "now") {
        PrintNow();
    } else if (name == "print") {
        std::printf("%s\n", argument.c_str());
    } else if (name == "close-all") {
        CloseAll();
    } else if (name == "exec") {
        execv("/proc/self/exe", step);  // the step itself stands where the name belongs
    } else if (name == "kill") {
        raise(SIGKILL);
    } else if (name == "pause") {
        pause();
    } else if (name == "stdin") {
        WaitForInput();
    } else if (name == "exit") {
        std::exit(std::stoi(argument));
    } else {
        DoWithProcesses(name, argument, step);
    }
    std::fflush(stdout);
}

void Run(char** first, char** last) {
    for (char** step = first; step != last; ++step) {
        Do(step);
        if (std::strcmp(*step, "child") == 0 || std::strcmp(*step, "bare-child") == 0 ||
            std::strcmp(*step, "spawn") == 0) {
            step = EndOf(step);
        }
    }
}

}  // namespace

int main(int count, char** arguments) {
    Run(arguments + 1, arguments + count);
}
