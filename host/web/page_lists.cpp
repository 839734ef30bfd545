// Lists that are searched: pending pages, what failed, alarms, the trail. Tested by
// tests/unit/host/web_search_test.cpp.
#include <cstdint>
#include <optional>

#include "host/pages/pending.h"
#include "host/store/tables/trail.h"
#include "host/web/page_parts.h"

namespace host {
namespace {

constexpr const char* kFrom = "from";

int64_t Before(const PageAsked& asked) {
    return NumberInAddress(asked.target, kFrom, INT64_MAX);
}

bool FitsGroupOf(const Search& search, const std::string& number) {
    if (search.group.empty()) {
        return true;
    }
    const std::optional<Alarm> alarm = FindAlarm(search.asked.connection, number);
    return alarm && search.FitsGroup(alarm->group);
}

Gathered<Alarm> AlarmsFor(const Search& search, const std::string& state, int64_t before) {
    return Gather<Alarm>(
        before,
        [&](int64_t from, int64_t count) {
            return FindAlarms(search.asked.connection,
                              {from, count, state, search.pager_cell, search.since, search.until});
        },
        [&](const Alarm& alarm) { return search.FitsGroup(alarm.group); });
}

Gathered<RecordedSend> FailedFor(const Search& search) {
    return Gather<RecordedSend>(
        Before(search.asked),
        [&](int64_t before, int64_t count) {
            return FailedSends(search.asked.connection,
                               {before, count, search.pager_cell, search.since, search.until});
        },
        [&](const RecordedSend& failed) { return FitsGroupOf(search, failed.send.alarm); });
}

}  // namespace

std::string PendingPagesPage(const PageAsked& asked) {
    const Search search(asked);
    PendingWanted wanted;
    if (!search.group.empty()) {
        wanted.group = [&search](const std::string& group) { return search.FitsGroup(group); };
    }
    wanted.pager = search.pager_cell;
    wanted.state = search.state;
    wanted.since = search.since;
    wanted.until = search.until;
    wanted.after = InAddress(asked.target, kFrom);
    wanted.count = kRowsAPage;
    const PendingFound found = FindPending(asked.connection, wanted);
    return Framed(asked, "Pending pages",
                  SearchForm(search, {"pending", "waiting", "outcome unknown"}) +
                      Refreshed(PendingTable(asked,
                                             {"Pending: " + std::to_string(found.all),
                                              search.None(kNonePending)},
                                             found.pages) +
                                MoreOf(search, kFrom, found.next)));
}

std::string FailedPage(const PageAsked& asked) {
    const Search search(asked);
    const Gathered<RecordedSend> failed = FailedFor(search);
    const Gathered<Alarm> off_limit = AlarmsFor(search, "off limit", INT64_MAX);
    return Framed(
        asked, "What failed",
        SearchForm(search, {}) +
            Refreshed("<h2>Sendings</h2>\n" +
                      FailedTable(asked, {"Sendings that failed", search.None(kNoneFailed)},
                                  failed.rows) +
                      MoreOf(search, kFrom, failed.next) + "<h2>Alarms</h2>\n" +
                      AlarmsTable(asked,
                                  {"Alarms that were given up, and nobody has acknowledged",
                                   search.None("There are no such alarms.")},
                                  off_limit.rows) +
                      "<p class=\"more\">" +
                      LinkTo(Url("/alarms", {{"state", "off limit"}}), "All of these alarms") +
                      "</p>\n"));
}

std::string AlarmsPage(const PageAsked& asked) {
    const Search search(asked);
    const Gathered<Alarm> found = AlarmsFor(search, search.state, Before(asked));
    return Framed(
        asked, "Alarms",
        SearchForm(search,
                   {"new", "being paged", "acknowledged", "resolved", "off limit", "done"}) +
            Refreshed(
                AlarmsTable(asked, {"Alarms, the last first", search.None(kNoAlarms)}, found.rows) +
                MoreOf(search, kFrom, found.next)));
}

std::string TrailPage(const PageAsked& asked) {
    const std::vector<TrailEntry> trail =
        TrailBefore(asked.connection, Before(asked), static_cast<int64_t>(kRowsAPage));
    std::vector<std::vector<std::string>> rows;
    rows.reserve(trail.size());
    for (const TrailEntry& entry : trail) {
        rows.push_back({HtmlTime(entry.at), Escaped(entry.who), Escaped(entry.what),
                        entry.alarm.empty() ? "-" : LinkToAlarm(asked, entry.alarm),
                        Escaped(entry.note)});
    }
    const std::string more = trail.size() < kRowsAPage ? "" : std::to_string(trail.back().row);
    return Framed(
        asked, "Trail",
        "<p>What people, and programs in their name, have done.</p>\n" +
            Refreshed((rows.empty() ? "<p>Nobody has done anything yet.</p>\n"
                                    : HtmlTable("The last first",
                                                {"At", "Who", "What", "Alarm", "Note"}, rows)) +
                      MoreOf(Search(asked), kFrom, more)));
}

}  // namespace host
