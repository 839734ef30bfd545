// From the cells of a row to the fields of a record, by a table of columns:
//
//     constexpr Column<Pager> kColumns[] = {
//         {"owner", FillText<&Pager::owner>},
//         {"pgtype", FillNumber<&Pager::pagerType>},
//     };
#ifndef PAGERFWD_TABLES_RECORD_COLUMNS_H
#define PAGERFWD_TABLES_RECORD_COLUMNS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <vector>

#include "tables/owned_text.h"
#include "tables/table_session.h"

// A column's name, and how a cell of it goes into a record.
template <class Record>
struct Column {
    const char* name;
    void (*fill)(Record& record, const char* cell);
};

// As atoi; what an int32_t can't hold becomes its nearest value. Null is 0.
int32_t ToInteger(const char* cell);

// Null when the column is missing (less than 0).
inline const char* CellAt(const char* const* row, int32_t column) {
    return column >= 0 ? row[column] : nullptr;
}

template <class Record, class Field>
Record RecordOf(Field Record::*field);
template <class Record, class Field>
Field FieldOf(Field Record::*field);

template <auto Field>
void FillText(decltype(RecordOf(Field))& record, const char* cell) {
    char* const copy = CopyText(cell);
    char*& text = record.*Field;
    delete[] text;  // of a column that was filled before
    text = copy;
}

// For numbers and for the open codes.
template <auto Field>
void FillNumber(decltype(RecordOf(Field))& record, const char* cell) {
    record.*Field = static_cast<decltype(FieldOf(Field))>(ToInteger(cell));
}

// A record on its way to the caller. The function is the one that gives such a record back.
template <class Record>
using RecordPtr = std::unique_ptr<Record, void (*)(Record*)>;

// Where the columns of a table of columns stand in the rows of a session's table.
template <class Record, size_t N>
class RecordColumns {
 public:
    // Looks the columns up in the order of the table, but for one whose value is known already.
    RecordColumns(const DatabaseSession& session, const Column<Record> (&columns)[N],
                  const char* known = nullptr)
        : m_columns(columns) {
        for (size_t i = 0; i < N; ++i) {
            m_places[i] = columns[i].name != known ? session.FindColumn(columns[i].name) : -1;
        }
    }

    // The cell of a column of the table of columns; null when it is missing.
    const char* Cell(const char* const* row, const char* name) const {
        const auto* const column = std::find_if(
            std::begin(m_columns), std::end(m_columns),
            [name](const Column<Record>& each) { return std::strcmp(each.name, name) == 0; });
        return CellAt(row, m_places[column - std::begin(m_columns)]);
    }

    // A field whose column or cell is missing stays as it is.
    void Fill(Record& record, const char* const* row) const {
        for (size_t i = 0; i < N; ++i) {
            if (const char* const cell = CellAt(row, m_places[i])) {
                m_columns[i].fill(record, cell);
            }
        }
    }

    // A cleared record, filled.
    RecordPtr<Record> NewRecord(const char* const* row, void (*giveBack)(Record*)) const {
        RecordPtr<Record> record(new Record(), giveBack);
        Fill(*record, row);
        return record;
    }

    // One record for each row, in row order. The array too is the caller's, by array delete.
    Record** NewRecords(const RowSet& rows, void (*giveBack)(Record*)) const {
        std::vector<RecordPtr<Record>> made;
        made.reserve(static_cast<size_t>(rows.Count()));
        for (int32_t i = 0; i < rows.Count(); ++i) {
            made.push_back(NewRecord(rows.Row(i), giveBack));
        }
        auto** const records = new Record*[made.size()];
        std::transform(made.begin(), made.end(), records,
                       [](RecordPtr<Record>& record) { return record.release(); });
        return records;
    }

 private:
    const Column<Record> (&m_columns)[N];
    int32_t m_places[N];
};

#endif
