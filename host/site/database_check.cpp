// The rules for a database. Tested by tests/unit/host/database_check_test.cpp.
#include "host/site/database_check.h"

#include <algorithm>
#include <unordered_map>

#include "host/site/ports_of_pager.h"
#include "host/site/rules.h"
#include "host/site/sending_rules.h"
#include "host/site/site_check.h"
#include "host/site/site_tables.h"
#include "host/site/stored_tables.h"
#include "host/store/schema.h"
#include "host/text/encoding.h"

namespace host {
namespace {

constexpr const char* kShorten = "Acknowledge the alarm, and raise it anew with a shorter text.";
constexpr const char* kPlainly = "Acknowledge the alarm, and raise it anew without accents.";
constexpr size_t kShortestSeverity = 5;  // "Major"

struct PendingPage {
    int line;
    std::string alarm;
    std::string pager;    // UTF-8
    std::string details;  // as the tables have it
    size_t shortest;      // the whole text has at least so many characters
};

// "OPS/" of "OPS/7".
size_t SizeOfGroup(const std::string& group) {
    return std::min(group.find('/'), group.size()) + 1;
}

std::vector<PendingPage> ReadPending(StoredTables& tables, Encoding encoding, Findings& findings) {
    const StoredTable events = tables.Read(kEvents, findings);
    const StoredTable alarms = tables.Read(kAlarmLog, findings);
    std::unordered_map<std::string, const StoredRow*> pending;
    for (const StoredRow& row : alarms.rows) {
        if (alarms.Cell(row, "pagerstate") == "2") {
            pending.emplace(alarms.Cell(row, "alarmlogID"), &row);
        }
    }
    std::vector<PendingPage> pages;
    for (const StoredRow& event : events.rows) {
        const std::string alarm = events.Cell(event, "AlmLogID");
        const auto found = pending.find(alarm);
        if (events.Cell(event, "PagerState") != "2" || found == pending.end()) {
            continue;
        }
        const std::string details = alarms.Cell(*found->second, "details");
        pages.push_back({event.line, alarm, Decode(events.Cell(event, "PagerDescr"), encoding),
                         details,
                         SizeOfGroup(events.Cell(event, "AlmGroup")) + kShortestSeverity +
                             events.Cell(event, "ServerN").size() + details.size() + 2});
    }
    return pages;
}

// How many characters the pager's type takes of an alarm's text; 0: it takes none.
size_t MostOf(const Pager& pager) {
    if (pager.type.value == "alphanumeric") {
        return 80;
    }
    return pager.type.value == "sms1" || pager.type.value == "sms2" ? 140 : 0;
}

void CheckPage(const Site& site, const Pager& pager, const PendingPage& page, Encoding encoding,
               Findings& findings) {
    const size_t most = MostOf(pager);
    const std::string called =
        "alarm " + page.alarm + ", pending for pager " + InQuotes(page.pager);
    if (most > 0 && page.shortest > most) {
        findings.Warning(page.line, called + ": its text is long",
                         "Only the first " + std::to_string(most) + " characters would be sent.",
                         kShorten);
    }
    const std::string low = AsSevenBits(page.details);
    if (low == page.details) {
        return;
    }
    for (const Port* port : PortsOf(site, pager)) {
        if (LosesEighthBit(*port, pager)) {
            findings.Warning(page.line, called + ": seven bits of each character reach the service",
                             InQuotes(Decode(page.details, encoding)) + " would be sent as " +
                                 InQuotes(low) + ".",
                             kPlainly);
            return;
        }
    }
}

}  // namespace

ReadBack CheckDatabase(Connection& connection) {
    StoredTables tables(connection);
    ReadBack read = ReadSiteBack(connection, tables);
    CheckSite(read.site, read.findings);
    if (read.site.nodes.size() > 1 && !connection.Can().spans_hosts) {
        read.findings.Error(1, "the site has several nodes, and its database is a file",
                            "Only programs of one host can have it open: no node starts.",
                            "Move the site to a database on a server.");
    }
    const Encoding encoding = EncodingOf(connection);
    for (const PendingPage& page : ReadPending(tables, encoding, read.findings)) {
        for (const Pager& pager : read.site.pagers) {
            if (pager.description.value == page.pager) {
                CheckPage(read.site, pager, page, encoding, read.findings);
            }
        }
    }
    return read;
}

}  // namespace host
