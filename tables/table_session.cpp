// The table access by scope. Tested through every operation by tests/unit/tables/*_test.cpp.
#include "tables/table_session.h"

#include <pagerfwd/text_helpers.h>

#include "tables/owned_text.h"

namespace {

constexpr int32_t kOpened = 0;
constexpr int32_t kLockTaken = 0;
constexpr int32_t kAdded = 0;

// Lock parameters whose meaning is the table access's own.
constexpr int32_t kLockFirst = 400;
constexpr int32_t kLockSecond = 300;

}  // namespace

DatabaseSession::DatabaseSession(const char* database, Closing closing)
    : m_closing(closing),
      m_openResult(DBAsciiAccessOpen(database, 'n', &m_handle)),
      m_isOpen(m_openResult == kOpened) {}

bool DatabaseSession::OpenTable(const char* table) {
    if (!m_isOpen) {
        return false;
    }
    m_table = table;
    m_openResult = DBAsciiAccessTableOpen(m_handle, table);
    return m_openResult == kOpened;
}

int32_t DatabaseSession::Close() {
    if (!m_isOpen) {
        return m_openResult;
    }
    m_isOpen = false;
    return m_closing(m_handle);
}

int32_t DatabaseSession::FindColumn(const char* column) const {
    return DBAsciiAccessGetElementColumn(m_handle, m_table, column);
}

TableLock::TableLock(const DatabaseSession& session, const char* table)
    : m_session(session),
      m_table(table),
      m_result(DBAsciiAccessLock(session.Handle(), table, kLockFirst, kLockSecond)) {}

TableLock::~TableLock() {
    if (m_result == kLockTaken) {
        DBAsciiAccessUnlock(m_session.Handle(), m_table);
    }
}

RowSet::RowSet(const DatabaseSession& session, const char* column, const char* value)
    : m_count(DBAsciiAccessGetAllEntriesByCondition(session.Handle(), session.Table(), column,
                                                    &m_rows, 0, TextOrEmpty(value), 'r', nullptr,
                                                    'n', 0, 0)) {}

RowSet::RowSet(const DatabaseSession& session, EveryRow all)
    : m_count(DBAsciiAccessGetAllEntriesByCondition(session.Handle(), session.Table(),
                                                    all.keyColumn, &m_rows, 0, "", 'r', "no", 'n',
                                                    'n', 0)) {}

RowSet::~RowSet() {
    if (m_rows != nullptr) {
        DBAsciiAccessFree(m_rows);
    }
}

ElementList::~ElementList() {
    if (m_list != nullptr) {
        DBAsciiAccessSQLConditionSet(m_session.Handle(), m_session.Table(), m_noRow, m_list, 'y',
                                     'n');
    }
}

void ElementList::AddElement(const char* column, char type, const void* value) {
    const int32_t result = DBAsciiAccessAddElement(m_session.Handle(), m_session.Table(), column,
                                                   type, value, &m_list);
    m_isWhole = m_isWhole && result == kAdded;
}

ElementList& ElementList::Add(const char* column, int32_t value) {
    AddElement(column, 'i', &value);
    return *this;
}

ElementList& ElementList::Add(const char* column, const char* text) {
    const char* const value = TextOrEmpty(text);
    AddElement(column, 't', &value);
    return *this;
}

std::string DecimalText(int32_t number) {
    char digits[33];
    return _ltoa(number, digits, 10);
}
