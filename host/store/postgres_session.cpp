// The session. Tested by tests/unit/host/postgres_test.cpp and postgres_lost_test.cpp.
#include "host/store/postgres_session.h"

#include <poll.h>

#include <array>
#include <atomic>
#include <map>
#include <mutex>
#include <random>
#include <sstream>
#include <string_view>
#include <utility>

#include "host/store/database_name.h"
#include "host/store/retry_pause.h"

namespace host {
namespace {

using Clock = std::chrono::system_clock;

// A server that lost us lets go of our locks before a node's lease is over.
constexpr const char* kSettings =
    "SET statement_timeout = '20s'; SET lock_timeout = '10s';"
    "SET idle_in_transaction_session_timeout = '5s';"
    "SET tcp_keepalives_idle = 5; SET tcp_keepalives_interval = 2; SET tcp_keepalives_count = 3;"
    "SET tcp_user_timeout = '10s'; SET standard_conforming_strings = on;"
    // To compile a statement takes longer than any of these, and is asked for where many rows are.
    "SELECT set_config('jit', 'off', false) WHERE current_setting('jit', true) = 'on';"
    // What is committed is on the server's disk.
    "SELECT set_config('synchronous_commit', 'on', false)"
    " WHERE current_setting('synchronous_commit') = 'off';"
    "SELECT pid, backend_start FROM pg_stat_activity WHERE pid = pg_backend_pid()";

// Milliseconds without a byte, where the network is sound: more than any statement may take.
constexpr int kLongestSilence = 25'000;
std::atomic<int> longest_silence{kLongestSilence};

// Another may find out first whether a server is back: he tells all.
class Tries {
 public:
    // Why it may not be tried yet; none: it may.
    std::optional<StoreAway> WhyNot(const std::string& name) {
        const std::lock_guard guard(mutex_);
        const Try& last = Of(name);
        if (last.pause.IsOver(Clock::now())) {
            return std::nullopt;
        }
        return StoreAway(last.reason, last.outage);
    }
    void Failed(const std::string& name, const StoreAway& why) {
        const std::lock_guard guard(mutex_);
        Try& last = Of(name);
        last.pause.Failed(Clock::now());
        last.reason = why.what();
        last.outage = why.Outage();
    }
    void Worked(const std::string& name) {
        const std::lock_guard guard(mutex_);
        Of(name).pause.Worked();
    }

 private:
    struct Try {
        RetryPause pause{std::random_device{}()};
        std::string reason, outage;
    };

    Try& Of(const std::string& name) { return tries_[name]; }

    std::mutex mutex_;
    std::map<std::string, Try> tries_;  // guarded by mutex_
};

Tries& TheTries() {
    // Never destroyed: a thread of the library may still ask while the process ends.
    static Tries& tries = *std::make_unique<Tries>().release();
    return tries;
}

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

std::vector<const char*> Pointers(const PostgresSession::Values& values) {
    std::vector<const char*> pointers;
    pointers.reserve(values.size());
    for (const std::optional<std::string>& value : values) {
        pointers.push_back(value ? value->c_str() : nullptr);
    }
    return pointers;
}

}  // namespace

PostgresSession::PostgresSession(const std::string& name, Connection::Mode mode)
    : name_(name), shown_(ShownName(name)), looks_(mode == Connection::Mode::kLook) {
    RequireName();
    BeThere();
}

bool PostgresSession::IsThere() const {
    return connection_ != nullptr && PQstatus(connection_.get()) == CONNECTION_OK;
}

void PostgresSession::BeThere() {
    BeginIfLost();
    if (said_ != whose_) {
        Ask("SELECT set_config('application_name', $1, false)", {whose_});
        said_ = whose_;
    }
}

void PostgresSession::BeginIfLost() {
    if (IsThere()) {
        return;
    }
    if (const std::optional<StoreAway> why_not = TheTries().WhyNot(name_)) {
        throw StoreAway(*why_not);
    }
    try {
        Begin();
    } catch (const StoreAway& away) {
        connection_.reset();
        TheTries().Failed(name_, away);
        throw;
    } catch (const StoreError&) {
        connection_.reset();
        throw;
    }
    TheTries().Worked(name_);
}

void PostgresSession::Begin() {
    Connect();
    if (!IsThere()) {
        FailAway(OneLine(PQerrorMessage(connection_.get())));
    }
    ++epoch_;
    said_.clear();
    PQsetNoticeProcessor(
        connection_.get(), [](void* /*nobody*/, const char* /*said*/) {}, nullptr);
    RequireEncoding();
    const PostgresResult own = Ask(kSettings);
    EndFormer();
    process_ = PQgetvalue(own.get(), 0, 0);
    began_ = PQgetvalue(own.get(), 0, 1);
    if (looks_) {
        Ask("SET default_transaction_read_only = on");
    }
}

// What stands before the name it may say otherwise, what stands behind it not. A character of
// LATIN1 is a byte, and every byte is one: so texts of any encoding come back as they were.
void PostgresSession::Connect() {
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
    connection_.reset(PQconnectdbParams(keywords.data(), values.data(), 1));
    PQsetnonblocking(connection_.get(), 1);
}

// The server may not have noticed that a session was lost, which may have had the right to write.
void PostgresSession::EndFormer() {
    if (!process_.empty()) {
        Ask("SELECT pg_terminate_backend(pid) FROM pg_stat_activity"
            " WHERE pid = $1::int AND backend_start = $2::timestamptz",
            {process_, began_});
    }
}

// What libpq says of a name may quote parts of it, such as a password with a sign that it lacks.
void PostgresSession::RequireName() const {
    PQconninfoOption* const options = PQconninfoParse(name_.c_str(), nullptr);
    PQconninfoFree(options);
    if (options == nullptr) {
        throw StoreError(shown_ + ": isn't the name of a database on a server");
    }
}

void PostgresSession::RequireEncoding() const {
    const char* const encoding = PQparameterStatus(connection_.get(), "server_encoding");
    for (const char* const good : {"UTF8", "LATIN1", "SQL_ASCII"}) {
        if (encoding != nullptr && std::string_view(encoding) == good) {
            return;
        }
    }
    throw StoreError(shown_ + ": its encoding can't hold every text; make it with UTF8");
}

PostgresResult PostgresSession::Ask(const std::string& sql) {
    return Answer(PQsendQuery(connection_.get(), sql.c_str()));
}

PostgresResult PostgresSession::Ask(const std::string& sql, const Values& values) {
    return Answer(PQsendQueryParams(connection_.get(), sql.c_str(), static_cast<int>(values.size()),
                                    nullptr, Pointers(values).data(), nullptr, nullptr, 0));
}

void PostgresSession::Prepare(const std::string& name, const std::string& sql) {
    Answer(PQsendPrepare(connection_.get(), name.c_str(), sql.c_str(), 0, nullptr));
}

PostgresResult PostgresSession::AskPrepared(const std::string& name, const Values& values) {
    return Answer(PQsendQueryPrepared(connection_.get(), name.c_str(),
                                      static_cast<int>(values.size()), Pointers(values).data(),
                                      nullptr, nullptr, 0));
}

// The last answer; or the first that is a failure, behind which there are no more.
PostgresResult PostgresSession::Answer(int sent) {
    if (sent == 0) {
        Fail(nullptr);
    }
    PostgresResult last;
    for (;;) {
        Await();
        PostgresResult next(PQgetResult(connection_.get()));
        if (next == nullptr) {
            break;
        }
        last = std::move(next);
    }
    const ExecStatusType status = PQresultStatus(last.get());
    if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK) {
        Fail(last.get());
    }
    return last;
}

// Until there is an answer to take.
void PostgresSession::Await() {
    for (;;) {
        const int left_to_send = PQflush(connection_.get());
        if (left_to_send < 0 || PQisBusy(connection_.get()) == 0) {
            return;
        }
        pollfd server{PQsocket(connection_.get()), POLLIN, 0};
        server.events = static_cast<short>(server.events | (left_to_send > 0 ? POLLOUT : 0));
        if (poll(&server, 1, longest_silence) == 0) {
            connection_.reset();
            FailAway("it says nothing any more");
        }
        PQconsumeInput(connection_.get());
    }
}

void PostgresSession::Fail(const PGresult* result) {
    const char* const state = PQresultErrorField(result, PG_DIAG_SQLSTATE);
    const std::string why = OneLine(result == nullptr ? PQerrorMessage(connection_.get())
                                                      : PQresultErrorMessage(result));
    // One that has become a replica: another may be the one that writes now.
    const bool is_replica = !looks_ && state != nullptr && state == std::string_view("25006");
    if (!IsThere() || is_replica) {
        connection_.reset();
        FailAway(why);
    }
    if (state == nullptr || MayPass(state)) {
        throw StoreAway(shown_ + ": " + why);
    }
    throw StoreError(shown_ + ": " + why);
}

void PostgresSession::FailAway(const std::string& why) const {
    const std::string outage = shown_ + ": can't be reached";
    throw StoreAway(outage + " (" + why + ")", outage);
}

void PostgresSession::LimitSilence(std::chrono::milliseconds limit) {
    longest_silence = static_cast<int>(limit.count());
}

// One with a statement that has failed can't be asked; it writes nothing.
std::string PostgresSession::TransactionNumber() {
    if (PQtransactionStatus(connection_.get()) == PQTRANS_INERROR) {
        return {};
    }
    return PQgetvalue(Ask("SELECT pg_current_xact_id_if_assigned()").get(), 0, 0);
}

// One that the server doesn't know was on a server before this one, which has taken its place
// without it.
std::optional<bool> PostgresSession::WasCommitted(const std::string& number) {
    std::string status;
    try {
        status = PQgetvalue(Ask("SELECT pg_xact_status($1::xid8)", {number}).get(), 0, 0);
    } catch (const StoreAway&) {
        throw;
    } catch (const StoreError&) {
        return false;
    }
    if (status == "in progress") {
        return std::nullopt;
    }
    return status == "committed";
}

}  // namespace host
