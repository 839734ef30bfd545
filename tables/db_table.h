// What every table class is: the name of a database and the name of one table in it.
//
// Order      Every operation opens the database, works, and closes it again. Nothing is kept
//            between two operations, so an object is cheap and may be made for one use.
// Ownership  A record that an operation hands out belongs to the caller, who gives it back through
//            the Free... operation of the same class. So does an array of records, by array
//            delete. Arguments are borrowed for the call; a null text counts as the empty one.
// Threads    No lock is held here. One object may be used by several threads at once.
// Errors     Nothing throws on its own and nothing is logged. A failure shows as the operation's
//            empty result only: a null record, 0 or -1.
#ifndef PAGERFWD_TABLES_DB_TABLE_H
#define PAGERFWD_TABLES_DB_TABLE_H

#include "tables/owned_text.h"

class CDB_Table {
 public:
    CDB_Table(const CDB_Table&) = delete;
    CDB_Table& operator=(const CDB_Table&) = delete;

 protected:
    CDB_Table(const char* databaseName, const char* tableName)
        : m_database(CopyText(TextOrEmpty(databaseName))), m_table(CopyText(tableName)) {}
    ~CDB_Table() = default;

    const char* Database() const { return m_database.get(); }
    const char* Table() const { return m_table.get(); }

 private:
    // Constant after construction.
    OwnedText m_database;
    OwnedText m_table;
};

#endif
