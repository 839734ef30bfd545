// The view of the status. Tested by tests/unit/host/cli_status_test.cpp.
#include "host/cli/status_view.h"

#include <iomanip>
#include <sstream>

#include "host/cli/names.h"
#include "host/cli/times.h"
#include "host/service/engine_locks.h"
#include "host/service/page_words.h"
#include "host/site/site_tables.h"
#include "host/store/look.h"
#include "host/text/json.h"
#include "host/text/printable.h"

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
        case PageEnd::kDropped:
            break;
    }
    return "dropped";
}

std::string TriesOf(const PageStory& page) {
    return std::to_string(page.tries) + " of " + std::to_string(page.retries + 1);
}

class TableOut {
 public:
    TableOut(std::ostream& out, Encoding encoding) : out_(out), encoding_(encoding) {}

    void Head(const char* last) {
        Row("ALARM", "GROUP", "PAGER", "STATE", "TRIES", "QUEUED", last);
    }
    void Page(const PageStory& page) {
        const std::time_t last = page.end == PageEnd::kPending ? page.due : page.ended;
        Row(Shown(page.alarm, encoding_), Shown(page.group, encoding_),
            Shown(page.pager, encoding_), StateOf(page), TriesOf(page), LocalTime(page.queued),
            LocalTime(last));
    }

 private:
    void Row(const std::string& alarm, const std::string& group, const std::string& pager,
             const std::string& state, const std::string& tries, const std::string& queued,
             const std::string& last) {
        out_ << std::left << std::setw(11) << alarm << ' ' << std::setw(14) << group << ' '
             << std::setw(16) << pager << ' ' << std::setw(14) << state << ' ' << std::setw(8)
             << tries << ' ' << std::setw(19) << queued << ' ' << last << "\n";
    }

    std::ostream& out_;
    const Encoding encoding_;
};

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

void PrintTable(std::ostream& out, const std::vector<PageStory>& pages, const char* last,
                Encoding encoding) {
    TableOut table(out, encoding);
    if (!pages.empty()) {
        table.Head(last);
    }
    for (const PageStory& page : pages) {
        table.Page(page);
    }
}

std::string NameOf(const LockFile& lock) {
    const std::string words = lock.Words();
    return words.empty() ? lock.Holder() : words;
}

}  // namespace

EngineStatus ReadStatus(const std::string& database, int64_t ended) {
    const LockFile lock = DatabaseLock(database);
    return Look(database, [&](Connection& connection) {
        return EngineStatus{EncodingOf(connection), lock.IsTaken() ? NameOf(lock) : std::string(),
                            PendingPages(connection), EndedPages(connection, ended)};
    });
}

std::string AsTables(const EngineStatus& status) {
    std::ostringstream out;
    out << "engine: " << (status.engine.empty() ? "not running" : Printable(status.engine)) << "\n"
        << "pending: " << status.pending.size() << "\n";
    PrintTable(out, status.pending, "DUE (computed)", status.encoding);
    out << "ended, the last " << status.ended.size() << ":\n";
    PrintTable(out, status.ended, "ENDED (computed)", status.encoding);
    return out.str();
}

std::string AsJson(const EngineStatus& status) {
    const Json json = {{"engine", status.engine.empty() ? "not running" : "running"},
                       {"pending", ToJson(status.pending, status.encoding)},
                       {"ended", ToJson(status.ended, status.encoding)}};
    return Written(json) + "\n";
}

}  // namespace host
