// Tables that several pages show. Tested by tests/unit/host/web_pages_test.cpp.
#include "host/alarms/mending.h"
#include "host/pages/page_words.h"
#include "host/site/words.h"
#include "host/status/test_results.h"
#include "host/web/page_parts.h"

namespace host {
namespace {

Tone ToneOf(const Alarm& alarm, const std::string& outcome) {
    if (outcome == "resolved" || outcome == "acknowledged" || outcome == "done") {
        return Tone::kGood;
    }
    return alarm.state == "3" ? Tone::kBad : Tone::kPlain;
}

Tone ToneOf(const PageStory& page) {
    return page.unknown ? Tone::kBad : page.waits ? Tone::kDoubtful : Tone::kPlain;
}

// In the guide's words: what the result means, and what to look at.
std::string WhyOf(const Send& send) {
    const TestResult* const result =
        send.result == 0 ? nullptr : FindTestResult(send.result, false);
    if (result == nullptr) {
        return "";
    }
    return Escaped(std::string(result->meaning) + ". " + result->remedy);
}

std::string TableOr(const TableWords& words, const std::vector<std::string>& heading,
                    const std::vector<std::vector<std::string>>& rows) {
    return rows.empty() ? "<p>" + words.none + "</p>\n" : HtmlTable(words.caption, heading, rows);
}

}  // namespace

std::string LinkToAlarm(const PageAsked& asked, const std::string& number) {
    const bool is_number = number.find_first_not_of("0123456789") == std::string::npos;
    return is_number ? LinkTo(Url("/alarm", {{"number", number}}), number) : Shown(asked, number);
}

std::string SeverityOf(const Alarm& alarm) {
    const char* const word = WordFor(kSeverities, alarm.severity);
    return word == nullptr ? "unknown" : word;
}

std::string AlarmsTable(const PageAsked& asked, const TableWords& words,
                        const std::vector<Alarm>& alarms) {
    std::vector<std::vector<std::string>> rows;
    for (const Alarm& found : alarms) {
        const Alarm alarm = Mended(found, asked.encoding);
        const std::string outcome = OutcomeOf(asked.connection, found);
        rows.push_back({LinkToAlarm(asked, alarm.number), HtmlTime(alarm.raised), SeverityOf(alarm),
                        Shown(asked, alarm.group),
                        HtmlState(Decode(outcome, asked.encoding), ToneOf(found, outcome)),
                        Shown(asked, alarm.details)});
    }
    return TableOr(words, {"Alarm", "Raised", "Severity", "Group", "State", "Text"}, rows);
}

std::string PendingTable(const PageAsked& asked, const TableWords& words,
                         const std::vector<PageStory>& pages) {
    std::vector<std::vector<std::string>> rows;
    rows.reserve(pages.size());
    for (const PageStory& page : pages) {
        rows.push_back({LinkToAlarm(asked, page.alarm), Shown(asked, page.group),
                        Shown(asked, page.pager), HtmlState(StateOf(page), ToneOf(page)),
                        TriesOf(page), HtmlTime(page.queued), HtmlTime(page.due),
                        page.line.empty() ? "-" : Shown(asked, page.line)});
    }
    return TableOr(
        words, {"Alarm", "Group", "Pager", "State", "Tries", "Queued", "Due (computed)", "Line"},
        rows);
}

std::string FailedTable(const PageAsked& asked, const TableWords& words,
                        const std::vector<RecordedSend>& sends) {
    std::vector<std::vector<std::string>> rows;
    rows.reserve(sends.size());
    for (const auto& [row, send] : sends) {
        rows.push_back(
            {LinkTo(Url("/call", {{"send", std::to_string(row)}}), "Call " + std::to_string(row)),
             HtmlTime(send.at), send.alarm.empty() ? "-" : LinkToAlarm(asked, send.alarm),
             Shown(asked, send.pager), Shown(asked, send.port),
             HtmlState(WordOf(send.outcome), Tone::kBad), Shown(asked, send.reason), WhyOf(send)});
    }
    return TableOr(words,
                   {"Call", "At", "Alarm", "Pager", "Line", "Outcome", "Reason", "Meaning, remedy"},
                   rows);
}

}  // namespace host
