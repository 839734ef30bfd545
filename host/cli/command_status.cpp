// pagerfwd status: what is pending, and what has become of the rest. Tested by
// tests/unit/host/cli_status_test.cpp and tests/e2e/run_test.cpp.
#include <CLI/CLI.hpp>
#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/cli/names.h"
#include "host/cli/program.h"
#include "host/cli/times.h"
#include "host/service/engine_locks.h"
#include "host/service/history.h"
#include "host/site/site_tables.h"
#include "host/store/pool.h"

namespace host {
namespace {

struct StatusOptions {
    bool json = false;
    int64_t ended = 20;
};

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
    explicit TableOut(Encoding encoding) : encoding_(encoding) {}

    void Head(const char* last) {
        Row("ALARM", "GROUP", "PAGER", "STATE", "TRIES", "QUEUED", last);
    }
    void Page(const PageStory& page) {
        const std::time_t last = page.end == PageEnd::kPending ? page.due : page.ended;
        Row(Shown(page.alarm, encoding_), Shown(page.group, encoding_),
            Shown(page.pager, encoding_), WordOf(page.end), TriesOf(page), LocalTime(page.queued),
            LocalTime(last));
    }

 private:
    static void Row(const std::string& alarm, const std::string& group, const std::string& pager,
                    const std::string& state, const std::string& tries, const std::string& queued,
                    const std::string& last) {
        std::cout << std::left << std::setw(11) << alarm << ' ' << std::setw(14) << group << ' '
                  << std::setw(16) << pager << ' ' << std::setw(12) << state << ' ' << std::setw(8)
                  << tries << ' ' << std::setw(19) << queued << ' ' << last << "\n";
    }

    const Encoding encoding_;
};

nlohmann::ordered_json ToJson(const PageStory& page, Encoding encoding) {
    nlohmann::ordered_json json = {{"alarm", Decode(page.alarm, encoding)},
                                   {"group", Decode(page.group, encoding)},
                                   {"pager", Decode(page.pager, encoding)},
                                   {"state", WordOf(page.end)},
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

void PrintJson(const std::vector<PageStory>& pending, const std::vector<PageStory>& ended,
               Encoding encoding, bool runs) {
    nlohmann::ordered_json json = {{"engine", runs ? "running" : "not running"},
                                   {"pending", nlohmann::ordered_json::array()},
                                   {"ended", nlohmann::ordered_json::array()}};
    for (const PageStory& page : pending) {
        json["pending"].push_back(ToJson(page, encoding));
    }
    for (const PageStory& page : ended) {
        json["ended"].push_back(ToJson(page, encoding));
    }
    std::cout << json.dump(2) << "\n";
}

void PrintTables(const std::vector<PageStory>& pending, const std::vector<PageStory>& ended,
                 Encoding encoding, const std::string& engine) {
    std::cout << "engine: " << engine << "\n";
    TableOut table(encoding);
    std::cout << "pending: " << pending.size() << "\n";
    if (!pending.empty()) {
        table.Head("DUE (computed)");
    }
    for (const PageStory& page : pending) {
        table.Page(page);
    }
    std::cout << "ended, the last " << ended.size() << ":\n";
    if (!ended.empty()) {
        table.Head("ENDED (computed)");
    }
    for (const PageStory& page : ended) {
        table.Page(page);
    }
}

ExitCode Status(const Program& program, const StatusOptions& options) {
    Lease lease(program.database);
    const Encoding encoding = EncodingOf(lease.Database());
    LockFile lock = DatabaseLock(program.database);
    const bool runs = lock.IsTaken();
    const std::vector<PageStory> pending = PendingPages(lease.Database());
    const std::vector<PageStory> ended = EndedPages(lease.Database(), options.ended);
    if (options.json) {
        PrintJson(pending, ended, encoding, runs);
    } else {
        PrintTables(pending, ended, encoding, runs ? lock.Holder() : "not running");
    }
    return kDone;
}

}  // namespace

void AddStatus(CLI::App& app, Program& program) {
    CLI::App* const command = app.add_subcommand(
        "status", "Show the pages that are pending, and the last that have ended");
    const auto options = std::make_shared<StatusOptions>();
    command->add_option("--ended", options->ended, "How many that have ended")
        ->capture_default_str()
        ->check(CLI::NonNegativeNumber);
    command->add_flag("--json", options->json, "As JSON");
    command->footer(
        "Looking changes nothing. \"Off limit\" are pages that were given up; \"done\" those that "
        "a\n"
        "centre confirmed, or that an SMS pager's hours kept from leaving. When a page is due and\n"
        "when it ended is computed from the changes of the tables, by the rules of the engine.\n\n"
        "Example:\n"
        "  pagerfwd --database site.db status\n");
    command->callback([options, &program] {
        program.command = [options, &program] { return Status(program, *options); };
    });
}

}  // namespace host
