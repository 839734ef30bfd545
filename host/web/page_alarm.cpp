// An alarm, with all that became of it. Tested by tests/unit/host/web_pages_test.cpp.
#include <optional>

#include "host/alarms/mending.h"
#include "host/pages/alarm_story.h"
#include "host/pages/page_words.h"
#include "host/store/tables/trail.h"
#include "host/web/page_parts.h"
#include "host/web/token.h"

namespace host {
namespace {

std::string Story(const PageAsked& asked, const Alarm& alarm) {
    std::vector<std::vector<std::string>> rows;
    for (const StoryLine& line : TellAlarm(asked.connection, alarm)) {
        rows.push_back({HtmlTime(line.at), line.pager.empty() ? "-" : Shown(asked, line.pager),
                        Escaped(line.what), Shown(asked, line.more)});
    }
    return "<h2>What became of it</h2>\n" +
           HtmlTable("In order of time", {"At", "Pager", "What", "More"}, rows);
}

std::string Calls(const PageAsked& asked, const Alarm& alarm) {
    std::vector<std::vector<std::string>> rows;
    for (const auto& [row, send] : RecordedSendsOf(asked.connection, alarm.number)) {
        const bool failed = send.outcome == TracedPage::Outcome::kNotSent ||
                            send.outcome == TracedPage::Outcome::kCutOff;
        rows.push_back(
            {LinkTo(Url("/call", {{"send", std::to_string(row)}}), "Call " + std::to_string(row)),
             HtmlTime(send.at), Shown(asked, send.pager),
             send.port.empty() ? "-" : Shown(asked, send.port), std::to_string(send.seconds) + " s",
             HtmlState(WordOf(send.outcome), failed ? Tone::kBad : Tone::kPlain),
             Shown(asked, send.reason)});
    }
    return "<h2>Calls</h2>\n" +
           (rows.empty()
                ? "<p>Nobody has been called yet.</p>\n"
                : HtmlTable("Each with its dialogue",
                            {"Call", "At", "Pager", "Line", "Took", "Outcome", "Reason"}, rows));
}

std::string Trail(const PageAsked& asked, const Alarm& alarm) {
    std::vector<std::vector<std::string>> rows;
    for (const TrailEntry& entry : TrailOf(asked.connection, alarm.number)) {
        rows.push_back(
            {HtmlTime(entry.at), Escaped(entry.who), Escaped(entry.what), Escaped(entry.note)});
    }
    return rows.empty() ? ""
                        : "<h2>Who did what</h2>\n" +
                              HtmlTable("The trail", {"At", "Who", "What", "Comment"}, rows);
}

std::string Forms(const PageAsked& asked, const Alarm& alarm) {
    const Token& token = asked.viewer.token;
    const UrlQuery which = {{"alarm", alarm.number}};
    std::string forms;
    if (!alarm.acknowledged && May(token, kMayAcknowledge)) {
        forms += FormBegin(asked, "/acknowledge", which) +
                 "<label>Comment <input name=\"comment\" maxlength=\"200\" autocomplete=\"off\">"
                 "</label><button>Acknowledge</button></form>\n";
    }
    if (alarm.withdrawn == 0 && May(token, kMayRaise)) {
        forms +=
            FormBegin(asked, "/withdraw", which) + "<button>Withdraw: it is over</button></form>\n";
    }
    return forms;
}

std::string Facts(const PageAsked& asked, const Alarm& alarm, const std::string& outcome) {
    std::vector<HtmlFact> facts = {
        {"State", "<span role=\"status\">" + HtmlState(outcome, Tone::kPlain) + "</span>"},
        {"Severity", SeverityOf(alarm)},
        {"Group", Shown(asked, alarm.group)},
        {"Server", alarm.server.empty() ? "-" : Shown(asked, alarm.server)},
        {"Raised", HtmlTime(alarm.raised)}};
    if (!alarm.key.empty()) {
        facts.push_back({"Source, and key", Escaped(alarm.source) + ", " + Escaped(alarm.key)});
    }
    return HtmlFacts(facts);
}

}  // namespace

std::string AlarmPage(const PageAsked& asked) {
    const std::string number = InAddress(asked.target, "number");
    const std::optional<Alarm> found = FindAlarm(asked.connection, number);
    if (!found) {
        throw NotFound();
    }
    const Alarm alarm = Mended(*found, asked.encoding);
    const std::string outcome = Decode(OutcomeOf(asked.connection, *found), asked.encoding);
    return Framed(asked, "Alarm " + number,
                  "<p class=\"text\">" + Shown(asked, alarm.details) + "</p>\n" +
                      Forms(asked, alarm) +
                      Refreshed(Facts(asked, alarm, outcome) + Story(asked, *found) +
                                Calls(asked, *found) + Trail(asked, *found)));
}

}  // namespace host
