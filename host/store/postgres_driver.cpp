// PostgreSQL, by libpq. Tested by tests/unit/host/postgres_test.cpp, and by the contract.
#include <libpq-fe.h>
#include <poll.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/store/driver.h"
#include "host/store/postgres_questions.h"
#include "host/store/postgres_session.h"
#include "host/store/postgres_sql.h"

namespace host {
namespace {

// For who writes: one at a time, as with a file.
constexpr const char* kBegin = "BEGIN; SELECT pg_advisory_xact_lock(1346455379, 1)";

// Behind a commit whose answer was lost: some ten seconds.
constexpr int kBetweenLooks = 100;  // ms
constexpr int kMostLooks = 100;

class PostgresDriver final : public Driver {
 public:
    PostgresDriver(const std::string& name, Connection::Mode mode) : session_(name, mode) {}

    const Features& Can() const override {
        static const Features features{false, false, true, true};
        return features;
    }
    const Questions& Asks() const override { return PostgresQuestions(); }

    std::unique_ptr<DriverStatement> Prepare(const std::string& sql) override;

    void Run(const std::string& sql) override {
        BeThere();
        Take(session_.Ask(ForPostgres(sql)));
    }

    void Begin() override {
        BeThere();
        begun_ = true;
        try {
            session_.Ask(kBegin);
        } catch (const StoreError&) {
            RollBack();
            throw;
        }
    }

    void Commit() override;

    // What a server loses sight of it undoes by itself.
    void RollBack() override {
        begun_ = false;
        if (session_.IsThere()) {
            session_.Ask("ROLLBACK");
        }
    }

    bool TookEffect(const std::string& transaction) override {
        BeThere();
        const std::optional<bool> committed = session_.WasCommitted(transaction);
        if (!committed) {
            throw StoreAway(session_.Shown() + ": the server still works on a change");
        }
        return *committed;
    }

    bool InTransaction() const override { return begun_; }
    bool WasRefused() const override { return false; }
    int32_t Changes() const override { return changes_; }
    int64_t TotalChanges() const override { return total_changes_; }
    void AllowAnyLength(bool allow) override { any_length_ = allow; }
    void SayWhose(const std::string& words) override { session_.SayWhose(words); }

    // --- For its statements.

    bool AnyLength() const { return any_length_; }
    PostgresSession& Session() { return session_; }
    std::string NewName() { return "s" + std::to_string(++names_); }

    // Makes the connection again, where it was lost; within a transaction it stays so.
    void BeThere() {
        if (begun_ && !session_.IsThere()) {
            throw StoreAway(session_.Shown() + ": the connection was lost");
        }
        session_.BeThere();
    }

    // Notes what a statement has changed.
    PostgresResult Take(PostgresResult result) {
        PGresult* const made = result.get();
        const std::string_view command = PQcmdStatus(made);
        if (command.substr(0, 6) != "SELECT" && *PQcmdTuples(made) != '\0') {
            changes_ = std::atoi(PQcmdTuples(made));  // NOLINT(cert-err34-c): the server's own
            total_changes_ += changes_;
        }
        return result;
    }

    [[noreturn]] void TooLarge() const {
        throw RowTooLarge(session_.Shown() + ": a text is too large");
    }

 private:
    bool FoundOut(const std::string& transaction);

    PostgresSession session_;
    int64_t names_ = 0;
    bool begun_ = false;
    bool any_length_ = false;
    int32_t changes_ = 0;
    int64_t total_changes_ = 0;
};

// Where the answer doesn't come, the server may have made the change or not.
void PostgresDriver::Commit() {
    const std::string transaction = session_.TransactionNumber();
    begun_ = false;
    PostgresResult result;
    try {
        result = session_.Ask("COMMIT");
    } catch (const StoreAway& away) {
        if (session_.IsThere() || transaction.empty() || !FoundOut(transaction)) {
            throw;
        }
        return;
    }
    if (PQcmdStatus(result.get()) != std::string_view("COMMIT")) {
        throw StoreError(session_.Shown() + ": the changes were undone: one of them had failed");
    }
}

// Whether it took effect. A server that comes back soon is waited for.
bool PostgresDriver::FoundOut(const std::string& transaction) {
    for (int looks = 0;; ++looks) {
        try {
            return TookEffect(transaction);
        } catch (const StoreAway& away) {
            if (looks == kMostLooks) {
                throw StoreInDoubt(away, transaction);
            }
        }
        poll(nullptr, 0, kBetweenLooks);
    }
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
    void BindNull(int place) override { values_.resize(static_cast<size_t>(place)); }

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

    bool IsNull(int column) const override { return PQgetisnull(result_.get(), row_, column) != 0; }

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
        PostgresSession& session = driver_.Session();
        if (!used_) {
            used_ = true;
            result_ = driver_.Take(session.Ask(sql_, values_));
            return;
        }
        if (epoch_ != session.Epoch()) {
            name_ = driver_.NewName();
            session.Prepare(name_, sql_);
            epoch_ = session.Epoch();
        }
        result_ = driver_.Take(session.AskPrepared(name_, values_));
    }

    PostgresDriver& driver_;
    const std::string sql_;
    PostgresSession::Values values_;
    PostgresResult result_;
    int row_ = -1;
    bool used_ = false;
    int64_t epoch_ = 0;  // of the session, when it was prepared
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
