// Pages for a terminal. Tested by tests/unit/host/trace_view_test.cpp.
#include "host/trace_view/page_text.h"

#include <array>
#include <cstdio>
#include <optional>

#include "host/text/printable.h"
#include "host/trace/calendar.h"

namespace host {
namespace {

constexpr int kQuietWait = 1;  // seconds: a wait that heard what it wanted sooner is no news

std::string Seconds(int seconds) {
    return std::to_string(seconds) + " s";
}

std::string Padded(std::string text, size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

// The engine's news, in our words; null for what is not said unless all is asked for.
const char* WordsFor(TraceKind kind) {
    switch (kind) {
        case TraceKind::kEngineMade:
            return "an engine begins, with the database";
        case TraceKind::kAsked:
            return "a page is asked for, to";
        case TraceKind::kAskedUnknown:
            return "... but there is no such pager, or more than one";
        case TraceKind::kQueued:
            return "queued:";
        case TraceKind::kRequeued:
            return "put off:";
        case TraceKind::kAcknowledged:
            return "acknowledged, so no longer paged:";
        case TraceKind::kDone:
            return "done, since the service has confirmed it:";
        case TraceKind::kGivenUp:
            return "given up, its retries are used up:";
        default:
            return "";
    }
}

}  // namespace

std::string_view NameOf(TracedPage::Outcome outcome) {
    switch (outcome) {
        case TracedPage::Outcome::kSent:
            return "sent";
        case TracedPage::Outcome::kDialled:
            return "dialled";
        case TracedPage::Outcome::kNotSent:
            return "not sent";
        case TracedPage::Outcome::kOutsideHours:
            return "outside its hours";
        case TracedPage::Outcome::kCutOff:
            return "cut off";
    }
    return {};
}

std::string WhenBegun(const TracedPage& page) {
    return (page.day ? IsoDate(*page.day) + " " : std::string()) + ClockTime(page.second);
}

std::string Duration(int seconds) {
    std::array<char, 48> text{};
    if (seconds < 3600) {
        std::snprintf(text.data(), text.size(), "%d:%02d", seconds / 60, seconds % 60);
    } else {
        std::snprintf(text.data(), text.size(), "%d:%02d:%02d", seconds / 3600, seconds / 60 % 60,
                      seconds % 60);
    }
    return text.data();
}

std::string PageText::Shown(std::string_view text) const {
    return Printable(Decode(text, encoding_));
}

std::string PageText::Painted(TracedPage::Outcome outcome, std::string_view text) const {
    switch (outcome) {
        case TracedPage::Outcome::kSent:
        case TracedPage::Outcome::kDialled:
            return colours_.Green(text);
        case TracedPage::Outcome::kOutsideHours:
            return colours_.Yellow(text);
        case TracedPage::Outcome::kNotSent:
        case TracedPage::Outcome::kCutOff:
            break;
    }
    return colours_.Red(text);
}

std::string PageText::Summary(const TracedPage& page) const {
    std::string line = "page " + std::to_string(page.number) + "  " + WhenBegun(page) + "  \"" +
                       Shown(page.pager) + "\"";
    for (const std::string* part : {&page.type, &page.number_called, &page.Port()}) {
        line += part->empty() ? "" : "  " + Shown(*part);
    }
    std::string outcome(NameOf(page.outcome));
    if (page.outcome == TracedPage::Outcome::kNotSent) {
        outcome += " (result " + std::to_string(page.result) + ")";
    }
    line = colours_.Bold(line) + "  " + Duration(page.seconds) + "  " +
           Painted(page.outcome, outcome) + "\n";
    if (!page.reason.empty()) {
        line += "    " + Painted(page.outcome, Shown(page.reason)) + "\n";
    }
    return line;
}

std::string PageText::Header(const TracedPage& page) const {
    std::string text = page.test ? "    a test page\n" : "";
    if (!page.alarm.empty()) {
        text += "    alarm " + Shown(page.alarm) + ", server " + Shown(page.server) +
                ", severity " + Shown(page.severity) + ", hours " + Shown(page.hours) + "\n";
    }
    if (!page.settings.empty()) {
        text += "    line " + Shown(page.settings) + "\n";
    }
    if (!page.message.empty()) {
        text += "    text \"" + Shown(page.message) + "\"\n";
    }
    return text;
}

std::string PageText::PhaseLine(const TracedPage& page, PagePhase phase) const {
    const int seconds = page.phase_seconds.at(static_cast<size_t>(phase));
    return "  " + std::string(NameOf(phase)) + ", " + Seconds(seconds) + "\n";
}

std::string PageText::WaitText(const Turn& turn) const {
    const int seconds = turn.to - turn.from;
    if (turn.found) {
        return "waited " + Seconds(seconds) + " for " + Shown(turn.text);
    }
    return "waited " + Seconds(seconds) + " of " +
           Seconds(static_cast<int>((turn.limit_ms + 999) / 1000)) + " for " + Shown(turn.text) +
           ", in vain";
}

std::string PageText::TurnLine(const Turn& turn) const {
    constexpr size_t kTimeWidth = 9;
    std::string time = Duration(turn.to);
    time.insert(0, time.size() < kTimeWidth ? kTimeWidth - time.size() : 0, ' ');
    time += "  ";
    switch (turn.kind) {
        case Turn::Kind::kSaid:
            return time + colours_.Cyan("> " + Shown(turn.text)) + "\n";
        case Turn::Kind::kHeard:
            return time + colours_.Green("< " + Shown(turn.text)) + "\n";
        case Turn::Kind::kWaited:
            return time + colours_.Dim("  " + WaitText(turn)) + "\n";
        case Turn::Kind::kPaused:
            return time + colours_.Dim("  paused " + Seconds(turn.to - turn.from)) + "\n";
        case Turn::Kind::kFailure:
            return time + colours_.Red("! " + Shown(turn.text)) + "\n";
        case Turn::Kind::kUnknown:
            break;
    }
    return time + colours_.Yellow("? " + Shown(turn.text)) + "\n";
}

std::string PageText::Dialogue(const TracedPage& page) const {
    std::string text = Summary(page) + Header(page);
    std::optional<PagePhase> phase;
    for (const Turn& turn : page.turns) {
        if (turn.kind == Turn::Kind::kWaited && turn.found && turn.to - turn.from < kQuietWait) {
            continue;
        }
        if (phase != turn.phase) {
            phase = turn.phase;
            text += PhaseLine(page, turn.phase);
        }
        text += TurnLine(turn);
    }
    if (page.turns_left_out > 0) {
        text += "    ... and " + std::to_string(page.turns_left_out) + " more lines\n";
    }
    return text + "\n";
}

std::string PageText::Event(const TraceEvent& event) const {
    std::string line = event.entry.second == TraceEntry::kNoTime ? std::string("--:--:--")
                                                                 : ClockTime(event.entry.second);
    line = Padded(line, 10) + (event.line.empty() ? "" : Shown(event.line) + ": ");
    const std::string words = WordsFor(event.meaning.kind);
    const bool named = !words.empty() && event.meaning.kind != TraceKind::kAskedUnknown;
    if (event.meaning.kind == TraceKind::kUnknown) {
        line += colours_.Yellow("? " + Shown(event.entry.text));
    } else if (words.empty()) {
        line += colours_.Dim(Shown(event.meaning.field));
    } else {
        line += words + (named ? " \"" + Shown(event.meaning.field) + "\"" : "");
    }
    if (event.entry.left_out > 0) {
        line += " ... and " + std::to_string(event.entry.left_out) + " bytes more within";
    }
    return line + "\n";
}

}  // namespace host
