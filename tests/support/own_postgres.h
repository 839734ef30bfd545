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

    // As a power cut would, and its return.
    void Kill();
    void Start();

    // Where its socket is.
    const std::filesystem::path& Folder() const { return folder_; }

    // What the server answers to SQL, without pagerfwd: the first cell.
    static std::string Ask(const std::string& database, const std::string& sql);

 private:
    std::string Name(const std::string& database) const;

    std::filesystem::path folder_;
    pid_t server_ = -1;
    int made_ = 0;
};

// One for all tests of a program.
OwnPostgres& TheServer();

}  // namespace test_support

#endif
