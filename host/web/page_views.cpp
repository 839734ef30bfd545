// Views. Tested by tests/unit/host/web_pages_test.cpp.
#include "host/web/page_views.h"

#include <algorithm>

#include "host/alarms/mending.h"
#include "host/pages/alarm_story.h"
#include "host/pages/history.h"
#include "host/pages/page_words.h"
#include "host/site/site_tables.h"
#include "host/site/words.h"
#include "host/store/tables/lines.h"
#include "host/web/html.h"
#include "host/web/token.h"

namespace host {
namespace {

constexpr int64_t kAlarms = 50;
constexpr size_t kPages = 50;

std::string Hidden(const char* name, const std::string& value) {
    return std::string("<input type=\"hidden\" name=\"") + name + "\" value=\"" + Escaped(value) +
           "\">";
}

std::string Navigation(const Viewer& viewer) {
    return "<a href=\"/\">Overview</a> <span>signed in as " + Escaped(viewer.token.name) +
           "</span> <form method=\"post\" action=\"/sign-out\">" + Hidden("form", viewer.form) +
           "<button>Sign out</button></form>";
}

std::string LinkTo(const std::string& number) {
    const bool is_number = number.find_first_not_of("0123456789") == std::string::npos;
    return is_number ? "<a href=\"/alarm?number=" + number + "\">" + number + "</a>"
                     : Escaped(number);
}

// In words, so that nobody has to tell colours apart.
std::string HealthOf(const LineState& line, Encoding encoding) {
    std::string health = line.paused ? "paused, " : "";
    health += WordOf(line.health);
    return line.health == Health::kSick ? health + ": " + Decode(line.reason, encoding) : health;
}

std::string LinesAsHtml(Connection& connection, Encoding encoding) {
    std::vector<std::vector<std::string>> rows;
    for (const LineState& line : ReadLines(connection)) {
        rows.push_back({Escaped(Decode(line.line, encoding)), Escaped(HealthOf(line, encoding)),
                        Escaped(line.doing.empty() ? "not served" : Decode(line.doing, encoding)),
                        HtmlTime(line.doing.empty() ? 0 : line.doing_since)});
    }
    return rows.empty() ? "<p>The site has no lines.</p>\n"
                        : HtmlTable("Lines", {"Line", "Health", "Doing", "Since"}, rows);
}

std::string PendingAsHtml(Connection& connection, Encoding encoding) {
    const std::vector<PageStory> pages = PendingPages(connection);
    std::vector<std::vector<std::string>> rows;
    for (size_t i = 0; i < std::min(pages.size(), kPages); ++i) {
        const PageStory& page = pages[i];
        rows.push_back({LinkTo(Decode(page.alarm, encoding)), Escaped(Decode(page.pager, encoding)),
                        StateOf(page),
                        std::to_string(page.tries) + " of " + std::to_string(page.retries + 1),
                        HtmlTime(page.due), Escaped(Decode(page.line, encoding))});
    }
    if (rows.empty()) {
        return "<p>No page is pending.</p>\n";
    }
    const std::string caption = "Pending pages: " + std::to_string(pages.size()) +
                                (pages.size() > kPages ? ", of which here are the first" : "");
    return HtmlTable(caption, {"Alarm", "Pager", "State", "Tries", "Due", "Line"}, rows);
}

std::string SeverityOf(const Alarm& alarm) {
    const char* const word = WordFor(kSeverities, alarm.severity);
    return word == nullptr ? "unknown" : word;
}

std::string AlarmsAsHtml(Connection& connection, Encoding encoding) {
    std::vector<Alarm> alarms = LastAlarms(connection, kAlarms);
    std::reverse(alarms.begin(), alarms.end());
    std::vector<std::vector<std::string>> rows;
    for (const Alarm& found : alarms) {
        const Alarm alarm = Mended(found, encoding);
        rows.push_back({LinkTo(Decode(alarm.number, encoding)), HtmlTime(alarm.raised),
                        SeverityOf(alarm), Escaped(Decode(alarm.group, encoding)),
                        Escaped(OutcomeOf(connection, found)),
                        Escaped(Decode(alarm.details, encoding))});
    }
    return rows.empty()
               ? "<p>There are no alarms.</p>\n"
               : HtmlTable("The last alarms",
                           {"Alarm", "Raised", "Severity", "Group", "State", "Text"}, rows);
}

std::string StoryAsHtml(Connection& connection, const Alarm& alarm, Encoding encoding) {
    std::vector<std::vector<std::string>> rows;
    for (const StoryLine& line : TellAlarm(connection, alarm)) {
        rows.push_back({HtmlTime(line.at), Escaped(Decode(line.pager, encoding)),
                        Escaped(line.what), Escaped(Decode(line.more, encoding))});
    }
    return HtmlTable("What became of it", {"At", "Pager", "What", "More"}, rows);
}

std::string FormsFor(const Viewer& viewer, const Alarm& alarm) {
    const std::string fields = Hidden("form", viewer.form) + Hidden("alarm", alarm.number);
    std::string forms;
    if (!alarm.acknowledged && May(viewer.token, kMayAcknowledge)) {
        forms += "<form method=\"post\" action=\"/acknowledge\">" + fields +
                 "<label>Comment <input name=\"comment\" maxlength=\"200\"></label>"
                 "<button>Acknowledge</button></form>\n";
    }
    if (alarm.withdrawn == 0 && May(viewer.token, kMayRaise)) {
        forms += "<form method=\"post\" action=\"/withdraw\">" + fields +
                 "<button>It is over</button></form>\n";
    }
    return forms;
}

}  // namespace

std::string SignInPage(const std::string& mistake) {
    return HtmlPage("Sign in", "<span>PagerFwd</span>",
                    (mistake.empty() ? "" : "<p role=\"alert\">" + Escaped(mistake) + "</p>\n") +
                        std::string("<form method=\"post\" action=\"/sign-in\">"
                                    "<label>Token <input type=\"password\" name=\"token\""
                                    " autocomplete=\"current-password\" required></label>"
                                    "<button>Sign in</button></form>\n"));
}

std::string OverviewPage(Connection& connection, const Viewer& viewer) {
    const Encoding encoding = EncodingOf(connection);
    return HtmlPage("Overview", Navigation(viewer),
                    "<h2>Lines</h2>\n" + LinesAsHtml(connection, encoding) +
                        "<h2>Pending pages</h2>\n" + PendingAsHtml(connection, encoding) +
                        "<h2>Alarms</h2>\n" + AlarmsAsHtml(connection, encoding));
}

std::optional<std::string> AlarmPage(Connection& connection, const Viewer& viewer,
                                     const std::string& number) {
    const std::optional<Alarm> found = FindAlarm(connection, number);
    if (!found) {
        return std::nullopt;
    }
    const Encoding encoding = EncodingOf(connection);
    const Alarm alarm = Mended(*found, encoding);
    std::string about = "<p>" + Escaped(Decode(alarm.details, encoding)) + "</p>\n<p>" +
                        Escaped(SeverityOf(alarm)) + ", " + Escaped(Decode(alarm.group, encoding)) +
                        ", from " + Escaped(Decode(alarm.server, encoding)) +
                        "; state: " + Escaped(OutcomeOf(connection, *found)) + "</p>\n";
    return HtmlPage("Alarm " + number, Navigation(viewer),
                    about + FormsFor(viewer, alarm) + StoryAsHtml(connection, *found, encoding));
}

std::string MistakePage(const std::string& title, const std::string& what) {
    return HtmlPage(title, "<a href=\"/\">Overview</a>",
                    "<p role=\"alert\">" + Escaped(what) + "</p>\n");
}

}  // namespace host
