// Calls that look. Tested by tests/unit/host/web_look_test.cpp.
#include <algorithm>
#include <array>
#include <charconv>

#include "host/alarms/mending.h"
#include "host/intake/alarm_json.h"
#include "host/pages/alarm_story.h"
#include "host/pages/history.h"
#include "host/pages/page_words.h"
#include "host/pages/pending.h"
#include "host/site/site_tables.h"
#include "host/site/words.h"
#include "host/store/tables/alarm_log.h"
#include "host/store/tables/history.h"
#include "host/store/tables/lines.h"
#include "host/store/tables/nodes.h"
#include "host/store/tables/states.h"
#include "host/web/api_calls.h"

namespace host {
namespace {

constexpr int64_t kMost = 1000;
constexpr int64_t kUsual = 100;

// 2001-01-08T10:00:00Z; null where there is none.
Json Instant(std::time_t instant) {
    std::tm parts{};
    std::array<char, 32> text{};
    if (instant == 0 || gmtime_r(&instant, &parts) == nullptr ||
        std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts) == 0) {
        return nullptr;
    }
    return text.data();
}

int64_t NumberIn(const WebTarget& target, const char* name, int64_t otherwise, int64_t most) {
    const auto found = target.query.find(name);
    if (found == target.query.end()) {
        return otherwise;
    }
    int64_t number = -1;
    const char* const end = found->second.data() + found->second.size();
    const auto read = std::from_chars(found->second.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end || number < 0 || number > most) {
        throw BadField(name, "a number from 0 to " + std::to_string(most) + " is expected here");
    }
    return number;
}

// Which of a list is asked for, and how many at once.
struct Cursor {
    explicit Cursor(const WebTarget& target)
        : after(NumberIn(target, "after", 0, INT64_MAX)),
          count(NumberIn(target, "count", kUsual, kMost)) {}

    const int64_t after;
    const int64_t count;
};

void RefuseOthers(const WebTarget& target, const std::vector<std::string>& known) {
    for (const auto& [name, value] : target.query) {
        if (std::find(known.begin(), known.end(), name) == known.end()) {
            throw BadField(name, "there is no such parameter");
        }
    }
}

Json Acknowledgement(const Alarm& alarm, Encoding encoding) {
    if (!alarm.acknowledged || EndedByWithdrawal(alarm)) {
        return nullptr;
    }
    return {{"at", Instant(alarm.acknowledged_at)},
            {"by", Decode(alarm.acknowledged_by, encoding)}};
}

Json AlarmAsJson(Connection& connection, const Alarm& found, Encoding encoding) {
    const Alarm alarm = Mended(found, encoding);
    const char* const severity = WordFor(kSeverities, alarm.severity);
    return {{"alarm", NumberOrText(Decode(alarm.number, encoding))},
            {"raised", Instant(alarm.raised)},
            {"severity", severity == nullptr ? "unknown" : severity},
            {"group", Decode(alarm.group, encoding)},
            {"server", Decode(alarm.server, encoding)},
            {"text", Decode(alarm.details, encoding)},
            {"state", Decode(OutcomeOf(connection, found), encoding)},
            {"source", alarm.source},
            {"key", alarm.key},
            {"times", alarm.times_raised},
            {"acknowledged", Acknowledgement(alarm, encoding)},
            {"resolved", Instant(alarm.withdrawn)}};
}

Json TextOrNull(const std::string& text, Encoding encoding) {
    return text.empty() ? Json() : Json(Decode(text, encoding));
}

Json StoryAsJson(Connection& connection, const Alarm& alarm, Encoding encoding) {
    Json story = Json::array();
    for (const StoryLine& line : TellAlarm(connection, alarm)) {
        story.push_back({{"at", Instant(line.at)},
                         {"pager", TextOrNull(line.pager, encoding)},
                         {"what", line.what},
                         {"more", Decode(line.more, encoding)}});
    }
    return story;
}

Json PageAsJson(const PageStory& page, Encoding encoding) {
    return {{"alarm", NumberOrText(Decode(page.alarm, encoding))},
            {"group", Decode(page.group, encoding)},
            {"pager", Decode(page.pager, encoding)},
            {"state", StateOf(page)},
            {"tries", page.tries},
            {"of", page.retries + 1},
            {"queued", Instant(page.queued)},
            {"due", Instant(page.due)},
            {"line", TextOrNull(page.line, encoding)}};
}

// 0 for what only another program can have written: such pages are the first.
int64_t NumberOf(const PageStory& page) {
    return IsLibraryNumber(page.alarm) ? std::stoll(page.alarm) : 0;
}

// Pages end meanwhile, so a client goes on alarm by alarm.
PendingFound PagesBehind(const ApiCall& call, const Cursor& cursor) {
    PendingWanted wanted;
    wanted.count = static_cast<size_t>(cursor.count);
    wanted.whole_alarms = true;
    if (call.target.query.count("after") != 0) {
        wanted.after = std::to_string(static_cast<uint64_t>(cursor.after) + 1);
    }
    return FindPending(call.connection, wanted);
}

}  // namespace

Json ShowAlarms(const ApiCall& call) {
    RefuseOthers(call.target, {"after", "count"});
    const Cursor cursor(call.target);
    const Encoding encoding = EncodingOf(call.connection);
    const std::vector<Alarm> found = AlarmsBehind(call.connection, cursor.after, cursor.count);
    Json alarms = Json::array();
    for (const Alarm& alarm : found) {
        alarms.push_back(AlarmAsJson(call.connection, alarm, encoding));
    }
    const bool more = !found.empty() && static_cast<int64_t>(found.size()) == cursor.count;
    return {{"alarms", alarms}, {"next", more ? Json(found.back().row) : Json()}};
}

Json ShowAlarm(const ApiCall& call, const std::string& number) {
    RefuseOthers(call.target, {});
    const std::optional<Alarm> alarm = FindAlarm(call.connection, number);
    if (!alarm) {
        throw ApiError(404, "there is no alarm of this number");
    }
    const Encoding encoding = EncodingOf(call.connection);
    Json json = AlarmAsJson(call.connection, *alarm, encoding);
    json["story"] = StoryAsJson(call.connection, *alarm, encoding);
    return json;
}

Json ShowPages(const ApiCall& call) {
    RefuseOthers(call.target, {"after", "count"});
    const Cursor cursor(call.target);
    const Encoding encoding = EncodingOf(call.connection);
    const PendingFound found = PagesBehind(call, cursor);
    Json pages = Json::array();
    for (const PageStory& page : found.pages) {
        pages.push_back(PageAsJson(page, encoding));
    }
    const bool more = !found.pages.empty() && !found.next.empty();
    return {{"pages", pages},
            {"pending", found.all},
            {"next", more ? Json(NumberOf(found.pages.back())) : Json()}};
}

Json ShowHistory(const ApiCall& call) {
    RefuseOthers(call.target, {"after", "count"});
    const Cursor cursor(call.target);
    const Encoding encoding = EncodingOf(call.connection);
    const std::vector<PageChangeOf> found =
        ChangesBehind(call.connection, cursor.after, cursor.count);
    Json changes = Json::array();
    for (const auto& [page, change] : found) {
        changes.push_back({{"at", Instant(change.at)},
                           {"alarm", NumberOrText(Decode(page.alarm, encoding))},
                           {"group", Decode(page.group, encoding)},
                           {"pager", Decode(page.pager, encoding)},
                           {"change", change.change},
                           {"state", StateWord(change.state)},
                           {"tries", change.tries},
                           {"line", TextOrNull(change.line, encoding)},
                           {"note", Decode(change.note, encoding)}});
    }
    const bool more = !found.empty() && static_cast<int64_t>(found.size()) == cursor.count;
    return {{"history", changes}, {"next", more ? Json(found.back().change.row) : Json()}};
}

Json ShowLines(const ApiCall& call) {
    RefuseOthers(call.target, {});
    const Encoding encoding = EncodingOf(call.connection);
    Json lines = Json::array();
    for (const LineState& line : ReadLines(call.connection)) {
        lines.push_back({{"line", Decode(line.line, encoding)},
                         {"health", WordOf(line.health)},
                         {"since", Instant(line.since)},
                         {"reason", Decode(line.reason, encoding)},
                         {"paused", line.paused},
                         {"doing", Decode(line.doing, encoding)},
                         {"node", TextOrNull(line.node, encoding)}});
    }
    return {{"lines", lines}};
}

Json ShowNodes(const ApiCall& call) {
    RefuseOthers(call.target, {});
    const Encoding encoding = EncodingOf(call.connection);
    Json nodes = Json::array();
    for (const NodeState& node : ReadNodes(call.connection)) {
        nodes.push_back({{"node", Decode(node.node, encoding)},
                         {"runs", node.lives},
                         {"leads", node.leads},
                         {"drained", node.drained},
                         {"in_site_file", node.of_site},
                         {"process", TextOrNull(node.holder, encoding)}});
    }
    return {{"nodes", nodes}};
}

}  // namespace host
