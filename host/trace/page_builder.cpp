// From entries to a page. Tested by tests/unit/host/traced_pages_test.cpp.
#include "host/trace/page_builder.h"

#include <charconv>
#include <utility>

#include "host/trace/centre_code.h"
#include "host/trace/read_trace.h"

namespace host {
namespace {

constexpr size_t kTextKept = kTracedTextKept;
constexpr std::string_view kNeverSaid = "WAIT_STRING";  // waited for, to listen for a while
constexpr size_t kShownSoFar = 80;
constexpr std::string_view kNotOpened = "COM port cannot be opened!";

std::string Kept(std::string_view text) {
    return std::string(text.substr(0, kTextKept));
}

// What stands behind the last of the separators, and takes it off the text.
std::string_view TakeBehind(std::string_view& text, std::string_view separator) {
    const size_t at = text.rfind(separator);
    if (at == std::string_view::npos) {
        return {};
    }
    const std::string_view behind = text.substr(at + separator.size());
    text = text.substr(0, at);
    return behind;
}

int64_t Number(std::string_view text) {
    int64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

}  // namespace

PageBuilder::PageBuilder(uint64_t number, uint64_t line, TraceClock& clock)
    : clock_(clock), begin_(clock.Elapsed()) {
    page_.number = number;
    page_.first_line = line;
    page_.day = clock.Day();
    page_.second = clock.SecondOfDay();
}

void PageBuilder::NoteTime() {
    NotePause();
    last_ = Now();
    page_.seconds = last_;
}

// A port is opened before anything is heard: what says otherwise later, a far end has said.
bool PageBuilder::IsOutOfPlace(const TraceMeaning& meaning) const {
    return meaning.kind == TraceKind::kFailed && phase_ != PagePhase::kOpen &&
           meaning.field == kNotOpened;
}

void PageBuilder::Take(const TraceEntry& entry, const TraceMeaning& meaning) {
    NoteTime();
    if (meaning.kind == TraceKind::kUnknown || IsOutOfPlace(meaning)) {
        Add(Turn::Kind::kUnknown, NameControls(entry.text.substr(0, kTextKept)));
        return;
    }
    NoteHeader(meaning);
    NoteStep(meaning);
}

void PageBuilder::NoteHeader(const TraceMeaning& meaning) {
    std::string_view field = meaning.field;
    switch (meaning.kind) {
        case TraceKind::kTest:
            page_.test = true;
            break;
        case TraceKind::kPager:
            NotePager(field);
            break;
        case TraceKind::kPort:
            page_.port = Kept(field);
            break;
        case TraceKind::kPortUsed:
            page_.port_used = Kept(field);
            break;
        case TraceKind::kNumber:
            page_.type = TypeFor(TakeBehind(field, " ("));
            page_.number_called = Kept(field);
            break;
        case TraceKind::kHours:
            page_.hours = Kept(field);
            break;
        case TraceKind::kAlarm:
            page_.raised = Kept(TakeBehind(field, " (approximately logging time:"));
            page_.raised = page_.raised.substr(0, page_.raised.rfind(')'));
            page_.alarm = Kept(field);
            break;
        case TraceKind::kServer:
            page_.severity = Kept(TakeBehind(field, "\tSeverity: "));
            page_.server = Kept(field);
            break;
        case TraceKind::kSettings:
            page_.settings = Kept(field);
            break;
        case TraceKind::kMessage:
            page_.message = Kept(field);
            break;
        default:
            break;
    }
}

// "duty at 01/08/01<tab>10:00:00<tab>"
void PageBuilder::NotePager(std::string_view field) {
    const std::string_view when = TakeBehind(field, " at ");
    page_.pager = Kept(field);
    clock_.SetDate(when.substr(0, when.find('\t')));
    page_.day = clock_.Day();
    if (page_.day && page_.second > clock_.SecondOfDay()) {
        --*page_.day;  // midnight has passed since the page began
    }
}

void PageBuilder::NoteStep(const TraceMeaning& meaning) {
    switch (meaning.kind) {
        case TraceKind::kOutsideHours:
            page_.outcome = TracedPage::Outcome::kOutsideHours;
            break;
        case TraceKind::kFailed:
            Fail(meaning.field);
            break;
        case TraceKind::kMessage:
            EnterPhase(PagePhase::kModem);
            break;
        case TraceKind::kBeforeDial:
            EnterPhase(PagePhase::kDial);
            break;
        case TraceKind::kAfterDial:
            // Unless a transfer follows, the call was the page.
            page_.outcome = TracedPage::Outcome::kDialled;
            EnterPhase(PagePhase::kHangUp);
            break;
        case TraceKind::kBeforeTransfer:
            page_.outcome = TracedPage::Outcome::kCutOff;
            EnterPhase(PagePhase::kTransfer);
            break;
        case TraceKind::kTransferred:
            page_.outcome = TracedPage::Outcome::kSent;
            EnterPhase(PagePhase::kHangUp);
            break;
        case TraceKind::kOut:
            Add(Turn::Kind::kSaid, NameControlsOfOut(meaning.field.substr(0, kTextKept)));
            break;
        case TraceKind::kWaitBegins:
            BeginWait(meaning.field);
            break;
        case TraceKind::kHeardSoFar:
            HearSoFar(meaning.field);
            break;
        case TraceKind::kHeardAll:
            HearAll(meaning.field);
            break;
        case TraceKind::kHeardCut:
            heard_.clear();
            break;
        case TraceKind::kWaitEnds:
            EndWait(meaning.field == "1");
            break;
        case TraceKind::kModemFailure:
            modem_said_ = Kept(meaning.field);
            break;
        case TraceKind::kCause:
            failure_ = Kept(meaning.field);
            Add(Turn::Kind::kFailure, failure_);
            break;
        case TraceKind::kBytesFollow:
            bytes_follow_ = true;
            break;
        default:
            break;
    }
}

void PageBuilder::EnterPhase(PagePhase phase) {
    page_.phase_seconds.at(static_cast<size_t>(phase_)) += Now() - phase_began_;
    phase_ = phase;
    page_.phase = phase;
    phase_began_ = Now();
    failure_.clear();
    modem_said_.clear();
    missed_ = false;
}

void PageBuilder::Add(Turn turn) {
    if (page_.turns.size() < kMostTurns) {
        page_.turns.push_back(std::move(turn));
    } else {
        ++page_.turns_left_out;
    }
}

void PageBuilder::Add(Turn::Kind kind, std::string text) {
    Add({kind, phase_, Now(), Now(), std::move(text), false, 0});
}

// What comes in several reads within a second is one turn.
void PageBuilder::AddHeard(std::string_view bytes) {
    if (bytes.empty()) {
        return;
    }
    const std::string text = NameControls(bytes.substr(0, kTextKept));
    if (said_.size() < kTextKept) {
        said_ += text;
    }
    if (!page_.turns.empty() && page_.turns.back().kind == Turn::Kind::kHeard &&
        page_.turns.back().to == Now() && page_.turns.back().text.size() < kTextKept) {
        page_.turns.back().text += text;
        return;
    }
    Add(Turn::Kind::kHeard, text);
}

// "123, CString OK, DWORD 2000, BOOL 1"
void PageBuilder::BeginWait(std::string_view field) {
    TakeBehind(field, ", BOOL ");
    const std::string_view limit = TakeBehind(field, ", DWORD ");
    const std::string_view label = ", CString ";
    const size_t at = field.find(label);
    const std::string_view expected =
        at == std::string_view::npos ? field : field.substr(at + label.size());
    waiting_ = true;
    wait_ = {Turn::Kind::kWaited,
             phase_,
             Now(),
             Now(),
             NameControls(expected.substr(0, kTextKept)),
             false,
             Number(limit)};
    heard_.clear();
    said_.clear();
}

// The text begins with what was heard before, and ends where the trace cuts it.
void PageBuilder::HearSoFar(std::string_view bytes) {
    if (bytes.substr(0, heard_.size()) == heard_) {
        AddHeard(bytes.substr(heard_.size()));
    } else if (heard_.substr(0, kShownSoFar) != bytes) {
        AddHeard(bytes);
    }
    heard_ = bytes;
}

void PageBuilder::HearAll(std::string_view bytes) {
    if (bytes.substr(0, heard_.size()) == heard_) {
        AddHeard(bytes.substr(heard_.size()));
        heard_ = bytes;
    }
}

void PageBuilder::EndWait(bool found) {
    if (!std::exchange(waiting_, false)) {
        return;
    }
    wait_.to = Now();
    wait_.found = found;
    missed_ = !found;
    if (wait_.text == kNeverSaid) {
        wait_.kind = Turn::Kind::kPaused;
        wait_.text.clear();
    }
    Add(wait_);
}

// Time that passes outside of a wait.
void PageBuilder::NotePause() {
    if (!waiting_ && Now() > last_) {
        Add({Turn::Kind::kPaused, phase_, last_, Now(), {}, false, 0});
    }
}

void PageBuilder::Fail(std::string_view text) {
    const PageFailure* const failure = FindPageFailure(text);
    page_.outcome = TracedPage::Outcome::kNotSent;
    page_.result = failure->result;
    page_.reason = failure->words + WhyItFailed();
    Add(Turn::Kind::kFailure, Kept(text));
    EnterPhase(PagePhase::kHangUp);
}

// ": no ID= received; no ID= within 30 s, but BUSY<cr>"
std::string PageBuilder::WhyItFailed() const {
    if (!modem_said_.empty()) {
        const std::string code =
            phase_ == PagePhase::kTransfer ? CentreCodeIn(said_) : std::string();
        return code.empty() ? ": the modem said " + modem_said_
                            : ": the centre said " + code + ", then the modem " + modem_said_;
    }
    std::string why = failure_.empty() ? std::string() : ": " + failure_;
    if (missed_) {
        why += (why.empty() ? ": " : "; ") + ("waited " + std::to_string(wait_.to - wait_.from)) +
               " s for " + wait_.text + ", heard " + (said_.empty() ? "nothing" : said_);
    }
    return why;
}

const TracedPage& PageBuilder::End(bool cutOff) {
    NotePause();
    page_.seconds = Now();
    EnterPhase(phase_);
    if (cutOff) {
        page_.outcome = TracedPage::Outcome::kCutOff;
        page_.reason = "the trace ends before the page does";
    } else if (page_.outcome == TracedPage::Outcome::kCutOff) {
        page_.reason = "the trace doesn't say what became of it";
    }
    return page_;
}

}  // namespace host
