// A PostgreSQL server of the test's own, from the distribution's package: in a folder of its own,
// on a socket there and nowhere else, as an unprivileged user. It ends with the process, however
// that ends.
//
// Time       It knows none but the real one. A virtual clock stands still while it is asked.
// Threads    The one that starts it lives as long as it.
// Errors     What can't be had is std::runtime_error.
#ifndef PAGERFWD_TESTS_SUPPORT_OWN_POSTGRES_H
#define PAGERFWD_TESTS_SUPPORT_OWN_POSTGRES_H

#include <sys/types.h>

#include <filesystem>
#include <string>

namespace test_support {

class OwnPostgres {
 public:
    OwnPostgres();
    ~OwnPostgres();
    OwnPostgres(const OwnPostgres&) = delete;
    OwnPostgres& operator=(const OwnPostgres&) = delete;

    // An empty database; its name as pagerfwd and libpq take it. Other users than ours may not use
    // it, ours needs no password.
    std::string MakeDatabase();
    // With all that is in another, which nobody uses.
    std::string CopyDatabase(const std::string& other);
    void DropDatabase(const std::string& database);

    // As a power cut would, and its return.
    void Kill();
    void Start();

    // Of a database that there is.
    std::string Name(const std::string& database) const;
    // The other way round.
    static std::string NameOnServer(const std::string& database);

    // Where its socket is.
    const std::filesystem::path& Folder() const { return folder_; }

    // What the server answers to SQL, without pagerfwd: the first cell.
    static std::string Ask(const std::string& database, const std::string& sql);

 private:
    std::filesystem::path folder_;
    pid_t server_ = -1;
    int made_ = 0;
};

// One that follows a server as a standby does, for as long as it lives: it only takes its log.
class PostgresStandby {
 public:
    explicit PostgresStandby(const OwnPostgres& server);
    ~PostgresStandby();
    PostgresStandby(const PostgresStandby&) = delete;
    PostgresStandby& operator=(const PostgresStandby&) = delete;

 private:
    pid_t process_ = -1;
};

// Kills and starts a server in real time, as files in the folder at hand ask: for those who are in
// a simulated world. A shell there has it done by
//
//   touch kill-server; until [ -e kill-server.done ]; do :; done
class PostgresKeeper {
 public:
    explicit PostgresKeeper(OwnPostgres& server);
    // The server runs, whatever was asked.
    ~PostgresKeeper();
    PostgresKeeper(const PostgresKeeper&) = delete;
    PostgresKeeper& operator=(const PostgresKeeper&) = delete;

    static constexpr const char* kKill = "kill-server";
    static constexpr const char* kStart = "start-server";

 private:
    OwnPostgres& server_;
    pid_t process_ = -1;
};

// One for all tests of a program.
OwnPostgres& TheServer();

}  // namespace test_support

#endif
