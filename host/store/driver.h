// A connection to a database of one kind. Whoever asks a database uses connection.h, which is the
// same for all; only that is built on this.
//
// SQL is written once, in what the kinds have in common. Where they differ, a driver translates it,
// or answers one of the questions below.
//
// Threads    One thread at a time.
// Errors     StoreError, with what the database says; StoreAway where that may pass; RowTooLarge.
#ifndef PAGERFWD_HOST_STORE_DRIVER_H
#define PAGERFWD_HOST_STORE_DRIVER_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "host/store/connection.h"

namespace host {

class DriverStatement {
 public:
    virtual ~DriverStatement() = default;

    virtual bool IsReadOnly() const = 0;
    // Parameters by their place, from 1 on. A text is borrowed until the statement is reset.
    virtual void Bind(int place, std::string_view text) = 0;
    virtual void Bind(int place, int64_t number) = 0;
    virtual void BindNull(int place) = 0;
    virtual bool Step() = 0;
    // Of the row. A text up to its first zero byte; valid until the next step.
    virtual std::string_view Text(int column) const = 0;
    virtual int64_t Number(int column) const = 0;
    virtual bool IsNull(int column) const = 0;
    virtual int Columns() const = 0;
    // Lets go of the row, and of what was bound.
    virtual void Reset() noexcept = 0;
};

// Texts that each kind has of its own: the questions of connection.h of the same name, and what
// makes the tables.
struct Questions {
    const char* version;
    const char* schema_version;
    const char* columns_of;
    const char* made_by;
    const char* has_tables;
    std::string (*set_made_by)(int64_t version);
    const char* stays_acknowledged;
    const char* go_on_at;
    const char* clock;        // an expression: the database's own clock, in ms since 1970
    const char* makes_clock;  // what that needs, once; empty: nothing
};

class Driver {
 public:
    virtual ~Driver() = default;

    virtual const Features& Can() const = 0;
    virtual std::unique_ptr<DriverStatement> Prepare(const std::string& sql) = 0;
    // Statements without parameters, one behind the other.
    virtual void Run(const std::string& sql) = 0;

    // With the right to write against every other writer.
    virtual void Begin() = 0;
    // StoreInDoubt where the answer was lost, and nobody can say now what became of it.
    virtual void Commit() = 0;
    // See Connection::TookEffect.
    virtual bool TookEffect(const std::string& /*transaction*/) { return false; }
    virtual void RollBack() = 0;
    virtual bool InTransaction() const = 0;
    // Whether what has just failed is the file system's refusal.
    virtual bool WasRefused() const = 0;

    virtual int32_t Changes() const = 0;
    virtual int64_t TotalChanges() const = 0;

    virtual const Questions& Asks() const = 0;

    // What only some have; the others do nothing.
    virtual bool IsAtRest() const { return false; }
    // For who looks at the server's sessions: whose this one is.
    virtual void SayWhose(const std::string& /*words*/) {}
    virtual void LeaveLog() {}
    virtual void WriteAtCommit() {}
    virtual void AllowAnyLength(bool /*allow*/) {}
};

std::unique_ptr<Driver> OpenSqlite(const std::string& path, Connection::Mode mode);
// name: as database_name.h has it. Where this program was built without libpq: StoreError.
std::unique_ptr<Driver> OpenPostgres(const std::string& name, Connection::Mode mode);

}  // namespace host

#endif
