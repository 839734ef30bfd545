// The overview: whether paging is alive, what is pending, what failed. Tested by
// tests/unit/host/web_pages_test.cpp.
#include <chrono>

#include "host/pages/pending.h"
#include "host/site/stored_commands.h"
#include "host/status/engine_words.h"
#include "host/status/line_status.h"
#include "host/store/tables/events.h"
#include "host/store/tables/nodes.h"
#include "host/text/age.h"
#include "host/web/page_parts.h"
#include "host/web/token.h"

namespace host {
namespace {

constexpr size_t kPendingShown = 20;
constexpr int64_t kFailedShown = 5;
constexpr int64_t kAlarmsShown = 20;

// What there is to say of whether paging is alive.
struct Life {
    std::string engine;  // UTF-8; empty: nobody serves the site
    std::vector<NodeState> nodes;
    std::vector<LineStatus> lines;
    std::time_t oldest = 0;  // alarm of which a page was never tried
    Watchman::Report report;
};

Life LookAt(const PageAsked& asked) {
    return {EngineOf(asked.connection, asked.database, asked.encoding), ReadNodes(asked.connection),
            ReadLineStatus(asked.connection), OldestUntried(asked.connection),
            asked.watchman.Look(asked.connection, asked.encoding, asked.now)};
}

bool Serves(const LineState& line) {
    return !line.paused && line.health == Health::kWell && !line.doing.empty();
}

// How many things want somebody's eye, though pages leave.
size_t CountDoubts(const Life& life) {
    size_t doubts = life.report.amiss.size();
    for (const LineStatus& line : life.lines) {
        doubts += Serves(line.state) ? 0 : 1;
    }
    for (const NodeState& node : life.nodes) {
        doubts += node.of_site && !node.lives && !node.holder.empty() ? 1 : 0;
    }
    return doubts;
}

std::string Verdict(const Life& life) {
    size_t serving = 0;
    for (const LineStatus& line : life.lines) {
        serving += Serves(line.state) ? 1 : 0;
    }
    std::string words;
    Tone tone = Tone::kGood;
    if (life.engine.empty()) {
        words = "Paging is not alive: no engine is running.";
        tone = Tone::kBad;
    } else if (serving == 0) {
        words = "Paging is not alive: no line is in service.";
        tone = Tone::kBad;
    } else if (CountDoubts(life) > 0) {
        words = "Paging is alive, but not all is as it should be.";
        tone = Tone::kDoubtful;
    } else {
        words = "Paging is alive.";
    }
    return "<p class=\"verdict\">" + HtmlState(words, tone) + "</p>\n";
}

std::string Oldest(const PageAsked& asked, const Life& life) {
    if (life.oldest == 0) {
        return "none";
    }
    return "of an alarm raised " + HtmlTime(life.oldest) + ", " +
           AgeInWords(std::chrono::seconds(asked.now - life.oldest)) + " ago";
}

std::string Heartbeat(const PageAsked& asked, const Watchman::Report& report) {
    const bool told = !ReadCommand(asked.connection, kHeartbeatCommand).empty();
    std::string html = HtmlState(!report.twice          ? "reckoned once; in a minute again"
                                 : report.amiss.empty() ? "all is as it should be"
                                                        : "not all is as it should be",
                                 !report.twice          ? Tone::kPlain
                                 : report.amiss.empty() ? Tone::kGood
                                                        : Tone::kBad) +
                       ", reckoned " + HtmlTime(report.at) +
                       (told ? "" : "; nobody outside is told, since the site has no [heartbeat]");
    for (const Amiss& amiss : report.amiss) {
        html += "<br>alarm " + LinkToAlarm(asked, amiss.alarm) +
                (amiss.pager.empty() ? "" : ", pager " + Escaped(amiss.pager)) + ": " +
                Escaped(amiss.what);
    }
    return html;
}

std::string NodesTable(const PageAsked& asked, const std::vector<NodeState>& nodes) {
    if (nodes.size() < 2) {
        return "";
    }
    std::vector<std::vector<std::string>> rows;
    for (const NodeState& node : nodes) {
        const Tone tone = node.lives && !node.drained ? Tone::kGood
                          : node.holder.empty()       ? Tone::kDoubtful
                                                      : Tone::kBad;
        rows.push_back({Shown(asked, node.node), HtmlState(StateOf(node), tone),
                        node.holder.empty() ? "-" : Shown(asked, node.holder),
                        std::to_string(node.term), node.leads ? "yes" : "-"});
    }
    return HtmlTable("Nodes", {"Node", "State", "Process", "Term", "Leads"}, rows);
}

Tone ToneOf(const LineState& line) {
    return line.health == Health::kSick ? Tone::kBad : Serves(line) ? Tone::kGood : Tone::kDoubtful;
}

std::string PauseForm(const PageAsked& asked, const LineState& line, size_t place) {
    const char* const does = line.paused ? "Resume" : "Pause";
    return FormBegin(asked, line.paused ? "/resume" : "/pause",
                     {{"line", Decode(line.line, asked.encoding)}}) +
           "<button id=\"line-" + std::to_string(place) + "\">" + does +
           "<span class=\"unseen\"> " + Shown(asked, line.line) + "</span></button></form>";
}

std::string LinesTable(const PageAsked& asked, const std::vector<LineStatus>& lines) {
    if (lines.empty()) {
        return "<p>The site has no lines.</p>\n";
    }
    const bool manages = May(asked.viewer.token, kMayManage);
    std::vector<std::string> columns = {"Line",  "Health",    "Doing", "Since",
                                        "Pages", "Last sent", "Device"};
    if (manages) {
        columns.emplace_back("Change");
    }
    std::vector<std::vector<std::string>> rows;
    for (const auto& [line, pages, sent] : lines) {
        std::vector<std::string> row = {
            Shown(asked, line.line),
            HtmlState(HealthOf(line, asked.encoding), ToneOf(line)),
            line.doing.empty() ? "not served" : Shown(asked, line.doing),
            HtmlTime(line.doing.empty() ? 0 : line.doing_since),
            std::to_string(pages),
            HtmlTime(sent),
            Shown(asked, DeviceOf(line))};
        if (manages) {
            row.push_back(PauseForm(asked, line, rows.size()));
        }
        rows.push_back(std::move(row));
    }
    return HtmlTable("Lines", columns, rows);
}

std::string Alive(const PageAsked& asked) {
    const Life life = LookAt(asked);
    return "<h2>Is paging alive?</h2>\n" + Verdict(life) +
           HtmlFacts({{"As of", HtmlTime(asked.now)},
                      {"Engine", life.engine.empty() ? "not running" : Escaped(life.engine)},
                      {"Oldest first page that waits", Oldest(asked, life)},
                      {"Heartbeat", Heartbeat(asked, life.report)}}) +
           NodesTable(asked, life.nodes) + LinesTable(asked, life.lines);
}

std::string Pending(const PageAsked& asked) {
    PendingWanted wanted;
    wanted.count = kPendingShown;
    const PendingFound found = FindPending(asked.connection, wanted);
    const std::string all = std::to_string(found.all);
    return "<h2>Pending pages</h2>\n" +
           PendingTable(asked,
                        {found.next.empty() ? "Pending: " + all
                                            : "Pending: " + all + ", the first " +
                                                  std::to_string(found.pages.size()),
                         kNonePending},
                        found.pages) +
           (found.next.empty()
                ? ""
                : "<p class=\"more\">" + LinkTo("/pages", "All pending pages") + "</p>\n");
}

std::string Failed(const PageAsked& asked) {
    FailedWanted wanted;
    wanted.count = kFailedShown;
    return "<h2>What failed</h2>\n" +
           FailedTable(asked, {"The last sendings that failed", kNoneFailed},
                       FailedSends(asked.connection, wanted)) +
           "<p class=\"more\">" + LinkTo("/failed", "All that failed") + "</p>\n";
}

std::string Alarms(const PageAsked& asked) {
    AlarmsWanted wanted;
    wanted.count = kAlarmsShown;
    return "<h2>Alarms</h2>\n" +
           AlarmsTable(asked, {"The last alarms", kNoAlarms},
                       FindAlarms(asked.connection, wanted)) +
           "<p class=\"more\">" + LinkTo("/alarms", "All alarms") + "</p>\n";
}

}  // namespace

std::string OverviewPage(const PageAsked& asked) {
    return Framed(asked, "Overview",
                  Refreshed(Alive(asked) + Pending(asked) + Failed(asked) + Alarms(asked)));
}

}  // namespace host
