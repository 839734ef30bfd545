// Keeping refused writes. Tested by tests/proof/held_writes_test.cpp, and by the full disks of
// tests/proof/crash_test.cpp.
#include "host/store/held_writes.h"

#include <utility>

#include "host/store/driver.h"
#include "host/store/faults.h"

namespace host {
namespace {

void Run(Connection& connection, const HeldWrite& write) {
    Statement statement(connection, write.sql);
    for (const auto& value : write.values) {
        if (const int64_t* const number = std::get_if<int64_t>(&value)) {
            statement.Bind(*number);
        } else if (const std::string* const text = std::get_if<std::string>(&value)) {
            statement.Bind(*text);
        } else {
            statement.BindNull();
        }
    }
    statement.Run();
}

// False: it will never be written.
bool TryRun(Connection& connection, const HeldWrite& write) {
    try {
        Run(connection, write);
        return true;
    } catch (const StoreError& fault) {
        if (!connection.InTransaction()) {
            throw;
        }
        ReportFault(std::string("a change that was kept is given up: ") + fault.what());
        return false;
    }
}

}  // namespace

size_t HeldWrites::Count() {
    const std::lock_guard guard(mutex_);
    return transactions_.size();
}

void HeldWrites::Replay(Connection& connection) {
    const std::lock_guard guard(mutex_);
    for (Transaction& transaction : transactions_) {
        Transaction good;
        for (HeldWrite& write : transaction) {
            if (TryRun(connection, write)) {
                good.push_back(std::move(write));
            }
        }
        transaction = std::move(good);
    }
}

void HeldWrites::Commit(Connection& connection, std::vector<HeldWrite> writes) {
    const std::lock_guard guard(mutex_);
    try {
        connection.driver_->Commit();
    } catch (const StoreError& refusal) {
        if (!connection.driver_->WasRefused()) {
            throw;
        }
        return Keep(std::move(writes), refusal.what());
    }
    Forget(connection);
}

// Requires: mutex_ held.
void HeldWrites::Keep(std::vector<HeldWrite> writes, const std::string& why) {
    if (writes.empty()) {
        return;
    }
    if (transactions_.empty()) {
        ReportFault(why + "; what can't be written is kept in memory until it can");
    }
    transactions_.push_back(std::move(writes));
    any_ = true;
}

// Requires: mutex_ held.
void HeldWrites::Forget(Connection& connection) {
    if (transactions_.empty()) {
        return;
    }
    const size_t count = transactions_.size();
    transactions_.clear();
    any_ = false;
    ReportMended(connection.Name() + ": can be written again; " + std::to_string(count) +
                 " change(s) that had been kept are written");
}

}  // namespace host
