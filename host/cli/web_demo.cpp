// The demo. Tested by tests/browser/pages_test.py.
#include "host/cli/web_demo.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <utility>

#include "host/cli/program.h"
#include "host/cli/temporary_name.h"
#include "host/cli/web_demo_story.h"
#include "host/site/site_file.h"
#include "host/site/site_tables.h"
#include "host/store/schema.h"
#include "host/text/times.h"
#include "host/web/token.h"

namespace host {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

constexpr const char* kSimulator = "pagersim";
constexpr milliseconds kLook{50};
constexpr int kMostLooks = 100;  // at what is to end; a page on the line may take longer

// The programs beside this one come first: what the story calls for is this one.
void Prepare(const std::string& folder, const std::string& database) {
    const char* const path = std::getenv("PATH");
    const std::string here = fs::read_symlink("/proc/self/exe").parent_path().string();
    setenv("PATH", (here + ":" + (path == nullptr ? "/usr/bin:/bin" : path)).c_str(), 1);
    setenv("PAGERFWD_DATABASE", database.c_str(), 1);
    setenv("PAGERFWD_LOCKS", folder.c_str(), 1);
}

bool IsInPath(const std::string& program) {
    const char* const path = std::getenv("PATH");
    std::string folders = path == nullptr ? "" : path;
    while (!folders.empty()) {
        const size_t end = std::min(folders.find(':'), folders.size());
        if (access((folders.substr(0, end) + "/" + program).c_str(), X_OK) == 0) {
            return true;
        }
        folders.erase(0, end + 1);
    }
    return false;
}

void Require(const std::string& program) {
    if (!IsInPath(program)) {
        throw Failure(kCannot, "the demo needs " + program +
                                   ", which simulates modems and what they call, and is a package "
                                   "of its own");
    }
}

// As the site's clocks have it.
std::time_t Midnight(std::time_t day) {
    std::tm parts{};
    localtime_r(&day, &parts);
    parts.tm_hour = parts.tm_min = parts.tm_sec = 0;
    parts.tm_isdst = -1;
    return std::mktime(&parts);
}

// Asks it to end, waits, and ends what is left of its group.
void End(pid_t process) {
    kill(-process, SIGTERM);
    for (int look = 0; look < kMostLooks && waitpid(process, nullptr, WNOHANG) == 0; ++look) {
        usleep(static_cast<useconds_t>(kLook.count()) * 1000);
    }
    kill(-process, SIGKILL);
    waitpid(process, nullptr, 0);
}

}  // namespace

WebDemo::Folder::Folder() : path_(TemporaryName("pagerfwd-demo-XXXXXX")) {
    if (mkdtemp(path_.data()) == nullptr) {
        throw Failure(kCannot, path_ + ": can't be made: " + std::strerror(errno));
    }
}

WebDemo::Folder::~Folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

WebDemo::Processes::~Processes() {
    for (auto process = processes_.rbegin(); process != processes_.rend(); ++process) {
        End(*process);
    }
}

void WebDemo::Processes::Start(const std::vector<std::string>& command, const std::string& log) {
    std::vector<char*> words;
    words.reserve(command.size() + 1);
    for (const std::string& word : command) {
        words.push_back(const_cast<char*>(word.c_str()));  // which it only reads
    }
    words.push_back(nullptr);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, log.c_str(),
                                     O_WRONLY | O_CREAT | O_APPEND, 0600);
    posix_spawn_file_actions_adddup2(&files, STDOUT_FILENO, STDERR_FILENO);
    pid_t process = 0;
    const int error = posix_spawnp(&process, words[0], &files, &attributes, words.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    posix_spawnattr_destroy(&attributes);
    if (error != 0) {
        throw Failure(kCannot, command[0] + ": can't be started: " + std::strerror(error));
    }
    processes_.push_back(process);
}

bool WebDemo::Processes::AwaitLast(StopSignal& stop) {
    while (waitpid(processes_.back(), nullptr, WNOHANG) == 0) {
        if (stop.WaitFor(kLook)) {
            return false;
        }
    }
    processes_.pop_back();
    return true;
}

WebDemo::WebDemo(std::string library)
    : library_(std::move(library)), database_(folder_.Path() + "/site.db") {
    Prepare(folder_.Path(), database_);
    Require(kSimulator);
    MakeSite();
    LiveThroughAMonth();
    GoOn();
}

void WebDemo::Write(const std::string& name, const std::string& text) const {
    std::ofstream(File(name), std::ios::binary) << text;
}

void WebDemo::Link(const std::string& line, const std::string& device) const {
    fs::remove(File(line));
    fs::create_symlink(device, File(line));
}

void WebDemo::MakeSite() const {
    Connection connection(database_, Connection::Mode::kCreate);
    CreateTables(connection);
    StoreSite(connection, ParseSite(DemoSite(folder_.Path())).site);
    int port = 0;
    for (const char* line : kDemoLines) {
        Link(line, "/dev/ttyS" + std::to_string(port++));
    }
}

std::vector<std::string> WebDemo::Engine(const char* option) const {
    std::vector<std::string> command = {"pagerfwd"};
    if (!library_.empty()) {
        command.insert(command.end(), {"--library", library_});
    }
    command.emplace_back("run");
    if (*option != '\0') {
        command.emplace_back(option);
    }
    return command;
}

void WebDemo::LiveThroughAMonth() {
    constexpr std::time_t kDay = 24 * 60 * 60;
    StopSignal stop;
    const std::time_t today = Midnight(std::time(nullptr));
    for (int day = 0; day < kDemoDays; ++day) {
        std::cout << "\ra month of a busy site: day " << day + 1 << " of " << kDemoDays
                  << std::flush;
        // Noon, since not all days are as long.
        const std::time_t noon = today - (kDemoDays - day) * kDay + kDay / 2;
        if (!LiveThroughADay(day, DemoBegin(day, Midnight(noon)), stop)) {
            throw Failure(kNo, "ended before the month was over");
        }
    }
    std::cout << "\n";
}

bool WebDemo::LiveThroughADay(int day, std::time_t begin, StopSignal& stop) {
    Write("exchange.toml", DemoExchange(day, begin));
    std::string engine;
    for (const std::string& word : Engine("--until-done")) {
        engine += " " + word;
    }
    processes_.Start(
        {kSimulator, "--quiet", "--step", "100", "--start", LocalTime(begin), "--exchange",
         File("exchange.toml"), "--", "/bin/sh", "-c", DemoFirstAlarm(day) + "; exec" + engine},
        File("month.log"));
    return processes_.AwaitLast(stop);
}

void WebDemo::GoOn() {
    Write("exchange.toml", DemoExchangeNow());
    processes_.Start({kSimulator, "serve", "--quiet", "--links", File("lines"), "--exchange",
                      File("exchange.toml")},
                     File("network.log"));
    int port = 0;
    for (const char* line : kDemoLines) {
        Link(line, File("lines/ttyS" + std::to_string(port++)));
    }
    processes_.Start(Engine(""), File("engine.log"));
    processes_.Start({"/bin/sh", "-c", DemoFirstAlarm(0) + ";" + DemoFirstAlarm(3)},
                     File("engine.log"));
}

std::string WebDemo::Token() const {
    Connection connection(database_);
    WriteTransaction transaction(connection);
    std::string token = MakeToken(connection, {"demo", kMayManage, 0, std::time(nullptr)});
    transaction.Commit();
    return token;
}

}  // namespace host
