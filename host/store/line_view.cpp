// The view of one line. Tested by tests/unit/host/line_view_test.cpp.
#include "host/store/line_view.h"

#include <utility>

namespace host {
namespace {

constexpr const char* kPortName = "Description";
constexpr const char* kPagersPort = "comport";

std::optional<LineView>& TheView() {
    static std::optional<LineView> view;
    return view;
}

bool Is(const Table& table, const char* name) {
    return table.name == std::string_view(name);
}

// Rows are numbered from 1 on.
std::vector<Term> Nothing() {
    return {{"row_id", "=", "0"}};
}

std::vector<Term> PortsInView(const LineView& view, std::vector<Term> terms) {
    for (Term& term : terms) {
        if (SameColumn(term.column, kPortName)) {
            if (term.value != kOnlyPort) {
                return Nothing();
            }
            term.value = view.line;
            return terms;
        }
    }
    terms.push_back({kPortName, "=", view.line});
    return terms;
}

bool GoesByAlarmAlone(const std::vector<Term>& terms) {
    return terms.size() == 1 && SameColumn(terms[0].column, "AlmLogID");
}

std::vector<Term> EventsInView(const LineView& view, std::vector<Term> terms) {
    if (GoesByAlarmAlone(terms)) {
        return terms;
    }
    if (!view.shows_pages) {
        return Nothing();
    }
    terms.push_back({kLineColumn, "=", view.line});
    return terms;
}

std::string_view CellOf(const ElementList& row, const char* column) {
    const std::string* const text = row.Find(column);
    return text == nullptr ? std::string_view() : std::string_view(*text);
}

// Hidden ones, too.
bool IsOwedToAnother(Connection& connection, const LineView& view, const ElementList& event) {
    Statement statement(connection,
                        "SELECT 1 FROM AlarmFwd_PagerEvents WHERE AlmLogID = ? AND AlmGroup = ?"
                        " AND PagerDescr = ? AND PagerState || '' = '2' AND line <> ?");
    return statement.Bind(CellOf(event, "AlmLogID"))
        .Bind(CellOf(event, "AlmGroup"))
        .Bind(CellOf(event, "PagerDescr"))
        .Bind(view.line)
        .Step();
}

}  // namespace

void SetLineView(std::optional<LineView> view) {
    TheView() = std::move(view);
}

bool ShowsPages() {
    return !TheView() || TheView()->shows_pages;
}

std::string PortInView(std::string_view port) {
    const std::optional<LineView>& view = TheView();
    if (!view) {
        return std::string(port);
    }
    return port == view->line ? kOnlyPort : "";
}

std::vector<Term> InView(const Table& table, std::vector<Term> terms) {
    const std::optional<LineView>& view = TheView();
    if (view && Is(table, kPorts)) {
        return PortsInView(*view, std::move(terms));
    }
    if (view && Is(table, kEvents)) {
        return EventsInView(*view, std::move(terms));
    }
    return terms;
}

std::string_view InView(const Table& table, std::string_view column, std::string_view cell) {
    const std::optional<LineView>& view = TheView();
    if (!view) {
        return cell;
    }
    const bool names_port = (Is(table, kPorts) && SameColumn(column, kPortName)) ||
                            (Is(table, kPagers) && SameColumn(column, kPagersPort));
    if (!names_port) {
        return cell;
    }
    return cell == view->line ? kOnlyPort : "";
}

void MakeOwn(Connection& connection, const Table& table, ElementList& row) {
    const std::optional<LineView>& view = TheView();
    if (!view || !Is(table, kEvents)) {
        return;
    }
    if (IsOwedToAnother(connection, *view, row)) {
        throw StoreError("the page of alarm " + std::string(CellOf(row, "AlmLogID")) +
                         " belongs to another line by now");
    }
    row.Set(kLineColumn, view->line);
}

}  // namespace host
