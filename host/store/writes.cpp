// Writing of tables. Tested by tests/unit/host/store_contract_test.cpp.
#include "host/store/writes.h"

#include <utility>

#include "host/store/hidden_rows.h"
#include "host/store/schema.h"
#include "host/store/tables/events.h"
#include "host/store/tables/history.h"
#include "host/store/where.h"

namespace host {
namespace {

bool IsFor(const Condition& condition, const TableLayout& layout) {
    return condition.table == std::string_view(layout.table->name);
}

// The three columns under which an event is known, when the list has all of them.
std::vector<Term> KeyOf(const ElementList& elements) {
    std::vector<Term> key;
    for (const char* column : {"AlmGroup", "AlmLogID", "PagerDescr"}) {
        const std::string* text = elements.Find(column);
        if (text == nullptr) {
            return {};
        }
        key.push_back({column, "=", *text});
    }
    return key;
}

void DropHidden(Connection& connection, const ElementList& event) {
    const std::vector<Term> key = KeyOf(event);
    if (!key.empty()) {
        DropHidden(connection, key);
    }
}

HistoryRow WrittenEvent(const ElementList& event) {
    const auto cell = [&event](const char* column) {
        const std::string* const text = event.Find(column);
        return text == nullptr ? std::string_view() : std::string_view(*text);
    };
    return {kWritten,           cell("AlmLogID"),     cell("AlmGroup"), cell("PagerDescr"),
            cell("PagerState"), cell("PagerRetries"), cell(kLineColumn)};
}

// A change of what the history tells.
void WriteChange(Connection& connection, const Condition& condition, const ElementList& elements) {
    const std::string* const state = elements.Find("PagerState");
    const std::string* const tries = elements.Find("PagerRetries");
    if (state != nullptr || tries != nullptr) {
        WriteHistory(connection, {kChanged, state, tries},
                     WhereInSight(*FindTable(kEvents), condition.terms), condition.terms);
    }
}

// The library folds the states of those of an alarm's pages that it sees at that moment. Another
// line may be rewriting one just then, and one may still be on its way to a line.
void KeepBeingPaged(Connection& connection, const std::vector<Term>& alarm) {
    ChangeRows(connection,
               std::string("UPDATE AlarmLog SET pagerstate = '2'") +
                   WhereInSight(*FindTable(kAlarmLog), alarm) +
                   " AND pagerstate IN ('3', '4') AND alarmack IN ('', '0') AND " + kIsOwedAPage,
               alarm);
}

std::string InsertStatement(const TableLayout& layout, const ElementList& elements) {
    const std::string into = "INSERT INTO " + Quoted(layout.table->name);
    if (elements.Elements().empty()) {
        return into + " DEFAULT VALUES";
    }
    std::string columns;
    std::string values;
    for (const Element& element : elements.Elements()) {
        columns += (columns.empty() ? "" : ", ") + Quoted(element.column);
        values += values.empty() ? "?" : ", ?";
    }
    return into + " (" + columns + ") VALUES (" + values + ")";
}

std::string UpdateStatement(const TableLayout& layout, const Condition& condition,
                            const ElementList& elements) {
    std::string assignments;
    for (const Element& element : elements.Elements()) {
        assignments += (assignments.empty() ? "" : ", ") + Quoted(element.column) + " = ?";
    }
    if (assignments.empty()) {
        assignments = "row_id = row_id";  // nothing to set: the rows are only counted
    }
    return "UPDATE " + Quoted(layout.table->name) + " SET " + assignments +
           WhereInSight(*layout.table, condition.terms);
}

}  // namespace

void ElementList::Set(std::string_view column, std::string text) {
    for (Element& element : elements_) {
        if (SameColumn(element.column, column)) {
            element.text = std::move(text);
            return;
        }
    }
    elements_.push_back({std::string(column), std::move(text)});
}

const std::string* ElementList::Find(std::string_view column) const {
    for (const Element& element : elements_) {
        if (SameColumn(element.column, column)) {
            return &element.text;
        }
    }
    return nullptr;
}

void InsertRow(Connection& connection, const TableLayout& layout, const ElementList& elements) {
    const bool is_event = layout.table == FindTable(kEvents);
    if (is_event) {
        DropHidden(connection, elements);
    }
    Statement statement(connection, InsertStatement(layout, elements));
    for (const Element& element : elements.Elements()) {
        statement.Bind(element.text);
    }
    statement.Run();
    if (is_event) {
        WriteHistory(connection, WrittenEvent(elements));
    }
}

void DeleteAllRows(Connection& connection, std::string_view table) {
    Statement(connection, "DELETE FROM " + Quoted(table)).Run();
}

int32_t UpdateRows(Connection& connection, const TableLayout& layout, const Condition& condition,
                   const ElementList& elements) {
    if (!IsFor(condition, layout)) {
        return 0;
    }
    if (layout.table == FindTable(kEvents)) {
        WriteChange(connection, condition, elements);
    }
    Statement statement(connection, UpdateStatement(layout, condition, elements));
    for (const Element& element : elements.Elements()) {
        statement.Bind(element.text);
    }
    BindTerms(statement, condition.terms);
    statement.Run();
    const int32_t count = connection.Changes();
    if (condition.selects == Condition::Selects::kAlarm) {
        KeepBeingPaged(connection, condition.terms);
    }
    return count;
}

int32_t DeleteRows(Connection& connection, const TableLayout& layout, const Condition& condition,
                   OwnerLock& owners) {
    if (!IsFor(condition, layout)) {
        return 0;
    }
    switch (condition.selects) {
        case Condition::Selects::kEvent:
            return DeleteEvent(connection, condition.terms, owners.Mine());
        case Condition::Selects::kEventsOfAlarm:
            return DeleteEventsOfAlarm(connection, condition.terms);
        case Condition::Selects::kEventsNotInState:
            return DeleteInSight(connection, condition.terms);
        case Condition::Selects::kAlarm:
            break;
    }
    return ChangeRows(
        connection,
        "DELETE FROM " + Quoted(layout.table->name) + WhereInSight(*layout.table, condition.terms),
        condition.terms);
}

}  // namespace host
