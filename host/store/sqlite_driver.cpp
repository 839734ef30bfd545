// SQLite. Tested by tests/unit/host/connection_test.cpp.
#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <system_error>

#include "host/files/shared_file.h"
#include "host/store/driver.h"

namespace host {
namespace {

// Longer than any write here takes, shorter than an operator's patience. SQLite adds up its own
// pauses and looks at no clock, so a simulated one doesn't shorten this.
constexpr std::chrono::milliseconds kBusyTimeout{10000};

// With a write-ahead log, a reader never waits; with FULL, each commit is on the disk when it
// returns: a page that was answered as queued survives a power cut. The log is begun anew at 250
// pages, half of what is reserved for it (reserve.h).
constexpr const char* kSettings =
    "PRAGMA journal_mode = WAL;"
    "PRAGMA synchronous = FULL;"
    "PRAGMA wal_autocheckpoint = 250;";

// One thread at a time: SQLite's own mutexes aren't needed.
constexpr int kFlags = SQLITE_OPEN_NOMUTEX;

constexpr mode_t kOwnerAndGroup = 0660;

void RequireFile(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
        throw StoreError(
            path + ": " +
            (error ? error.message() : "there is no such database; make it with: pagerfwd init"));
    }
}

// SQLite would make it for everybody, as older makes of this program did.
void MakeFile(const std::string& path) {
    const Descriptor made(
        open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerAndGroup));
    if (!made.IsOpen() && errno != EEXIST) {
        throw StoreError(path + ": can't be made: " + std::strerror(errno));
    }
    std::error_code none;
    std::filesystem::permissions(path, std::filesystem::perms::others_all,
                                 std::filesystem::perm_options::remove, none);
}

bool IsThere(const std::string& path) {
    std::error_code none;
    return std::filesystem::exists(std::filesystem::symlink_status(path, none));
}

// What is no database gets no journals either; SQLite says what it is.
bool IsDatabase(const std::string& path) {
    constexpr std::string_view kBegin = "SQLite format 3";
    std::array<char, kBegin.size()> begin{};
    std::ifstream(path, std::ios::binary).read(begin.data(), begin.size());
    return kBegin == std::string_view(begin.data(), begin.size());
}

// SQLite gives its journals the mode of the database, but the group of whoever comes first. It
// would do so to an empty one that is there, too; a byte, which begins no journal, keeps it from
// that. What can't be done here it says itself. Nothing is opened while this process may have the
// database open, which has a journal then: closing it would end the locks that SQLite holds.
void MakeJournals(const std::string& path) {
    if (IsThere(path + "-wal") || !IsDatabase(path)) {
        return;
    }
    constexpr off_t kNotEmpty = 1;
    try {
        const Ownership ownership = OwnershipOf(path);
        MakeShared(path + "-shm", ownership, kNotEmpty);
        MakeShared(path + "-wal", ownership, kNotEmpty);
    } catch (const FileError&) {
        return;
    }
}

// "file:/a/site.db?" and the settings. What has a meaning in such a name is escaped.
std::string AsUri(const std::string& path, const char* settings) {
    std::string uri = "file:";
    for (const char c : std::filesystem::absolute(path).string()) {
        if (c == '%' || c == '?' || c == '#') {
            std::array<char, 4> escaped{};
            std::snprintf(escaped.data(), escaped.size(), "%%%02X", static_cast<unsigned>(c));
            uri += escaped.data();
        } else {
            uri += c;
        }
    }
    return uri + "?" + settings;
}

// What SQLite takes for damage may be a read that the system refused.
bool MayPass(int code) {
    switch (code) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
        case SQLITE_NOMEM:
        case SQLITE_READONLY:
        case SQLITE_IOERR:
        case SQLITE_CORRUPT:
        case SQLITE_FULL:
        case SQLITE_CANTOPEN:
        case SQLITE_PROTOCOL:
        case SQLITE_NOTADB:
            return true;
        default:
            return false;
    }
}

bool HasBytes(const std::string& path) {
    std::error_code error;
    return std::filesystem::file_size(path, error) > 0 && !error;
}

std::string SetUserVersion(int64_t version) {
    return "PRAGMA user_version = " + std::to_string(version);
}

constexpr Questions kQuestions = {
    "PRAGMA data_version",
    "PRAGMA schema_version",
    "SELECT name FROM pragma_table_info(?)",
    "PRAGMA user_version",
    "SELECT 1 FROM sqlite_schema",
    SetUserVersion,
    "CREATE TRIGGER AlarmLog_StaysAcknowledged"
    " AFTER UPDATE OF pagerstate, alarmack ON AlarmLog"
    " WHEN NEW.alarmack NOT IN ('', '0') AND NEW.pagerstate <> '1' BEGIN"
    " UPDATE AlarmLog SET pagerstate = '1' WHERE row_id = NEW.row_id; END",
    // It looks at the rows themselves.
    "SELECT ?, ?",
    "CAST((julianday('now') - 2440587.5) * 86400000 AS INTEGER)",
    "",
};

struct Closer {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};
struct Finalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

// "site.db: no such table: AlarmLog": throws what has just failed. None: there was no memory.
[[noreturn]] void Fail(const std::string& path, sqlite3* database) {
    const std::string text = path + ": " + (database ? sqlite3_errmsg(database) : "no memory");
    if (database != nullptr && sqlite3_errcode(database) == SQLITE_TOOBIG) {
        throw RowTooLarge(text);
    }
    if (database == nullptr || MayPass(sqlite3_errcode(database))) {
        throw StoreAway(text);
    }
    throw StoreError(text);
}

class SqliteStatement final : public DriverStatement {
 public:
    SqliteStatement(const std::string& path, sqlite3* database, const std::string& sql)
        : path_(path), database_(database) {
        sqlite3_stmt* made = nullptr;
        Require(sqlite3_prepare_v3(database, sql.c_str(), static_cast<int>(sql.size()),
                                   SQLITE_PREPARE_PERSISTENT, &made, nullptr));
        statement_.reset(made);
    }

    bool IsReadOnly() const override { return sqlite3_stmt_readonly(statement_.get()) != 0; }

    void Bind(int place, std::string_view text) override {
        // A null pointer would bind NULL, which is not the empty text.
        const char* bytes = text.data() == nullptr ? "" : text.data();
        Require(sqlite3_bind_text64(statement_.get(), place, bytes, text.size(), SQLITE_STATIC,
                                    SQLITE_UTF8));
    }

    void Bind(int place, int64_t number) override {
        Require(sqlite3_bind_int64(statement_.get(), place, number));
    }

    void BindNull(int place) override { Require(sqlite3_bind_null(statement_.get(), place)); }

    bool Step() override {
        switch (sqlite3_step(statement_.get())) {
            case SQLITE_ROW:
                return true;
            case SQLITE_DONE:
                return false;
            default:
                Fail(path_, database_);
        }
    }

    std::string_view Text(int column) const override {
        const unsigned char* text = sqlite3_column_text(statement_.get(), column);
        return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
    }

    int64_t Number(int column) const override {
        return sqlite3_column_int64(statement_.get(), column);
    }

    bool IsNull(int column) const override {
        return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
    }

    int Columns() const override { return sqlite3_column_count(statement_.get()); }

    void Reset() noexcept override {
        sqlite3_reset(statement_.get());
        sqlite3_clear_bindings(statement_.get());
    }

 private:
    void Require(int result) const {
        if (result != SQLITE_OK) {
            Fail(path_, database_);
        }
    }

    const std::string& path_;
    sqlite3* const database_;
    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
};

class SqliteDriver final : public Driver {
 public:
    SqliteDriver(const std::string& path, Connection::Mode mode);

    const Features& Can() const override {
        static const Features features{true, true, false, false};
        return features;
    }

    std::unique_ptr<DriverStatement> Prepare(const std::string& sql) override {
        return std::make_unique<SqliteStatement>(path_, database_.get(), sql);
    }

    void Run(const std::string& sql) override {
        if (sqlite3_exec(database_.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
            Fail(path_, database_.get());
        }
    }

    void Begin() override { Run("BEGIN IMMEDIATE"); }
    void Commit() override { Run("COMMIT"); }
    void RollBack() override { Run("ROLLBACK"); }
    bool InTransaction() const override { return sqlite3_get_autocommit(database_.get()) == 0; }

    bool WasRefused() const override {
        const int code = sqlite3_errcode(database_.get());
        return code == SQLITE_FULL || code == SQLITE_IOERR;
    }

    int32_t Changes() const override { return sqlite3_changes(database_.get()); }
    int64_t TotalChanges() const override { return sqlite3_total_changes64(database_.get()); }

    const Questions& Asks() const override { return kQuestions; }

    bool IsAtRest() const override { return at_rest_; }

    void LeaveLog() override {
        int on = 1;
        sqlite3_file_control(database_.get(), "main", SQLITE_FCNTL_PERSIST_WAL, &on);
    }

    // Nothing of a transaction is written before its commit.
    void WriteAtCommit() override { Run("PRAGMA cache_spill = OFF; PRAGMA temp_store = MEMORY"); }

    void AllowAnyLength(bool allow) override {
        sqlite3_limit(database_.get(), SQLITE_LIMIT_LENGTH,
                      allow ? std::numeric_limits<int>::max() : kLongestCell);
    }

 private:
    void Open(const std::string& name, int flags);
    void OpenToWrite();
    void OpenToLook();

    const std::string path_;
    bool at_rest_ = false;
    std::unique_ptr<sqlite3, Closer> database_;
};

SqliteDriver::SqliteDriver(const std::string& path, Connection::Mode mode) : path_(path) {
    if (mode == Connection::Mode::kCreate) {
        MakeFile(path);
    }
    RequireFile(path);
    if (mode == Connection::Mode::kLook || access(path.c_str(), W_OK) != 0) {
        OpenToLook();
    } else {
        OpenToWrite();
    }
}

void SqliteDriver::Open(const std::string& name, int flags) {
    sqlite3* database = nullptr;
    const int result = sqlite3_open_v2(name.c_str(), &database, kFlags | flags, nullptr);
    database_.reset(database);
    if (result != SQLITE_OK) {
        Fail(path_, database);
    }
    sqlite3_busy_timeout(database, static_cast<int>(kBusyTimeout.count()));
    SqliteDriver::AllowAnyLength(false);
}

void SqliteDriver::OpenToWrite() {
    MakeJournals(path_);
    Open(path_, SQLITE_OPEN_READWRITE);
    // What can't be opened to be written SQLite opens to be read: for good, whatever the reason
    // was.
    if (sqlite3_db_readonly(database_.get(), "main") != 0) {
        throw StoreAway(path_ + ": can't be opened to be written");
    }
    SqliteDriver::Run(kSettings);
}

// Without a journal there is nothing beside the database to be read, and SQLite makes no journal
// for a file that it takes for one that nobody changes. With one, it reads both, and the index of
// the journal as whoever writes keeps it.
void SqliteDriver::OpenToLook() {
    const bool has_index = IsThere(path_ + "-shm");
    at_rest_ = !IsThere(path_ + "-wal") || !has_index;
    if (!has_index && HasBytes(path_ + "-wal")) {
        throw StoreError(path_ +
                         ": was left in the midst of a change; the next that may write to it puts "
                         "it right: pagerfwd init");
    }
    Open(AsUri(path_, at_rest_ ? "immutable=1" : "readonly_shm=1"),
         SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
}

}  // namespace

std::unique_ptr<Driver> OpenSqlite(const std::string& path, Connection::Mode mode) {
    return std::make_unique<SqliteDriver>(path, mode);
}

}  // namespace host
