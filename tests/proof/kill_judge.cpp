// The judge. Tested by kill_judge_test.cpp.
#include "tests/proof/kill_judge.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "tests/proof/kill_points.h"
#include "tests/proof/kill_scenario.h"
#include "tests/proof/ledger.h"

namespace proof::kills {
namespace {

// From the centre's acceptance to the row that says so; a line has one page at a time.
constexpr double kLongestRewriting = 90;

// From a node's death to the end of its lease, which is what its lines end themselves by.
constexpr int kLongestLease = 60;

struct Received {
    std::string what;  // the page, where the centre's text names its alarm; else its pager
    unsigned line = 0;
    double at = 0;
};

// A row that says of a page that it was tried.
struct Written {
    std::string what;
    unsigned line = 0;
    int at = 0;
};

struct Owed {
    int sends = 0;
    bool acknowledged = false;
    std::vector<std::string> given_up;  // "ALARM PAGER", where the device uses up tries
    bool confirms = false;              // ... and whether it is only done when it was received
};

struct Story {
    std::map<std::string, std::string> texts;   // of alarms
    std::map<std::string, std::string> groups;  // of alarms
    std::set<std::string> acknowledged;         // alarms
    std::map<std::string, std::string> ends;    // of pages, "ALARM PAGER"
    std::map<std::string, int> moves;           // of pages
    std::map<std::string, std::string> states;  // of alarms
    std::vector<Kill> kills;
    std::vector<std::pair<unsigned, int>> fenced;  // lines, and when
    std::vector<Received> received;
    std::vector<Written> written;
    bool ended = false;
};

const PagerPlan& PlanOf(const std::string& pager) {
    return *std::find_if(kPagerPlans.begin(), kPagerPlans.end(),
                         [&](const PagerPlan& plan) { return pager == plan.name; });
}

// What a page is called that a centre may have received.
std::string NameOf(const Story& story, const std::string& alarm, const std::string& pager) {
    return PlanOf(pager).has_text ? story.texts.at(alarm) + " " + pager : pager;
}

int SecondOf(const std::string& wall) {
    return static_cast<int>(std::stol(wall) - kStart);
}

void Note(Story& story, const LedgerLine& words) {
    const std::string& what = words[0];
    if (what == "raised") {
        story.texts[words[1]] = words[2];
        story.groups[words[1]] = words[3];
    } else if (what == "acknowledged") {
        story.acknowledged.insert(words[1]);
    } else if (what == "killed") {
        const auto number = [&](size_t word) {
            return static_cast<unsigned>(std::stoul(words[word]));
        };
        story.kills.push_back({SecondOf(words[1]), number(2), number(3), number(4), words.at(5)});
    } else if (what == "fenced") {
        story.fenced.emplace_back(static_cast<unsigned>(std::stoul(words[2])), SecondOf(words[1]));
    } else if (what == "page") {
        story.ends[words[1] + " " + words[2]] = words[3];
        story.moves[words[1] + " " + words[2]] = std::stoi(words[4]);
    } else if (what == "written") {
        story.written.push_back({NameOf(story, words[1], words[2]),
                                 static_cast<unsigned>(std::stoul(words[4])), SecondOf(words[5])});
    } else if (what == "alarm") {
        story.states[words[1]] = words.size() > 2 ? words[2] : "";
    } else if (what == "end") {
        story.ended = true;
    }
}

void ReadLedger(std::istream& ledger, Story& story) {
    for (const LedgerLine& line : ReadLedgerLines(ledger)) {
        Note(story, line);
    }
}

unsigned NumberOf(const std::string& line) {
    return static_cast<unsigned>(std::stoul(line.substr(line.find(' '))));
}

// "OPS/Major/SRV/pump12" ends with the alarm's text; a text without one names no alarm.
std::string PageOf(const std::string& centre, const std::string& recipient,
                   const std::string& text) {
    for (const PagerPlan& plan : kPagerPlans) {
        if (centre == plan.centre && recipient == plan.recipient) {
            return plan.has_text ? text.substr(text.rfind('/') + 1) + " " + plan.name : plan.name;
        }
    }
    return "nobody's: " + centre + " " + recipient + " " + text;
}

void ReadReport(std::istream& report, Story& story) {
    const nlohmann::json told = nlohmann::json::parse(report);
    for (const nlohmann::json& page : told["pages"]) {
        const size_t call = page["call"];
        story.received.push_back({PageOf(page["centre"], page["recipient"], page["text"]),
                                  NumberOf(told["calls"].at(call)["line"]), page["at_seconds"]});
    }
}

bool HitsLine(const Kill& kill, unsigned line) {
    return (kill.victims & (1U << line)) != 0;
}

bool WasWritten(const Story& story, const Received& page, int until) {
    return std::any_of(story.written.begin(), story.written.end(), [&](const Written& row) {
        return row.what == page.what && row.line == page.line && row.at >= std::floor(page.at) &&
               row.at <= until;
    });
}

// What a line had handed to a centre when it was killed, and not yet written down. instant: the
// whole second that the ledger gives, so it was at any moment of it, or of the one before. None:
// null.
const Received* ForgottenBy(const Story& story, unsigned line, int instant) {
    const Received* latest = nullptr;
    for (const Received& page : story.received) {
        const bool counts =
            page.line == line && page.at < instant + 1 && page.at > instant - kLongestRewriting;
        latest = counts ? &page : latest;
    }
    return latest != nullptr && !WasWritten(story, *latest, instant) ? latest : nullptr;
}

bool Forgets(const Story& story, const Kill& kill) {
    bool forgets = false;
    for (unsigned line = 1; line < kRoles; ++line) {
        forgets = forgets || (HitsLine(kill, line) && ForgottenBy(story, line, kill.at) != nullptr);
    }
    return forgets;
}

class Judgement {
 public:
    Judgement(Story& story, Verdict& verdict, Tries tries)
        : story_(story), verdict_(verdict), tries_(tries) {}

    void Pass() {
        for (const auto& [alarm, group] : story_.groups) {
            for (const Route& route : Routes()) {
                if (group == route.group) {
                    OfAlarm(alarm, route);
                }
            }
        }
        Explain();
        for (const auto& [what, owed] : owed_) {
            OfPage(what, owed);
        }
        for (const Received& page : story_.received) {
            Require(owed_.count(page.what) != 0, page.what + " was received, and never owed");
        }
    }

 private:
    void OfAlarm(const std::string& alarm, const Route& route) {
        const bool acknowledged = story_.acknowledged.count(alarm) != 0;
        const std::string& state = story_.states[alarm];
        Require(state == (acknowledged   ? "1"
                          : state == "4" ? "4"
                                         : "3"),
                "alarm " + alarm + " is in state " + state);
        for (const std::string& pager : route.pagers) {
            ++verdict_.pages;
            const PagerPlan& plan = PlanOf(pager);
            const std::string page = alarm + " " + pager;
            Owed& owed = owed_[NameOf(story_, alarm, pager)];
            owed.sends += plan.sends * (1 + story_.moves[page]);
            owed.acknowledged = owed.acknowledged || acknowledged;
            if (!acknowledged) {
                const bool confirms = plan.type[0] == 's';
                if (tries_ == Tries::kDeviceToo && story_.ends[page] == "given-up") {
                    owed.given_up.push_back(page);
                    owed.confirms = confirms;
                    continue;
                }
                Require(story_.ends[page] == (confirms ? "done" : "given-up"),
                        "page " + page + " ended as \"" + story_.ends[page] + "\"");
            }
        }
    }

    // Each kill of a line excuses one page, the last that the line had handed to a centre; and so
    // does an end for want of a lease, where the node was killed.
    void Explain() {
        for (const Kill& kill : story_.kills) {
            for (unsigned line = 1; line < kRoles; ++line) {
                if (HitsLine(kill, line)) {
                    Excuse(line, kill.at, "was killed");
                }
            }
        }
        for (const auto& [line, instant] : story_.fenced) {
            Require(NodeWasKilledBefore(instant),
                    "COM " + std::to_string(line) + " had no lease at second " +
                        std::to_string(instant) + ", and its node was not killed");
            Excuse(line, instant, "ended with its node's lease");
        }
    }

    void Excuse(unsigned line, int instant, const std::string& how) {
        const Received* const page = ForgottenBy(story_, line, instant);
        if (page != nullptr) {
            excuses_[page->what].push_back(
                "COM " + std::to_string(line) + " " + how + " at second " +
                std::to_string(instant) + ", a centre had accepted it at second " +
                std::to_string(static_cast<int>(page->at)) + ", and its row didn't say so yet");
        }
    }

    bool NodeWasKilledBefore(int instant) const {
        return std::any_of(story_.kills.begin(), story_.kills.end(), [&](const Kill& kill) {
            return (kill.victims & (1U << kNodeRole)) != 0 && kill.at <= instant &&
                   kill.at > instant - kLongestLease;
        });
    }

    void OfPage(const std::string& what, const Owed& owed) {
        const auto received = static_cast<int>(
            std::count_if(story_.received.begin(), story_.received.end(),
                          [&](const Received& page) { return page.what == what; }));
        verdict_.received += received;
        const std::vector<std::string>& excuses = excuses_[what];
        const int more = received - owed.sends;
        for (int i = 0; i < std::min(more, static_cast<int>(excuses.size())); ++i) {
            verdict_.doubles.push_back(what + ": " + excuses[static_cast<size_t>(i)]);
        }
        Require(more <= static_cast<int>(excuses.size()),
                what + " was received " + std::to_string(received) + " times, not " +
                    std::to_string(owed.sends) + ", and " + std::to_string(excuses.size()) +
                    " kills explain it");
        const bool is_lost = received == 0 && !owed.given_up.empty();
        if (is_lost) {
            verdict_.given_up.insert(verdict_.given_up.end(), owed.given_up.begin(),
                                     owed.given_up.end());
        }
        Require(is_lost || owed.given_up.empty() || !owed.confirms,
                what + " was received, and counts as given up");
        const bool may_be_fewer = tries_ == Tries::kDeviceToo && (received > 0 || is_lost);
        Require(more >= 0 || owed.acknowledged || may_be_fewer,
                what + " was received " + std::to_string(received) + " times, not " +
                    std::to_string(owed.sends));
    }

    void Require(bool holds, const std::string& complaint) {
        if (!holds) {
            verdict_.complaints.push_back(complaint);
        }
    }

    Story& story_;
    Verdict& verdict_;
    const Tries tries_;
    std::map<std::string, Owed> owed_;
    std::map<std::string, std::vector<std::string>> excuses_;
};

}  // namespace

Verdict Judge(std::istream& ledger, std::istream& report, Tries tries) {
    Story story;
    Verdict verdict;
    ReadLedger(ledger, story);
    if (!story.ended) {
        verdict.complaints.emplace_back("the site did not come to its end");
        return verdict;
    }
    ReadReport(report, story);
    for (Kill& kill : story.kills) {
        kill.forgets = Forgets(story, kill);
    }
    verdict.kills = story.kills;
    Judgement(story, verdict, tries).Pass();
    return verdict;
}

}  // namespace proof::kills
