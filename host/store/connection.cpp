// SQLite behind three small classes. Tested by tests/unit/host/connection_test.cpp.
#include "host/store/connection.h"

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
#include <string_view>
#include <system_error>
#include <utility>

#include "host/files/shared_file.h"

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

// More than the table store and the commands ever use; without a limit, a caller that builds a new
// text each time would fill the memory.
constexpr size_t kMostKept = 64;

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

// SQLite gives its journals the mode of the database, but the group of whoever comes first. What
// can't be done here it says itself. Nothing is opened while this process may have the database
// open, which has a journal then: closing it would end the locks that SQLite holds.
void MakeJournals(const std::string& path) {
    if (IsThere(path + "-wal") || !IsDatabase(path)) {
        return;
    }
    try {
        const Ownership ownership = OwnershipOf(path);
        MakeShared(path + "-shm", ownership);
        MakeShared(path + "-wal", ownership);
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

}  // namespace

void Connection::Closer::operator()(sqlite3* database) const {
    sqlite3_close(database);
}

Connection::Connection(const std::string& path, Mode mode) : path_(path) {
    if (mode == Mode::kCreate) {
        MakeFile(path);
    }
    RequireFile(path);
    if (mode == Mode::kLook || access(path.c_str(), W_OK) != 0) {
        OpenToLook();
    } else {
        OpenToWrite();
    }
}

void Connection::Open(const std::string& name, int flags) {
    sqlite3* database = nullptr;
    const int result = sqlite3_open_v2(name.c_str(), &database, kFlags | flags, nullptr);
    database_.reset(database);
    if (result != SQLITE_OK) {
        Fail();
    }
    sqlite3_busy_timeout(database, static_cast<int>(kBusyTimeout.count()));
    sqlite3_limit(database, SQLITE_LIMIT_LENGTH, kLongestCell);
}

Connection::AnyLength::AnyLength(Connection& connection) : connection_(connection) {
    sqlite3_limit(connection_.database_.get(), SQLITE_LIMIT_LENGTH,
                  std::numeric_limits<int>::max());
}

Connection::AnyLength::~AnyLength() {
    sqlite3_limit(connection_.database_.get(), SQLITE_LIMIT_LENGTH, kLongestCell);
}

void Connection::OpenToWrite() {
    MakeJournals(path_);
    Open(path_, SQLITE_OPEN_READWRITE);
    // What can't be opened to be written SQLite opens to be read: for good, whatever the reason
    // was.
    if (sqlite3_db_readonly(database_.get(), "main") != 0) {
        throw StoreAway(path_ + ": can't be opened to be written");
    }
    Execute(kSettings);
}

// Without a journal there is nothing beside the database to be read, and SQLite makes no journal
// for a file that it takes for one that nobody changes. With one, it reads both, and the index of
// the journal as whoever writes keeps it.
void Connection::OpenToLook() {
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

Connection::~Connection() = default;

void Connection::KeepRefused(HeldWrites& held) {
    if (std::exchange(held_, &held) != nullptr) {
        return;
    }
    // Nothing of a transaction is written before its commit.
    Run("PRAGMA cache_spill = OFF; PRAGMA temp_store = MEMORY");
}

Connection::Sight::Sight(Connection& connection) : connection_(connection) {
    if (connection_.held_ != nullptr && connection_.held_->Any() && !connection_.InTransaction()) {
        connection_.around_ = std::make_unique<WriteTransaction>(connection_);
    }
    ++connection_.in_sight_;
}

Connection::Sight::~Sight() {
    if (--connection_.in_sight_ > 0 || connection_.around_ == nullptr) {
        return;
    }
    const std::unique_ptr<WriteTransaction> around = std::move(connection_.around_);
    try {
        around->Commit();
    } catch (const std::exception&) {
        // What is kept stays so.
        return;
    }
}

bool Connection::WasRefused() const {
    const int code = sqlite3_errcode(database_.get());
    return code == SQLITE_FULL || code == SQLITE_IOERR;
}

void Connection::Execute(const char* sql) {
    const Sight sight(*this);
    Run(sql);
    if (record_ != nullptr) {
        record_->push_back({sql, {}});
    }
}

void Connection::Run(const char* sql) {
    if (sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        Fail();
    }
}

void Connection::LeaveLog() {
    int on = 1;
    sqlite3_file_control(database_.get(), "main", SQLITE_FCNTL_PERSIST_WAL, &on);
}

int32_t Connection::Changes() const {
    return sqlite3_changes(database_.get());
}

int64_t Connection::TotalChanges() const {
    return sqlite3_total_changes64(database_.get());
}

int64_t Connection::Version() {
    return Statement(*this, "PRAGMA data_version").FirstNumber();
}

int64_t Connection::SchemaVersion() {
    return Statement(*this, "PRAGMA schema_version").FirstNumber();
}

std::vector<std::string> Connection::ColumnsOf(std::string_view table) {
    return Statement(*this, "SELECT name FROM pragma_table_info(?)").Bind(table).Texts();
}

bool Connection::InTransaction() const {
    return sqlite3_get_autocommit(database_.get()) == 0;
}

void Connection::Fail() const {
    // No object at all means that there was no memory for one.
    const std::string text =
        path_ + ": " + (database_ ? sqlite3_errmsg(database_.get()) : "no memory");
    if (database_ && sqlite3_errcode(database_.get()) == SQLITE_TOOBIG) {
        throw RowTooLarge(text);
    }
    if (database_ == nullptr || MayPass(sqlite3_errcode(database_.get()))) {
        throw StoreAway(text);
    }
    throw StoreError(text);
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
        Fail();
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
    : connection_(connection),
      sight_(connection),
      kept_(connection.Take(sql)),
      statement_(kept_.mapped().get()) {
    if (connection_.record_ != nullptr && sqlite3_stmt_readonly(statement_) == 0) {
        noted_ = HeldWrite{sql, {}};
    }
}

Statement::~Statement() {
    connection_.Keep(std::move(kept_));
}

Statement& Statement::Bind(std::string_view text) {
    // A null pointer would bind NULL, which is not the empty text.
    const char* bytes = text.data() == nullptr ? "" : text.data();
    if (sqlite3_bind_text64(statement_, ++bound_, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8) !=
        SQLITE_OK) {
        connection_.Fail();
    }
    if (noted_) {
        noted_->values.emplace_back(std::string(text));
    }
    return *this;
}

Statement& Statement::Bind(int64_t number) {
    if (sqlite3_bind_int64(statement_, ++bound_, number) != SQLITE_OK) {
        connection_.Fail();
    }
    if (noted_) {
        noted_->values.emplace_back(number);
    }
    return *this;
}

bool Statement::Step() {
    if (noted_) {
        connection_.record_->push_back(std::move(*noted_));
        noted_.reset();
    }
    switch (sqlite3_step(statement_)) {
        case SQLITE_ROW:
            return true;
        case SQLITE_DONE:
            return false;
        default:
            connection_.Fail();
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

int Statement::Columns() const {
    return sqlite3_column_count(statement_);
}

int64_t Statement::Number(int column) const {
    return sqlite3_column_int64(statement_, column);
}

std::vector<std::string> Statement::Texts() {
    std::vector<std::string> texts;
    while (Step()) {
        texts.emplace_back(Text(0));
    }
    return texts;
}

std::vector<int64_t> Statement::Numbers() {
    std::vector<int64_t> numbers;
    while (Step()) {
        numbers.push_back(Number(0));
    }
    return numbers;
}

int64_t Statement::FirstNumber() {
    return Step() ? Number(0) : 0;
}

WriteTransaction::WriteTransaction(Connection& connection) : connection_(connection) {
    connection_.Run("BEGIN IMMEDIATE");
    if (connection_.held_ == nullptr) {
        return;
    }
    try {
        connection_.held_->Replay(connection_);
    } catch (...) {
        RollBack();
        throw;
    }
    connection_.record_ = &writes_;
}

WriteTransaction::~WriteTransaction() {
    connection_.record_ = nullptr;
    RollBack();
}

void WriteTransaction::RollBack() noexcept {
    if (!connection_.InTransaction()) {
        return;
    }
    try {
        connection_.Run("ROLLBACK");
    } catch (const StoreError&) {
        // Whoever keeps the connection sees that it is still in a transaction, and drops it.
        return;
    }
}

void WriteTransaction::Commit() {
    connection_.record_ = nullptr;
    if (connection_.held_ == nullptr) {
        connection_.Run("COMMIT");
    } else {
        connection_.held_->Commit(connection_, std::move(writes_));
    }
}

}  // namespace host
