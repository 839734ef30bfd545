// The history in the database. Tested by tests/unit/host/history_test.cpp.
#include "host/pages/history.h"

#include <algorithm>
#include <optional>

#include "host/alarms/alarms.h"
#include "host/alarms/states.h"
#include "host/pages/page_key.h"
#include "host/pages/pager_limits.h"
#include "host/pages/sends.h"
#include "host/store/event_history.h"
#include "host/store/pending.h"
#include "host/store/schema.h"

namespace host {
namespace {

// Its first three columns.
PageKey KeyIn(const Statement& statement) {
    return {std::string(statement.Text(0)), std::string(statement.Text(1)),
            std::string(statement.Text(2))};
}

std::vector<PageKey> ReadKeys(Statement& statement) {
    std::vector<PageKey> keys;
    while (statement.Step()) {
        keys.push_back(KeyIn(statement));
    }
    return keys;
}

// Changes of the page, and the engine's starts since the first of them.
std::vector<PageChange> ReadChanges(Connection& connection, const PageKey& key) {
    std::vector<PageChange> changes;
    Statement statement(connection,
                        "SELECT at, change, state, CAST(tries AS INTEGER), row_id, line, note"
                        " FROM Host_History"
                        " WHERE (alarm = ?1 AND pager = ?2 AND alarm_group = ?3)"
                        " OR (alarm = '' AND pager = '' AND change = ?4 AND row_id >"
                        "  (SELECT min(row_id) FROM Host_History"
                        "   WHERE alarm = ?1 AND pager = ?2 AND alarm_group = ?3))"
                        " ORDER BY row_id");
    statement.Bind(key.alarm).Bind(key.pager).Bind(key.group).Bind(kEngineStarts);
    while (statement.Step()) {
        changes.push_back({static_cast<std::time_t>(statement.Number(0)),
                           std::string(statement.Text(1)), std::string(statement.Text(2)),
                           statement.Number(3), statement.Number(4), std::string(statement.Text(5)),
                           std::string(statement.Text(6))});
    }
    return changes;
}

bool IsAcknowledged(Connection& connection, const std::string& number) {
    const std::optional<Alarm> alarm = FindAlarm(connection, number);
    return alarm && (alarm->acknowledged || alarm->state == kStateAcknowledged);
}

Reached ReachedWith(TracedPage::Outcome outcome) {
    switch (outcome) {
        case TracedPage::Outcome::kSent:
            return Reached::kSent;
        case TracedPage::Outcome::kDialled:
            return Reached::kDialled;
        case TracedPage::Outcome::kOutsideHours:
            return Reached::kOutsideHours;
        case TracedPage::Outcome::kNotSent:
        case TracedPage::Outcome::kCutOff:
            break;
    }
    return Reached::kNothing;
}

Reached ReachedBy(Connection& connection, const PageStory& page) {
    Reached reached = Reached::kUnknown;
    for (const Send& send : SendsOf(connection, page.alarm)) {
        if (send.pager == page.pager && send.at >= page.queued) {
            reached = std::max(reached, ReachedWith(send.outcome));
        }
    }
    return reached;
}

PageStory StoryOf(Connection& connection, const PageKey& key) {
    const PagerLimits limits = LimitsOf(connection, key.pager);
    PageStory story = TellStory(ReadChanges(connection, key), limits.delay,
                                IsAcknowledged(connection, key.alarm));
    story.alarm = key.alarm;
    story.group = key.group;
    story.pager = key.pager;
    story.retries = limits.retries;
    story.reached = ReachedBy(connection, story);
    return story;
}

// Of a page that no library has: it is due as soon as a line can have it. What there is of its
// history is that of a line that had it, or of an earlier alarm of its number.
void Wait(Connection& connection, PageStory& story) {
    story.waits = true;
    if (story.queued != 0 && story.end == PageEnd::kPending) {
        return;
    }
    const std::optional<Alarm> alarm = FindAlarm(connection, story.alarm);
    story.queued = alarm ? alarm->raised : 0;
    story.due = story.queued;
    story.tries = 0;
    story.end = PageEnd::kPending;
    story.ended = 0;
    story.ended_by = 0;
}

std::vector<PageStory> StoriesOf(Connection& connection, const std::vector<PageKey>& keys) {
    std::vector<PageStory> stories;
    stories.reserve(keys.size());
    for (const PageKey& key : keys) {
        stories.push_back(StoryOf(connection, key));
    }
    return stories;
}

}  // namespace

std::vector<PageStory> PendingPages(Connection& connection) {
    std::vector<PageStory> pages;
    Statement statement(
        connection,
        "SELECT alarm, alarm_group, pager, waits, line FROM"
        " (SELECT AlmLogID AS alarm, AlmGroup AS alarm_group, PagerDescr AS pager, 0 AS waits,"
        "   row_id AS place, line FROM AlarmFwd_PagerEvents WHERE PagerState = '2' UNION ALL"
        "  SELECT alarm, alarm_group, pager, 1, place, line FROM Host_Deliveries WHERE " +
            std::string(kWaitsForALibrary) +
            ")"
            " ORDER BY CAST(alarm AS INTEGER), waits, place");
    while (statement.Step()) {
        PageStory story = StoryOf(connection, KeyIn(statement));
        story.line = statement.Text(4);
        if (statement.Number(3) != 0) {
            Wait(connection, story);
        }
        pages.push_back(std::move(story));
    }
    return pages;
}

std::vector<PageStory> EndedPages(Connection& connection, int64_t count) {
    Statement statement(
        connection,
        "SELECT alarm, alarm_group, pager FROM"
        " (SELECT alarm, alarm_group, pager, max(row_id) AS last FROM Host_History AS history"
        "   WHERE alarm <> '' AND NOT EXISTS (SELECT 1 FROM AlarmFwd_PagerEvents"
        "    WHERE AlmLogID = history.alarm AND AlmGroup = history.alarm_group"
        "    AND PagerDescr = history.pager AND PagerState = '2')"
        "   AND NOT EXISTS (SELECT 1 FROM Host_Deliveries WHERE alarm = history.alarm"
        "    AND alarm_group = history.alarm_group AND pager = history.pager AND answer IS NULL)"
        "   GROUP BY alarm, alarm_group, pager ORDER BY last DESC LIMIT ?)"
        " ORDER BY last");
    statement.Bind(count);
    return StoriesOf(connection, ReadKeys(statement));
}

std::vector<PageStory> PagesEndedBetween(Connection& connection, int64_t first, int64_t last) {
    Statement statement(connection,
                        "SELECT alarm, alarm_group, pager FROM Host_History"
                        " WHERE row_id > ? AND row_id <= ? AND alarm <> ''"
                        " GROUP BY alarm, alarm_group, pager ORDER BY max(row_id)");
    statement.Bind(first).Bind(last);
    std::vector<PageStory> ended;
    for (PageStory& story : StoriesOf(connection, ReadKeys(statement))) {
        if (story.end != PageEnd::kPending && story.ended_by > first && story.ended_by <= last) {
            ended.push_back(std::move(story));
        }
    }
    return ended;
}

std::vector<PageStory> PagesOf(Connection& connection, const std::string& alarm) {
    Statement statement(connection,
                        "SELECT alarm, alarm_group, pager FROM Host_History WHERE alarm = ?"
                        " GROUP BY alarm, alarm_group, pager ORDER BY min(row_id)");
    statement.Bind(alarm);
    return StoriesOf(connection, ReadKeys(statement));
}

void NoteEngineStart(Connection& connection, const std::string& line) {
    HistoryRow start{kEngineStarts};
    start.line = line;
    WriteTransaction transaction(connection);
    WriteHistory(connection, start);
    transaction.Commit();
}

int32_t ForgetHistory(Connection& connection, std::time_t before) {
    WriteTransaction transaction(connection);
    Statement(connection,
              "DELETE FROM Host_History AS old WHERE alarm <> '' AND NOT EXISTS"
              " (SELECT 1 FROM Host_History WHERE alarm = old.alarm AND pager = old.pager"
              "  AND alarm_group = old.alarm_group AND at >= ?)"
              " AND alarm NOT IN"
              " (SELECT AlmLogID FROM AlarmFwd_PagerEvents WHERE PagerState = '2')"
              " AND alarm NOT IN (SELECT alarm FROM Host_Deliveries WHERE answer IS NULL)")
        .Bind(static_cast<int64_t>(before))
        .Run();
    const int32_t count = connection.Changes();
    // Starts of engines before every page that is left.
    connection.Execute(
        "DELETE FROM Host_History WHERE alarm = '' AND row_id <"
        " (SELECT coalesce(min(row_id), 9223372036854775807)"
        "  FROM Host_History WHERE alarm <> '')");
    Statement(connection,
              "DELETE FROM Host_Deliveries WHERE answer IS NOT NULL AND alarm NOT IN"
              " (SELECT alarm FROM Host_History) AND alarm NOT IN"
              " (SELECT alarmlogID FROM AlarmLog WHERE CAST(timestamp AS INTEGER) >= ?)")
        .Bind(static_cast<int64_t>(before))
        .Run();
    Statement(connection, "DELETE FROM Host_Sends WHERE at < ?")
        .Bind(static_cast<int64_t>(before))
        .Run();
    transaction.Commit();
    return count;
}

}  // namespace host
