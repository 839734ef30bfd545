// A connection to a database, and the statements run over it. What kind of database it is, nobody
// needs to know who asks; what it can do tells Features.
//
// Order      A Connection outlives its Statements and its WriteTransaction.
// Threads    One thread at a time uses a connection; another may take it over.
// Errors     Everything here throws StoreError, whose text names the file and the reason.
#ifndef PAGERFWD_HOST_STORE_CONNECTION_H
#define PAGERFWD_HOST_STORE_CONNECTION_H

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/store/held_writes.h"

namespace host {

class StoreError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

// The store can't be used now: another program has it, the system refuses a read or a descriptor.
// It may work a moment later.
class StoreAway : public StoreError {
 public:
    // outage: in words that stay the same while it lasts; empty: each reason speaks for itself.
    explicit StoreAway(const std::string& reason, std::string outage = {})
        : StoreError(reason), outage_(std::move(outage)) {}

    const std::string& Outage() const { return outage_; }

 private:
    std::string outage_;
};

// The server was lost while it committed: whether the changes were made can be asked when it is
// back, by Connection::TookEffect. Until then they must not be made again.
class StoreInDoubt : public StoreAway {
 public:
    StoreInDoubt(const StoreAway& why, std::string transaction)
        : StoreAway(std::string(why.what()) + "; whether a change was made isn't known",
                    why.Outage()),
          transaction_(std::move(transaction)) {}

    const std::string& Transaction() const { return transaction_; }

 private:
    std::string transaction_;
};

class Driver;
class DriverStatement;
class WriteTransaction;

// A row that a statement met has a text or blob of more than this, in bytes: it can't be read.
class RowTooLarge : public StoreError {
 public:
    using StoreError::StoreError;
};
inline constexpr int kLongestCell = 1 << 20;

// Whether this program was built with PostgreSQL's client library; it always knows files of SQLite.
bool HasPostgres();

// What databases can do, and others can't.
struct Features {
    bool is_file;        // its name is a path: it can be away, replaced, copied, and on a full disk
    bool keeps_refused;  // what the file system refuses may be kept, see held_writes.h
    bool hides_large;    // while AnyLength lives, cells that are too large are seen as empty
    bool spans_hosts;    // programs of several hosts may have it open at once
};

// Whose a process is that writes: a node in one of its terms, or a line of it. A term ends when
// another has taken the node's lease, see tables/nodes.h.
struct Tenure {
    std::string node;
    int64_t term = 0;
    std::string line = {};  // empty: the node itself
};

// What was to be written belongs to another by now: the writer's term is over. Nothing was written.
class NotOurs : public StoreError {
 public:
    using StoreError::StoreError;
};

class Connection {
 public:
    //   kExisting  to read and write; only to read, where this user may do no more
    //   kCreate    the same, and makes the file, for its owner and group alone
    //   kLook      to read; makes no file beside it
    enum class Mode { kExisting, kCreate, kLook };

    // Opens it. What is committed from now on survives a power cut; readers and one writer, in any
    // process, don't stop each other; two writers wait for each other, up to ten seconds.
    explicit Connection(const std::string& path, Mode mode = Mode::kExisting);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    const Features& Can() const;

    // Whether it was opened to be looked at while nobody had it open: what is read is sound only
    // while that stays so.
    bool IsAtRest() const;

    // Statements without parameters, one behind the other.
    void Execute(const std::string& sql);

    // From now on a transaction that the file system refuses is kept, see held_writes.h, and what
    // is kept is seen: where the database can do so. held outlives the connection.
    void KeepRefused(HeldWrites& held);

    // From now on each transaction begins with the proof that the tenure holds, and throws NotOurs
    // where it doesn't: whoever ends it writes, too, and so can't do so before the transaction
    // ends. A server shows its sessions by this: "pagerfwd, term 3 of north, line north 1".
    void WriteAs(Tenure tenure);

    bool HasTenure() const { return tenure_.has_value(); }

    // The end of the connection leaves the files beside the database as they are: they may be those
    // of another that has its name by now.
    void LeaveLog();

    // While it lives, no text or blob is too large to be read.
    class AnyLength {
     public:
        explicit AnyLength(Connection& connection);
        ~AnyLength();
        AnyLength(const AnyLength&) = delete;
        AnyLength& operator=(const AnyLength&) = delete;

     private:
        Connection& connection_;
    };

    // How many rows the statement that ran last has changed.
    int32_t Changes() const;
    // How many rows all of them have changed so far.
    int64_t TotalChanges() const;
    // Another whenever anybody else has written.
    int64_t Version();
    // Another whenever tables were made or changed.
    int64_t SchemaVersion();
    // Of a table; none where there is no such table.
    std::vector<std::string> ColumnsOf(std::string_view table);

    // The next row that is added to a table with numbers of its own gets one behind all of these.
    void GoOnBehind(const std::string& table);

    // Which version of this program has made the tables, as SetMadeBy says; 0: none, yet.
    int64_t MadeBy();
    void SetMadeBy(int64_t version);
    // Whether there are any, be it another program's.
    bool HasTables();
    // The statement for a trigger on AlarmLog: an alarm that was acknowledged stays so.
    const char* StaysAcknowledged() const;
    // For statements: the clock that all hosts agree on, in milliseconds; and what makes it.
    std::string Clock() const;
    std::string MakesClock() const;

    bool InTransaction() const;
    // What became of a commit that was in doubt. StoreAway while that can't be known.
    bool TookEffect(const StoreInDoubt& doubt);
    const std::string& Path() const { return path_; }
    // The same, as it may be shown.
    std::string Name() const;

 private:
    friend class Statement;
    friend class WriteTransaction;
    friend class HeldWrites;
    using KeptStatements = std::unordered_map<std::string, std::unique_ptr<DriverStatement>>;

    // A prepared statement with its text: kept from an earlier use, or made.
    KeptStatements::node_type Take(const std::string& sql);
    void Keep(KeptStatements::node_type statement) noexcept;

    // Lets a statement outside of a transaction see what is kept: by a transaction around it, which
    // may write what is kept, too.
    class Sight {
     public:
        explicit Sight(Connection& connection);
        ~Sight();
        Sight(const Sight&) = delete;
        Sight& operator=(const Sight&) = delete;

     private:
        Connection& connection_;
    };

    const std::string path_;
    const std::unique_ptr<Driver> driver_;
    KeptStatements kept_;  // those not in use; ended before the driver
    HeldWrites* held_ = nullptr;
    std::optional<Tenure> tenure_;
    std::vector<HeldWrite>* record_ = nullptr;  // of the transaction that stands
    int in_sight_ = 0;                          // statements in use
    std::unique_ptr<WriteTransaction> around_;  // ... and the transaction around them
};

// A statement is prepared at its first use on a connection, and kept there for the next.
// Parameters are bound and columns read; no value is ever part of the text of a statement.
class Statement {
 public:
    Statement(Connection& connection, const std::string& sql);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    // Binds the next parameter. A text is borrowed until the statement ends.
    Statement& Bind(std::string_view text);
    Statement& Bind(int64_t number);
    Statement& BindNull();

    // Goes on to the next row: false when there is none.
    bool Step();
    void Run();

    // A cell of the row, up to its first zero byte; valid until the next step.
    std::string_view Text(int column) const;
    int64_t Number(int column) const;
    bool IsNull(int column) const;
    int Columns() const;

    // The first cells of all rows that are left; of the next, 0 where there is none.
    std::vector<std::string> Texts();
    std::vector<int64_t> Numbers();
    int64_t FirstNumber();

 private:
    Connection& connection_;
    const Connection::Sight sight_;
    Connection::KeptStatements::node_type kept_;
    DriverStatement& statement_;  // the one within
    int bound_ = 0;
    std::optional<HeldWrite> noted_;  // until it runs: what a transaction takes note of
};

// Holds the right to write against every other writer in any process, from construction on, so that
// what is read within it is still true when it is written. Without a commit all is undone.
class WriteTransaction {
 public:
    explicit WriteTransaction(Connection& connection);
    ~WriteTransaction();
    WriteTransaction(const WriteTransaction&) = delete;
    WriteTransaction& operator=(const WriteTransaction&) = delete;

    // When this returns, the changes are on the disk; or kept, where the connection keeps what is
    // refused.
    void Commit();

 private:
    void Begin();
    void RollBack() noexcept;

    Connection& connection_;
    std::vector<HeldWrite> writes_;
};

}  // namespace host

#endif
