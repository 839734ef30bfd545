// The table access in the order in which it has to be used, by scope: an open database closes, a
// taken lock is released and a row set is freed at the end of the scope that holds it.
//
// Order      Declare DatabaseSession, then TableLock, then RowSet: they end the other way round,
//            so that rows are freed, the lock is released and the database is closed in this order.
// Threads    Each object belongs to the thread that made it.
#ifndef PAGERFWD_TABLES_TABLE_SESSION_H
#define PAGERFWD_TABLES_TABLE_SESSION_H

#include <pagerfwd/table_access.h>

#include <cstdint>
#include <string>
#include <utility>

// An open database, and one table of it once OpenTable has been called.
class DatabaseSession {
 public:
    using Closing = int32_t (*)(DBAsciiHandle);

    explicit DatabaseSession(const char* database, Closing closing = DBAsciiAccessClose);
    ~DatabaseSession() { Close(); }
    DatabaseSession(const DatabaseSession&) = delete;
    DatabaseSession& operator=(const DatabaseSession&) = delete;

    // Of the last open, of the database or of its table: 0 = opened.
    int32_t OpenResult() const { return m_openResult; }
    bool IsOpen() const { return m_isOpen; }

    // Returns whether the table is open; does nothing when the database is not.
    bool OpenTable(const char* table);

    // Closes, once and only when the database is open, and returns the result.
    int32_t Close();

    DBAsciiHandle Handle() const { return m_handle; }
    const char* Table() const { return m_table; }

    // The place of a column within the table's rows; less than 0: no such column.
    int32_t FindColumn(const char* column) const;

 private:
    Closing m_closing;
    DBAsciiHandle m_handle = nullptr;
    const char* m_table = nullptr;
    int32_t m_openResult;
    bool m_isOpen;
};

// The lock of a table against other writers, as far as it can be had.
class TableLock {
 public:
    TableLock(const DatabaseSession& session, const char* table);
    ~TableLock();
    TableLock(const TableLock&) = delete;
    TableLock& operator=(const TableLock&) = delete;

    // 0 while the lock is held; the write that may give it up is told where this stands.
    int32_t* Result() { return &m_result; }

 private:
    const DatabaseSession& m_session;
    const char* m_table;
    int32_t m_result;
};

// Rows that were read from the session's table. What the table access handed out is given back,
// also a set without a row.
class RowSet {
 public:
    struct EveryRow {
        const char* keyColumn;
    };

    // The rows whose column equals value.
    RowSet(const DatabaseSession& session, const char* column, const char* value);
    // Every row; the table access wants the name of the key column here too.
    RowSet(const DatabaseSession& session, EveryRow all);
    ~RowSet();
    RowSet(const RowSet&) = delete;
    RowSet& operator=(const RowSet&) = delete;

    // As the table access returned it. Less than 0, an error of its own, means no row too.
    int32_t Count() const { return m_count; }
    bool IsEmpty() const { return m_count <= 0; }

    // Requires: 0 <= row < Count().
    const char* const* Row(int32_t row) const { return m_rows[row]; }

 private:
    DBAsciiRowSet m_rows = nullptr;
    int32_t m_count;
};

// The columns and values of a write. A list of which an element could not be added is not whole,
// and must not be written.
//
// The table access frees a list only where it takes one. One that nobody takes goes into a change
// of no row that is never written.
class ElementList {
 public:
    // noRow: a condition of the session's table that selects no row; it outlives the list.
    ElementList(const DatabaseSession& session, const char* noRow)
        : m_session(session), m_noRow(noRow) {}
    ~ElementList();
    ElementList(const ElementList&) = delete;
    ElementList& operator=(const ElementList&) = delete;

    ElementList& Add(const char* column, int32_t value);
    ElementList& Add(const char* column, const char* text);

    bool IsWhole() const { return m_isWhole; }

    // For the one call that consumes the list.
    DBAsciiElementList Take() { return std::exchange(m_list, nullptr); }

 private:
    void AddElement(const char* column, char type, const void* value);

    const DatabaseSession& m_session;
    const char* m_noRow;
    DBAsciiElementList m_list = nullptr;
    bool m_isWhole = true;
};

// Decimal, as a key is compared and as a condition holds it.
std::string DecimalText(int32_t number);

#endif
