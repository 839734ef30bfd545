// A server of the test's own.
#include "tests/support/own_postgres.h"

#include <fcntl.h>
#include <libpq-fe.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace test_support {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kNobody = 65534;

// Of the newest version that is installed.
fs::path Programs() {
    fs::path newest;
    for (const fs::directory_entry& version : fs::directory_iterator("/usr/lib/postgresql")) {
        if (fs::exists(version.path() / "bin/postgres")) {
            newest = std::max(newest, version.path() / "bin");
        }
    }
    return newest;
}

// In the child: the server refuses to run as root.
[[noreturn]] void Become(const fs::path& folder, const std::vector<std::string>& command) {
    const int log = open((folder / "log").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    dup2(log, STDOUT_FILENO);
    dup2(log, STDERR_FILENO);
    if (geteuid() == 0 && (setgid(kNobody) != 0 || setuid(kNobody) != 0)) {
        _exit(1);
    }
    // Behind setuid, which takes it back.
    prctl(PR_SET_PDEATHSIG, SIGQUIT);
    if (chdir(folder.c_str()) != 0) {
        _exit(1);
    }
    std::vector<char*> words;
    for (const std::string& word : command) {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    execv(words[0], words.data());
    _exit(1);
}

pid_t StartProgram(const fs::path& folder, const std::vector<std::string>& command) {
    const pid_t child = fork();
    if (child == 0) {
        Become(folder, command);
    }
    return child;
}

void RunToEnd(const fs::path& folder, const std::vector<std::string>& command) {
    int status = -1;
    waitpid(StartProgram(folder, command), &status, 0);
    if (status != 0) {
        throw std::runtime_error(command[0] + " has failed: see " + (folder / "log").string());
    }
}

template <typename Condition>
void WaitUntil(Condition condition) {
    constexpr int kMostTries = 600;
    constexpr timespec kPause{0, 50'000'000};
    for (int tries = 0; !condition(); ++tries) {
        if (tries == kMostTries) {
            throw std::runtime_error("waited for the server in vain");
        }
        syscall(SYS_nanosleep, &kPause, nullptr);
    }
}

}  // namespace

OwnPostgres::OwnPostgres() {
    std::string path = fs::temp_directory_path() / "pagerfwd-postgres-XXXXXX";
    if (mkdtemp(path.data()) == nullptr) {
        throw std::runtime_error("no temporary folder: " + path);
    }
    folder_ = path;
    setenv("PAGERSIM_OUTSIDE", path.c_str(), 1);
    if (geteuid() == 0 && chown(path.c_str(), kNobody, kNobody) != 0) {
        throw std::runtime_error("no folder of another user: " + path);
    }
    RunToEnd(folder_, {Programs() / "initdb", "--pgdata=" + path + "/data", "--username=pager",
                       "--auth=trust", "--encoding=UTF8", "--locale=C", "--no-sync"});
    Start();
}

OwnPostgres::~OwnPostgres() {
    Kill();
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

void OwnPostgres::Start() {
    server_ = StartProgram(folder_, {Programs() / "postgres", "-D", folder_ / "data", "-k", folder_,
                                     "-c", "listen_addresses=", "-c", "fsync=off", "-c",
                                     "track_commit_timestamp=on", "-c", "max_connections=400"});
    WaitUntil([this] { return PQping(Name("postgres").c_str()) == PQPING_OK; });
}

void OwnPostgres::Kill() {
    if (server_ > 0) {
        kill(server_, SIGQUIT);
        waitpid(server_, nullptr, 0);
        server_ = -1;
    }
}

std::string OwnPostgres::Name(const std::string& database) const {
    return "postgresql://pager@/" + database + "?host=" + folder_.string();
}

std::string OwnPostgres::MakeDatabase() {
    const std::string name = "site" + std::to_string(++made_);
    Ask(Name("postgres"), "CREATE DATABASE " + name);
    return Name(name);
}

std::string OwnPostgres::CopyDatabase(const std::string& other) {
    const std::string name = "site" + std::to_string(++made_);
    Ask(Name("postgres"), "CREATE DATABASE " + name + " TEMPLATE " + NameOnServer(other));
    return Name(name);
}

// Whoever still has a session there loses it.
void OwnPostgres::DropDatabase(const std::string& database) {
    Ask(Name("postgres"), "DROP DATABASE " + NameOnServer(database) + " WITH (FORCE)");
}

std::string OwnPostgres::NameOnServer(const std::string& database) {
    const size_t from = database.find("@/") + 2;
    return database.substr(from, database.find('?') - from);
}

std::string OwnPostgres::Ask(const std::string& database, const std::string& sql) {
    const std::unique_ptr<PGconn, decltype(&PQfinish)> connection(PQconnectdb(database.c_str()),
                                                                  PQfinish);
    PQsetNoticeProcessor(
        connection.get(), [](void* /*nobody*/, const char* /*said*/) {}, nullptr);
    const std::unique_ptr<PGresult, decltype(&PQclear)> result(
        PQexec(connection.get(), sql.c_str()), PQclear);
    const ExecStatusType status = PQresultStatus(result.get());
    if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK) {
        throw std::runtime_error(PQerrorMessage(connection.get()));
    }
    return PQntuples(result.get()) > 0 ? PQgetvalue(result.get(), 0, 0) : "";
}

PostgresStandby::PostgresStandby(const OwnPostgres& server) {
    const fs::path folder = server.Folder() / "standby";
    fs::create_directory(folder);
    fs::permissions(folder, fs::perms::all);
    process_ = StartProgram(server.Folder(), {Programs() / "pg_receivewal", "-D", folder, "-h",
                                              server.Folder(), "-U", "pager"});
    WaitUntil([&] {
        return OwnPostgres::Ask(server.Name("postgres"),
                                "SELECT count(*) FROM pg_stat_replication") != "0";
    });
}

PostgresStandby::~PostgresStandby() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
}

namespace {

// Until the folder has gone, with the test.
void Keep(OwnPostgres& server) {
    constexpr timespec kPause{0, 5'000'000};
    const auto is_asked = [](const char* what) {
        return fs::exists(what) && !fs::exists(std::string(what) + ".done");
    };
    for (;;) {
        if (is_asked(PostgresKeeper::kKill)) {
            server.Kill();
            std::ofstream(std::string(PostgresKeeper::kKill) + ".done");
        }
        if (is_asked(PostgresKeeper::kStart)) {
            server.Start();
            std::ofstream(std::string(PostgresKeeper::kStart) + ".done");
        }
        syscall(SYS_nanosleep, &kPause, nullptr);
    }
}

}  // namespace

// The server becomes the keeper's, who waits for its end.
PostgresKeeper::PostgresKeeper(OwnPostgres& server) : server_(server) {
    server.Kill();
    process_ = fork();
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        server.Start();
        const std::ofstream kept("kept");
        Keep(server);
    }
    WaitUntil([] { return fs::exists("kept"); });
}

// The server ends a moment behind its keeper, and lets go of its folder then.
PostgresKeeper::~PostgresKeeper() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    try {
        WaitUntil([this] { return !fs::exists(server_.Folder() / "data/postmaster.pid"); });
        server_.Start();
    } catch (const std::exception&) {
        // The next test can't reach it, and says so.
    }
}

OwnPostgres& TheServer() {
    static OwnPostgres server;
    return server;
}

}  // namespace test_support
