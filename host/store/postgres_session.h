// A session on a PostgreSQL server: begun, asked, and begun anew where it was lost. Only this and
// postgres_driver.cpp know libpq.
//
// Nothing that is asked of a server may take for ever, neither by the server's fault nor by the
// network's: each has a limit, and a server that says nothing any more counts as lost.
//
// A server that can't be reached is tried again with pauses (retry_pause.h), which all sessions of
// this process have in common. Within a pause whoever asks hears at once that it is away.
//
// Threads    One at a time.
// Errors     StoreAway where the session was lost or the server is away, with the same outage as
//            long as that lasts; else StoreError, with what the server says.
#ifndef PAGERFWD_HOST_STORE_POSTGRES_SESSION_H
#define PAGERFWD_HOST_STORE_POSTGRES_SESSION_H

#include <libpq-fe.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/store/connection.h"

namespace host {

struct ResultClearer {
    void operator()(PGresult* result) const { PQclear(result); }
};
using PostgresResult = std::unique_ptr<PGresult, ResultClearer>;

class PostgresSession {
 public:
    using Values = std::vector<std::optional<std::string>>;  // none: NULL

    PostgresSession(const std::string& name, Connection::Mode mode);

    const std::string& Shown() const { return shown_; }

    bool IsThere() const;
    // It is, when this returns.
    void BeThere();
    // Whose it is, for those who look at the server's sessions: said with the next BeThere, and
    // again whenever it was begun anew. Not while a transaction stands.
    void SayWhose(const std::string& words) { whose_ = words; }
    // Another whenever it was begun anew: what the server kept of the one before is gone.
    int64_t Epoch() const { return epoch_; }

    // Statements, one behind the other: the answer to the last.
    PostgresResult Ask(const std::string& sql);
    PostgresResult Ask(const std::string& sql, const Values& values);
    void Prepare(const std::string& name, const std::string& sql);
    PostgresResult AskPrepared(const std::string& name, const Values& values);

    // Of the transaction that stands; "" where it has written nothing.
    std::string TransactionNumber();
    // What became of one whose end was not heard of. None: it hasn't ended yet.
    std::optional<bool> WasCommitted(const std::string& number);

    // After which a server that says nothing counts as lost, in this process: for tests.
    static void LimitSilence(std::chrono::milliseconds limit);

 private:
    struct Finisher {
        void operator()(PGconn* connection) const { PQfinish(connection); }
    };

    void Connect();
    void Begin();
    void EndFormer();
    void BeginIfLost();
    void RequireName() const;
    void RequireEncoding() const;
    PostgresResult Answer(int sent);
    void Await();
    [[noreturn]] void Fail(const PGresult* result);
    [[noreturn]] void FailAway(const std::string& why) const;

    const std::string name_;
    const std::string shown_;
    const bool looks_;
    std::string whose_;  // in words; empty: as the database's name says, or "pagerfwd"
    std::string said_;   // ... to the server, of this session
    std::unique_ptr<PGconn, Finisher> connection_;
    int64_t epoch_ = 0;
    std::string process_;  // the server's for this session, or for the one before
    std::string began_;    // ... and since when: their numbers come again
};

}  // namespace host

#endif
