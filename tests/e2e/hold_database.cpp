// Holds a SQLite database's right to write for so many seconds, as another program may.
//   hold_database FILE SECONDS
// Of the tests' word size, so that it takes part in their simulated worlds.
#include <sqlite3.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

int main(int argc, char** argv) {
    sqlite3* opened = nullptr;
    if (argc < 3 || sqlite3_open(argv[1], &opened) != SQLITE_OK) {
        return 2;
    }
    const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> database(opened, sqlite3_close);
    if (sqlite3_exec(opened, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) != SQLITE_OK) {
        return 1;
    }
    sleep(static_cast<unsigned>(std::atoi(argv[2])));
    return sqlite3_exec(opened, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK ? 0 : 1;
}
