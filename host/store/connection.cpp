// Connections and statements. Tested by tests/unit/host/connection_test.cpp.
#include "host/store/connection.h"

#include <utility>

#include "host/store/database_name.h"
#include "host/store/driver.h"
#include "host/store/tables/nodes.h"

namespace host {
namespace {

// More than the table store and the commands ever use; without a limit, a caller that builds a new
// text each time would fill the memory.
constexpr size_t kMostKept = 64;

std::string WordsFor(const Tenure& tenure) {
    return "pagerfwd, term " + std::to_string(tenure.term) + " of " + tenure.node +
           (tenure.line.empty() ? "" : ", line " + tenure.line);
}

std::unique_ptr<Driver> Open(const std::string& path, Connection::Mode mode) {
    if (path.size() > kLongestDatabaseName) {
        throw StoreError("the database's name has more than " +
                         std::to_string(kLongestDatabaseName) + " bytes");
    }
    return IsOnServer(path) ? OpenPostgres(path, mode) : OpenSqlite(path, mode);
}

}  // namespace

Connection::Connection(const std::string& path, Mode mode)
    : path_(path), driver_(Open(path, mode)) {}

std::string Connection::Name() const {
    return ShownName(path_);
}

Connection::~Connection() = default;

const Features& Connection::Can() const {
    return driver_->Can();
}

bool Connection::IsAtRest() const {
    return driver_->IsAtRest();
}

Connection::AnyLength::AnyLength(Connection& connection) : connection_(connection) {
    connection_.driver_->AllowAnyLength(true);
}

Connection::AnyLength::~AnyLength() {
    connection_.driver_->AllowAnyLength(false);
}

void Connection::KeepRefused(HeldWrites& held) {
    if (Can().keeps_refused && std::exchange(held_, &held) == nullptr) {
        driver_->WriteAtCommit();
    }
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

void Connection::Execute(const std::string& sql) {
    const Sight sight(*this);
    driver_->Run(sql);
    if (record_ != nullptr) {
        record_->push_back({sql, {}});
    }
}

void Connection::WriteAs(Tenure tenure) {
    driver_->SayWhose(WordsFor(tenure));
    tenure_ = std::move(tenure);
}

void Connection::LeaveLog() {
    driver_->LeaveLog();
}

int32_t Connection::Changes() const {
    return driver_->Changes();
}

int64_t Connection::TotalChanges() const {
    return driver_->TotalChanges();
}

int64_t Connection::Version() {
    return Statement(*this, driver_->Asks().version).FirstNumber();
}

int64_t Connection::SchemaVersion() {
    return Statement(*this, driver_->Asks().schema_version).FirstNumber();
}

std::vector<std::string> Connection::ColumnsOf(std::string_view table) {
    return Statement(*this, driver_->Asks().columns_of).Bind(table).Texts();
}

void Connection::GoOnBehind(const std::string& table) {
    const int64_t last =
        Statement(*this, "SELECT coalesce(max(row_id), 0) FROM " + table).FirstNumber();
    Statement(*this, driver_->Asks().go_on_at).Bind(table).Bind(last + 1).Run();
}

int64_t Connection::MadeBy() {
    return Statement(*this, driver_->Asks().made_by).FirstNumber();
}

void Connection::SetMadeBy(int64_t version) {
    Execute(driver_->Asks().set_made_by(version));
}

bool Connection::HasTables() {
    return Statement(*this, driver_->Asks().has_tables).Step();
}

const char* Connection::StaysAcknowledged() const {
    return driver_->Asks().stays_acknowledged;
}

bool Connection::TookEffect(const StoreInDoubt& doubt) {
    return driver_->TookEffect(doubt.Transaction());
}

std::string Connection::Clock() const {
    return driver_->Asks().clock;
}

std::string Connection::MakesClock() const {
    return driver_->Asks().makes_clock;
}

bool Connection::InTransaction() const {
    return driver_->InTransaction();
}

Connection::KeptStatements::node_type Connection::Take(const std::string& sql) {
    if (auto kept = kept_.extract(sql)) {
        return kept;
    }
    return kept_.extract(kept_.emplace(sql, driver_->Prepare(sql)).first);
}

// What was borrowed from the caller is let go of here, and so is the statement's hold on the
// database. Of two that were in use at once, the second is ended.
void Connection::Keep(KeptStatements::node_type statement) noexcept {
    statement.mapped()->Reset();
    if (kept_.size() < kMostKept) {
        kept_.insert(std::move(statement));
    }
}

Statement::Statement(Connection& connection, const std::string& sql)
    : connection_(connection),
      sight_(connection),
      kept_(connection.Take(sql)),
      statement_(*kept_.mapped()) {
    if (connection_.record_ != nullptr && !statement_.IsReadOnly()) {
        noted_ = HeldWrite{sql, {}};
    }
}

Statement::~Statement() {
    connection_.Keep(std::move(kept_));
}

Statement& Statement::Bind(std::string_view text) {
    statement_.Bind(++bound_, text);
    if (noted_) {
        noted_->values.emplace_back(std::string(text));
    }
    return *this;
}

Statement& Statement::BindNull() {
    statement_.BindNull(++bound_);
    if (noted_) {
        noted_->values.emplace_back(std::monostate());
    }
    return *this;
}

Statement& Statement::Bind(int64_t number) {
    statement_.Bind(++bound_, number);
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
    return statement_.Step();
}

void Statement::Run() {
    while (Step()) {
    }
}

std::string_view Statement::Text(int column) const {
    return statement_.Text(column);
}

bool Statement::IsNull(int column) const {
    return statement_.IsNull(column);
}

int Statement::Columns() const {
    return statement_.Columns();
}

int64_t Statement::Number(int column) const {
    return statement_.Number(column);
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
    connection_.driver_->Begin();
    try {
        Begin();
    } catch (...) {
        RollBack();
        throw;
    }
}

void WriteTransaction::Begin() {
    if (connection_.tenure_) {
        RequireTenure(connection_, *connection_.tenure_);
    }
    if (connection_.held_ != nullptr) {
        connection_.held_->Replay(connection_);
        connection_.record_ = &writes_;
    }
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
        connection_.driver_->RollBack();
    } catch (const StoreError&) {
        // Whoever keeps the connection sees that it is still in a transaction, and drops it.
        return;
    }
}

void WriteTransaction::Commit() {
    connection_.record_ = nullptr;
    if (connection_.held_ == nullptr) {
        connection_.driver_->Commit();
    } else {
        connection_.held_->Commit(connection_, std::move(writes_));
    }
}

}  // namespace host
