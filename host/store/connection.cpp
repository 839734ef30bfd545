// SQLite behind three small classes. Tested by tests/unit/host/connection_test.cpp.
#include "host/store/connection.h"

#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <utility>

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

// More than the table store and the commands ever use; without a limit, a caller that builds a new
// text each time would fill the memory.
constexpr size_t kMostKept = 64;

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

void Connection::Finalizer::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

Connection::KeptStatements::node_type Connection::Take(const std::string& sql) {
    if (auto kept = kept_.extract(sql)) {
        return kept;
    }
    sqlite3_stmt* made = nullptr;
    if (sqlite3_prepare_v3(database_.get(), sql.c_str(), static_cast<int>(sql.size()),
                           SQLITE_PREPARE_PERSISTENT, &made, nullptr) != SQLITE_OK) {
        throw LastError();
    }
    std::unique_ptr<sqlite3_stmt, Finalizer> statement(made);
    return kept_.extract(kept_.emplace(sql, std::move(statement)).first);
}

// What was borrowed from the caller is let go of here, and so is the statement's hold on the
// database. Of two that were in use at once, the second is ended.
void Connection::Keep(KeptStatements::node_type statement) noexcept {
    sqlite3_reset(statement.mapped().get());
    sqlite3_clear_bindings(statement.mapped().get());
    if (kept_.size() < kMostKept) {
        kept_.insert(std::move(statement));
    }
}

Statement::Statement(Connection& connection, const std::string& sql)
    : connection_(connection), kept_(connection.Take(sql)), statement_(kept_.mapped().get()) {}

Statement::~Statement() {
    connection_.Keep(std::move(kept_));
}

Statement& Statement::Bind(std::string_view text) {
    // A null pointer would bind NULL, which is not the empty text.
    const char* bytes = text.data() == nullptr ? "" : text.data();
    if (sqlite3_bind_text64(statement_, ++bound_, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8) !=
        SQLITE_OK) {
        throw connection_.LastError();
    }
    return *this;
}

Statement& Statement::Bind(int64_t number) {
    if (sqlite3_bind_int64(statement_, ++bound_, number) != SQLITE_OK) {
        throw connection_.LastError();
    }
    return *this;
}

bool Statement::Step() {
    switch (sqlite3_step(statement_)) {
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
    const unsigned char* text = sqlite3_column_text(statement_, column);
    return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

int64_t Statement::Number(int column) const {
    return sqlite3_column_int64(statement_, column);
}

WriteTransaction::WriteTransaction(Connection& connection) : connection_(connection) {
    Statement(connection_, "BEGIN IMMEDIATE").Run();
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
    Statement(connection_, "COMMIT").Run();
}

}  // namespace host
