// PostgreSQL, by libpq. Tested by tests/unit/host/postgres_test.cpp, and by the contract.
#include <libpq-fe.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "host/store/database_name.h"
#include "host/store/driver.h"
#include "host/store/postgres_sql.h"

namespace host {
namespace {

// Nothing that is asked of a server may take for ever: neither the network, nor the server, nor
// another who has the right to write. A server that lost us lets go of our locks as soon.
constexpr const char* kSettings =
    "SET statement_timeout = '30s'; SET lock_timeout = '10s';"
    "SET idle_in_transaction_session_timeout = '60s';"
    "SET tcp_keepalives_idle = 5; SET tcp_keepalives_interval = 2; SET tcp_keepalives_count = 3;"
    "SET tcp_user_timeout = '10s'; SET standard_conforming_strings = on;"
    // What is committed is on the server's disk.
    "SELECT set_config('synchronous_commit', 'on', false)"
    " WHERE current_setting('synchronous_commit') = 'off'";

// For who writes: one at a time, as with a file.
constexpr const char* kBegin = "BEGIN; SELECT pg_advisory_xact_lock(1346455379, 1)";

std::string CommentWithVersion(int64_t version) {
    return "COMMENT ON TABLE Host_Settings IS '" + std::to_string(version) + "'";
}

constexpr Questions kQuestions = {
    // Changes with every transaction that ends, whoever made it.
    "SELECT hashtextextended(pg_current_snapshot()::text, 0)",
    // Whoever changes the tables does so while nobody else is there.
    "SELECT 1",
    "SELECT attname FROM pg_attribute WHERE attrelid = to_regclass(lower(?))"
    " AND attnum > 0 AND NOT attisdropped ORDER BY attnum",
    "SELECT CAST(obj_description(to_regclass('host_settings')) AS INTEGER)",
    "SELECT 1 FROM pg_class WHERE relnamespace = current_schema()::regnamespace"
    " AND relkind IN ('r', 'p', 'v', 'f') LIMIT 1",
    CommentWithVersion,
    "CREATE FUNCTION AlarmLog_StaysAcknowledged() RETURNS trigger LANGUAGE plpgsql AS"
    " 'BEGIN IF NEW.alarmack NOT IN ('''', ''0'') THEN NEW.pagerstate := ''1''; END IF;"
    " RETURN NEW; END';"
    "CREATE TRIGGER AlarmLog_StaysAcknowledged BEFORE UPDATE OF pagerstate, alarmack ON AlarmLog"
    " FOR EACH ROW EXECUTE FUNCTION AlarmLog_StaysAcknowledged()",
};

struct Finisher {
    void operator()(PGconn* connection) const { PQfinish(connection); }
};
struct Clearer {
    void operator()(PGresult* result) const { PQclear(result); }
};
using Result = std::unique_ptr<PGresult, Clearer>;

// Classes of errors, as SQLSTATE begins with them, that may pass by themselves.
bool MayPass(std::string_view state) {
    for (const std::string_view passing : {"08", "25006", "40", "53", "55P03", "57", "58"}) {
        if (state.substr(0, passing.size()) == passing) {
            return true;
        }
    }
    return false;
}

// In one line: a server breaks what it says, and indents it.
std::string OneLine(const char* message) {
    std::istringstream words(message);
    std::string line;
    for (std::string word; words >> word;) {
        line += (line.empty() ? "" : " ") + word;
    }
    return line;
}

class PostgresDriver final : public Driver {
 public:
    PostgresDriver(const std::string& name, Connection::Mode mode)
        : name_(name), shown_(ShownName(name)), looks_(mode == Connection::Mode::kLook) {
        Connect();
    }

    const Features& Can() const override {
        static const Features features{false, false, true};
        return features;
    }
    const Questions& Asks() const override { return kQuestions; }

    std::unique_ptr<DriverStatement> Prepare(const std::string& sql) override;

    void Run(const std::string& sql) override {
        BeThere();
        Take(PQexec(connection_.get(), ForPostgres(sql).c_str()));
    }

    void Begin() override {
        BeThere();
        begun_ = true;
        try {
            Take(PQexec(connection_.get(), kBegin));
        } catch (const StoreError&) {
            RollBack();
            throw;
        }
    }

    void Commit() override {
        const Result result = Take(PQexec(connection_.get(), "COMMIT"));
        begun_ = false;
        if (PQcmdStatus(result.get()) != std::string_view("COMMIT")) {
            throw StoreError(shown_ + ": the changes were undone: one of them had failed");
        }
    }

    // What a server loses sight of it undoes by itself.
    void RollBack() override {
        begun_ = false;
        if (IsThere()) {
            Take(PQexec(connection_.get(), "ROLLBACK"));
        }
    }

    bool InTransaction() const override { return begun_; }
    bool WasRefused() const override { return false; }
    int32_t Changes() const override { return changes_; }
    int64_t TotalChanges() const override { return total_changes_; }
    void AllowAnyLength(bool allow) override { any_length_ = allow; }

    // --- For its statements.

    bool AnyLength() const { return any_length_; }
    PGconn* Get() { return connection_.get(); }
    // Another whenever the connection was made anew: what was prepared is gone then.
    int64_t Epoch() const { return epoch_; }
    std::string NewName() { return "s" + std::to_string(++names_); }

    // Makes the connection again, where it was lost; within a transaction it stays so.
    void BeThere() {
        if (IsThere()) {
            return;
        }
        if (begun_) {
            throw StoreAway(shown_ + ": the connection was lost");
        }
        Connect();
    }

    // Throws what has gone wrong.
    Result Take(PGresult* made) {
        Result result(made);
        const ExecStatusType status = PQresultStatus(made);
        if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK) {
            Fail(made);
        }
        const std::string_view command = PQcmdStatus(made);
        if (command.substr(0, 6) != "SELECT" && *PQcmdTuples(made) != '\0') {
            changes_ = std::atoi(PQcmdTuples(made));  // NOLINT(cert-err34-c): the server's own
            total_changes_ += changes_;
        }
        return result;
    }

    [[noreturn]] void TooLarge() const { throw RowTooLarge(shown_ + ": a text is too large"); }

 private:
    bool IsThere() const {
        return connection_ != nullptr && PQstatus(connection_.get()) == CONNECTION_OK;
    }

    [[noreturn]] void Fail(const PGresult* result) const {
        const char* const state = PQresultErrorField(result, PG_DIAG_SQLSTATE);
        const std::string text = shown_ + ": " +
                                 OneLine(result == nullptr ? PQerrorMessage(connection_.get())
                                                           : PQresultErrorMessage(result));
        if (!IsThere() || state == nullptr || MayPass(state)) {
            throw StoreAway(text);
        }
        throw StoreError(text);
    }

    void Connect();
    void RequireName() const;
    void RequireEncoding() const;

    const std::string name_;
    const std::string shown_;
    const bool looks_;
    std::unique_ptr<PGconn, Finisher> connection_;
    int64_t epoch_ = 0;
    int64_t names_ = 0;
    bool begun_ = false;
    bool any_length_ = false;
    int32_t changes_ = 0;
    int64_t total_changes_ = 0;
};

// What stands before the name it may say otherwise, what stands behind it not. A character of
// LATIN1 is a byte, and every byte is one: so texts of any encoding come back as they were.
void PostgresDriver::Connect() {
    const std::array<std::pair<const char*, const char*>, 8> settings = {{
        {"connect_timeout", "5"},
        {"keepalives_idle", "5"},
        {"keepalives_interval", "2"},
        {"keepalives_count", "3"},
        {"tcp_user_timeout", "10000"},
        {"fallback_application_name", "pagerfwd"},
        {"dbname", name_.c_str()},
        {"client_encoding", "LATIN1"},
    }};
    std::vector<const char*> keywords;
    std::vector<const char*> values;
    for (const auto& [keyword, value] : settings) {
        keywords.push_back(keyword);
        values.push_back(value);
    }
    keywords.push_back(nullptr);
    values.push_back(nullptr);
    RequireName();
    connection_.reset(PQconnectdbParams(keywords.data(), values.data(), 1));
    ++epoch_;
    if (!IsThere()) {
        throw StoreAway(shown_ + ": " + OneLine(PQerrorMessage(connection_.get())));
    }
    PQsetNoticeProcessor(
        connection_.get(), [](void* /*nobody*/, const char* /*said*/) {}, nullptr);
    RequireEncoding();
    Take(PQexec(connection_.get(), kSettings));
    if (looks_) {
        Take(PQexec(connection_.get(), "SET default_transaction_read_only = on"));
    }
}

// What libpq says of a name may quote parts of it, such as a password with a sign that it lacks.
void PostgresDriver::RequireName() const {
    PQconninfoOption* const options = PQconninfoParse(name_.c_str(), nullptr);
    PQconninfoFree(options);
    if (options == nullptr) {
        throw StoreError(shown_ + ": isn't the name of a database on a server");
    }
}

void PostgresDriver::RequireEncoding() const {
    const char* const encoding = PQparameterStatus(connection_.get(), "server_encoding");
    for (const char* const good : {"UTF8", "LATIN1", "SQL_ASCII"}) {
        if (encoding != nullptr && std::string_view(encoding) == good) {
            return;
        }
    }
    throw StoreError(shown_ + ": its encoding can't hold every text; make it with UTF8");
}

// Its rows are in memory as a whole, so that another may be asked meanwhile. From its second use
// on, the server keeps it prepared.
class PostgresStatement final : public DriverStatement {
 public:
    PostgresStatement(PostgresDriver& driver, const std::string& sql)
        : driver_(driver), sql_(ForPostgres(sql)) {}

    // Only those ask that keep refused writes.
    bool IsReadOnly() const override { return true; }

    void Bind(int place, std::string_view text) override {
        values_.resize(static_cast<size_t>(place));
        values_.back() = text;
    }
    void Bind(int place, int64_t number) override { Bind(place, std::to_string(number)); }

    bool Step() override {
        if (result_ == nullptr) {
            Execute();
            row_ = -1;
        }
        if (row_ + 1 >= PQntuples(result_.get())) {
            return false;
        }
        ++row_;
        if (!driver_.AnyLength() && HasLargeCell()) {
            driver_.TooLarge();
        }
        return true;
    }

    // Large ones are seen as empty where they are allowed.
    std::string_view Text(int column) const override {
        return IsLarge(column) ? "" : PQgetvalue(result_.get(), row_, column);
    }

    // A truth is one, too.
    int64_t Number(int column) const override {
        const char* const text = PQgetvalue(result_.get(), row_, column);
        return *text == 't' ? 1 : std::strtoll(text, nullptr, 10);
    }

    int Columns() const override { return PQnfields(result_.get()); }

    void Reset() noexcept override {
        result_.reset();
        values_.clear();
    }

 private:
    bool IsLarge(int column) const {
        return PQgetlength(result_.get(), row_, column) > kLongestCell;
    }
    bool HasLargeCell() const {
        for (int column = 0; column < Columns(); ++column) {
            if (IsLarge(column)) {
                return true;
            }
        }
        return false;
    }

    void Execute() {
        driver_.BeThere();
        std::vector<const char*> values;
        for (const std::string& value : values_) {
            values.push_back(value.c_str());
        }
        const int count = static_cast<int>(values.size());
        if (!used_) {
            used_ = true;
            result_ = driver_.Take(PQexecParams(driver_.Get(), sql_.c_str(), count, nullptr,
                                                values.data(), nullptr, nullptr, 0));
            return;
        }
        if (epoch_ != driver_.Epoch()) {
            name_ = driver_.NewName();
            driver_.Take(PQprepare(driver_.Get(), name_.c_str(), sql_.c_str(), 0, nullptr));
            epoch_ = driver_.Epoch();
        }
        result_ = driver_.Take(PQexecPrepared(driver_.Get(), name_.c_str(), count, values.data(),
                                              nullptr, nullptr, 0));
    }

    PostgresDriver& driver_;
    const std::string sql_;
    std::vector<std::string> values_;
    Result result_;
    int row_ = -1;
    bool used_ = false;
    int64_t epoch_ = 0;  // of the driver, when it was prepared
    std::string name_;
};

std::unique_ptr<DriverStatement> PostgresDriver::Prepare(const std::string& sql) {
    return std::make_unique<PostgresStatement>(*this, sql);
}

}  // namespace

bool HasPostgres() {
    return true;
}

std::unique_ptr<Driver> OpenPostgres(const std::string& name, Connection::Mode mode) {
    return std::make_unique<PostgresDriver>(name, mode);
}

}  // namespace host
