// The view of the status. Tested by tests/unit/host/cli_status_test.cpp.
#include "host/cli/status_view.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "host/cli/names.h"
#include "host/pages/page_words.h"
#include "host/site/site_tables.h"
#include "host/status/engine_words.h"
#include "host/store/look.h"
#include "host/text/json.h"
#include "host/text/printable.h"
#include "host/text/text_table.h"
#include "host/text/times.h"

namespace host {
namespace {

const char* WordOf(PageEnd end) {
    switch (end) {
        case PageEnd::kPending:
            return "pending";
        case PageEnd::kDone:
            return "done";
        case PageEnd::kOffLimit:
            return "off limit";
        case PageEnd::kAcknowledged:
            return "acknowledged";
        case PageEnd::kResolved:
            return "resolved";
        case PageEnd::kByHand:
            return "cancelled";
        case PageEnd::kDropped:
            break;
    }
    return "dropped";
}

Json ToJson(const PageStory& page, Encoding encoding) {
    Json json = {{"alarm", Decode(page.alarm, encoding)},
                 {"group", Decode(page.group, encoding)},
                 {"pager", Decode(page.pager, encoding)},
                 {"state", WordOf(page.end)},
                 {"outcome", StateOf(page)},
                 {"tries", page.tries},
                 {"retries", page.retries},
                 {"queued", LocalTime(page.queued)}};
    if (page.end == PageEnd::kPending) {
        json["computed"] = {{"due", LocalTime(page.due)}};
    } else {
        json["computed"] = {{"ended", LocalTime(page.ended)}};
    }
    return json;
}

Json ToJson(const std::vector<PageStory>& pages, Encoding encoding) {
    Json list = Json::array();
    for (const PageStory& page : pages) {
        list.push_back(ToJson(page, encoding));
    }
    return list;
}

std::string TableOf(const std::vector<PageStory>& pages, const char* last, Encoding encoding) {
    TextTable table({"ALARM", "GROUP", "PAGER", "STATE", "TRIES", "QUEUED", last});
    for (const PageStory& page : pages) {
        table.Add({Shown(page.alarm, encoding), Shown(page.group, encoding),
                   Shown(page.pager, encoding), StateOf(page), TriesOf(page),
                   LocalTime(page.queued),
                   LocalTime(page.end == PageEnd::kPending ? page.due : page.ended)});
    }
    return table.Text();
}

// How many rows a table can have in so many lines, its heading among them.
size_t RowsIn(size_t lines) {
    return lines > 0 ? lines - 1 : 0;
}

}  // namespace

EngineStatus ReadStatus(const std::string& database, int64_t ended) {
    return Look(database, [&](Connection& connection) {
        std::vector<PageStory> pending = PendingPages(connection);
        const size_t all_pending = pending.size();
        const Encoding encoding = EncodingOf(connection);
        return EngineStatus{encoding,
                            EngineOf(connection, database, encoding),
                            ReadLineStatus(connection),
                            std::move(pending),
                            all_pending,
                            EndedPages(connection, ended)};
    });
}

EngineStatus Fitting(EngineStatus status, size_t rows) {
    constexpr size_t kFixed = 3;  // what stands between the tables
    size_t left = rows > kFixed ? rows - kFixed : 0;
    status.lines.resize(std::min(status.lines.size(), RowsIn(left)));
    left -= status.lines.empty() ? 0 : status.lines.size() + 1;
    status.pending.resize(std::min(status.pending.size(), RowsIn(left)));
    left -= status.pending.empty() ? 0 : status.pending.size() + 1;
    const size_t ended = std::min(status.ended.size(), RowsIn(left));
    status.ended.erase(status.ended.begin(), status.ended.end() - static_cast<ptrdiff_t>(ended));
    return status;
}

std::string AsTables(const EngineStatus& status) {
    const size_t pending = status.pending.size();
    std::ostringstream out;
    out << "engine: " << (status.engine.empty() ? "not running" : Printable(status.engine)) << "\n"
        << LinesAsTable(status.lines, status.encoding) << "pending: " << status.all_pending;
    if (pending < status.all_pending) {
        out << ", the first " << pending;
    }
    out << "\n"
        << TableOf(status.pending, "DUE (computed)", status.encoding) << "ended, the last "
        << status.ended.size() << ":\n"
        << TableOf(status.ended, "ENDED (computed)", status.encoding);
    return out.str();
}

std::string AsJson(const EngineStatus& status) {
    const Json json = {{"engine", status.engine.empty() ? "not running" : "running"},
                       {"lines", LinesAsJson(status.lines, status.encoding)},
                       {"pending", ToJson(status.pending, status.encoding)},
                       {"ended", ToJson(status.ended, status.encoding)}};
    return Written(json) + "\n";
}

}  // namespace host
