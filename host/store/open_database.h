// What a handle of the table access stands for: a connection lent, the tables opened through it,
// and the lock that it may hold.
//
// Ownership  Ending the object gives the lock up, undoes what was not written, and gives the
//            connection back.
// Threads    One at a time.
// Errors     StoreError, with nothing changed.
#ifndef PAGERFWD_HOST_STORE_OPEN_DATABASE_H
#define PAGERFWD_HOST_STORE_OPEN_DATABASE_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/store/pool.h"
#include "host/store/rows.h"
#include "host/store/writes.h"

namespace host {

class OpenDatabase {
 public:
    explicit OpenDatabase(const std::string& path) : lease_(path) {}

    // The columns of a table, looked up at its first use through this handle.
    const TableLayout& Layout(std::string_view table);

    Rows Read(const TableLayout& layout, const std::vector<Term>& terms);

    // Takes the right to write, before anything is read, against every writer in any process. One
    // lock spans the whole database. False when this handle holds it already.
    bool Lock();
    // Throws when changes had not been written: they are undone then.
    void Unlock();

    // Each of these is on the disk when it returns, but under a lock only when that ends.
    void Insert(const TableLayout& layout, const ElementList& elements);
    int32_t Delete(const TableLayout& layout, const Condition& condition);
    int32_t Update(const TableLayout& layout, const Condition& condition,
                   const ElementList& elements);

    // As Update, but the changes are kept only by a Write before the handle or its lock ends.
    int32_t UpdateUnwritten(const TableLayout& layout, const Condition& condition,
                            const ElementList& elements);

    // Whether it has the right to write, or changes that are not written.
    bool HoldsTransaction() const { return transaction_ != nullptr; }

    // Writes those changes and gives up the lock, if it is held. Returns how many rows they were.
    int32_t Write();

 private:
    template <typename Change>
    int32_t Commit(Change change);
    std::unique_ptr<WriteTransaction> TakeTransaction();

    Lease lease_;
    std::vector<std::shared_ptr<const TableLayout>> layouts_;
    std::unique_ptr<WriteTransaction> transaction_;  // the lock, or changes not yet written
    bool locked_ = false;
    int32_t unwritten_ = 0;
};

}  // namespace host

#endif
