// SQLite behind three small classes. Tested by tests/unit/host/connection_test.cpp.
#include "host/store/connection.h"

#include <sqlite3.h>

#include <chrono>
#include <filesystem>

namespace host {
namespace {

// Longer than any write here takes, shorter than an operator's patience. SQLite adds up its own
// pauses and looks at no clock, so a simulated one doesn't shorten this.
constexpr std::chrono::milliseconds kBusyTimeout{10000};

// With a write-ahead log, a reader never waits; with FULL, each commit is on the disk when it
// returns: a page that was answered as queued survives a power cut.
constexpr const char* kSettings =
    "PRAGMA journal_mode = WAL;"
    "PRAGMA synchronous = FULL;";

int OpenFlags(Connection::Mode mode) {
    // One thread at a time: SQLite's own mutexes aren't needed.
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
    return mode == Connection::Mode::kCreate ? flags | SQLITE_OPEN_CREATE : flags;
}

}  // namespace

void Connection::Closer::operator()(sqlite3* database) const {
    sqlite3_close(database);
}

Connection::Connection(const std::string& path, Mode mode) : path_(path) {
    if (mode == Mode::kExisting && !std::filesystem::exists(path)) {
        throw StoreError(path + ": there is no such database; make it with: pagerfwd init");
    }
    sqlite3* database = nullptr;
    const int result = sqlite3_open_v2(path.c_str(), &database, OpenFlags(mode), nullptr);
    database_.reset(database);
    if (result != SQLITE_OK) {
        throw LastError();
    }
    sqlite3_busy_timeout(database, static_cast<int>(kBusyTimeout.count()));
    Execute(kSettings);
}

void Connection::Execute(const char* sql) {
    if (sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw LastError();
    }
}

int32_t Connection::Changes() const {
    return sqlite3_changes(database_.get());
}

bool Connection::InTransaction() const {
    return sqlite3_get_autocommit(database_.get()) == 0;
}

StoreError Connection::LastError() const {
    // No object at all means that there was no memory for one.
    return StoreError(path_ + ": " + (database_ ? sqlite3_errmsg(database_.get()) : "no memory"));
}

void Statement::Finalizer::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

Statement::Statement(Connection& connection, const std::string& sql) : connection_(connection) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(connection.database_.get(), sql.c_str(), static_cast<int>(sql.size()),
                           &statement, nullptr) != SQLITE_OK) {
        throw connection.LastError();
    }
    statement_.reset(statement);
}

Statement& Statement::Bind(std::string_view text) {
    // A null pointer would bind NULL, which is not the empty text.
    const char* bytes = text.data() == nullptr ? "" : text.data();
    if (sqlite3_bind_text64(statement_.get(), ++bound_, bytes, text.size(), SQLITE_STATIC,
                            SQLITE_UTF8) != SQLITE_OK) {
        throw connection_.LastError();
    }
    return *this;
}

Statement& Statement::Bind(int64_t number) {
    if (sqlite3_bind_int64(statement_.get(), ++bound_, number) != SQLITE_OK) {
        throw connection_.LastError();
    }
    return *this;
}

bool Statement::Step() {
    switch (sqlite3_step(statement_.get())) {
        case SQLITE_ROW:
            return true;
        case SQLITE_DONE:
            return false;
        default:
            throw connection_.LastError();
    }
}

void Statement::Run() {
    while (Step()) {
    }
}

std::string_view Statement::Text(int column) const {
    const unsigned char* text = sqlite3_column_text(statement_.get(), column);
    return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

int64_t Statement::Number(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

WriteTransaction::WriteTransaction(Connection& connection) : connection_(connection) {
    connection_.Execute("BEGIN IMMEDIATE");
}

WriteTransaction::~WriteTransaction() {
    if (!connection_.InTransaction()) {
        return;
    }
    try {
        connection_.Execute("ROLLBACK");
    } catch (const StoreError&) {
        // Whoever keeps the connection sees that it is still in a transaction, and drops it.
        return;
    }
}

void WriteTransaction::Commit() {
    connection_.Execute("COMMIT");
}

}  // namespace host
