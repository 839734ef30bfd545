// A handle of the table access. Tested by tests/unit/host/table_access_test.cpp.
#include "host/store/open_database.h"

#include <utility>

#include "host/store/hidden_rows.h"
#include "host/store/line_view.h"
#include "host/store/patience.h"

namespace host {
namespace {

Condition InView(const TableLayout& layout, Condition condition) {
    condition.terms = InView(*layout.table, std::move(condition.terms));
    return condition;
}

bool FindOut(Connection& connection, const StoreInDoubt& doubt) {
    Wait wait(doubt);
    for (;;) {
        try {
            return connection.TookEffect(doubt);
        } catch (const StoreAway&) {
            wait.Second();
        }
    }
}

// The library isn't answered before it is known whether what it has written is there: it would
// be written twice.
void CommitForSure(Connection& connection, WriteTransaction& transaction) {
    try {
        transaction.Commit();
    } catch (const StoreInDoubt& doubt) {
        if (!WaitsForTables()) {
            throw;
        }
        if (!FindOut(connection, doubt)) {
            throw StoreAway(doubt);
        }
    }
}

}  // namespace

// Runs a change in a transaction of its own, or in the one that stands.
template <typename Change>
int32_t OpenDatabase::Commit(Change change) {
    if (transaction_ != nullptr) {
        return change();
    }
    WriteTransaction transaction(lease_.Database());
    const int32_t count = change();
    CommitForSure(lease_.Database(), transaction);
    return count;
}

const TableLayout& OpenDatabase::Layout(std::string_view table) {
    for (const std::shared_ptr<const TableLayout>& layout : layouts_) {
        if (table == layout->table->name) {
            return *layout;
        }
    }
    const std::shared_ptr<const TableLayout> layout =
        lease_.Layouts().Find(lease_.Database(), table);
    const bool by_others = lease_.Database().HasTenure() || !ShowsPages();
    if (layout->table == FindTable(kEvents) && !by_others &&
        HasOrphans(lease_.Database(), lease_.Owners())) {
        Commit([this] {
            BringBackOrphans(lease_.Database(), lease_.Owners());
            return 0;
        });
    }
    return *layouts_.emplace_back(layout);
}

Rows OpenDatabase::Read(const TableLayout& layout, const std::vector<Term>& terms) {
    return ReadRows(lease_.Database(), layout, InView(*layout.table, terms));
}

// From here on the transaction lasts no longer than the caller needs it, however that ends.
std::unique_ptr<WriteTransaction> OpenDatabase::TakeTransaction() {
    locked_ = false;
    unwritten_ = 0;
    return std::move(transaction_);
}

bool OpenDatabase::Lock() {
    if (locked_) {
        return false;
    }
    if (transaction_ == nullptr) {
        transaction_ = std::make_unique<WriteTransaction>(lease_.Database());
    }
    locked_ = true;
    return true;
}

void OpenDatabase::Unlock() {
    const int32_t unwritten = unwritten_;
    const std::unique_ptr<WriteTransaction> transaction = TakeTransaction();
    if (unwritten > 0) {
        throw StoreError("changes that had not been written are undone");
    }
    if (transaction != nullptr) {
        CommitForSure(lease_.Database(), *transaction);
    }
}

void OpenDatabase::Insert(const TableLayout& layout, const ElementList& elements) {
    Commit([&] {
        ElementList row = elements;
        MakeOwn(lease_.Database(), *layout.table, row);
        InsertRow(lease_.Database(), layout, row);
        return 1;
    });
}

int32_t OpenDatabase::Delete(const TableLayout& layout, const Condition& condition) {
    return Commit([&] {
        return DeleteRows(lease_.Database(), layout, InView(layout, condition), lease_.Owners());
    });
}

int32_t OpenDatabase::Update(const TableLayout& layout, const Condition& condition,
                             const ElementList& elements) {
    return Commit(
        [&] { return UpdateRows(lease_.Database(), layout, InView(layout, condition), elements); });
}

int32_t OpenDatabase::UpdateUnwritten(const TableLayout& layout, const Condition& condition,
                                      const ElementList& elements) {
    if (transaction_ == nullptr) {
        transaction_ = std::make_unique<WriteTransaction>(lease_.Database());
    }
    const int32_t count =
        UpdateRows(lease_.Database(), layout, InView(layout, condition), elements);
    unwritten_ += count;
    if (unwritten_ == 0 && !locked_) {
        TakeTransaction();
    }
    return count;
}

int32_t OpenDatabase::Write() {
    const int32_t count = unwritten_;
    const std::unique_ptr<WriteTransaction> transaction = TakeTransaction();
    if (transaction != nullptr) {
        CommitForSure(lease_.Database(), *transaction);
    }
    return count;
}

}  // namespace host
