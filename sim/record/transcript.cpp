// Transcripts. Tested by tests/unit/sim/record_test.cpp.
#include "sim/record/transcript.h"

#include <array>
#include <cstdio>

#include "sim/record/printable.h"

namespace pagersim {
namespace {

constexpr Milliseconds kLongestPause{250};

std::string Prefix(const Event& event) {
    std::array<char, 96> text{};
    std::snprintf(text.data(), text.size(), "%9.3f  %-6.16s %-8.32s ",
                  std::chrono::duration<double>(event.at).count(), event.line.c_str(),
                  event.who.c_str());
    return text.data();
}

std::string Page(const Event& event) {
    const std::string recipient = PrintableText(event.recipient);
    return event.text.empty() ? "= empty page for " + recipient
                              : "= page for " + recipient + ": " + PrintableText(event.text);
}

std::string Body(const Event& event) {
    switch (event.kind) {
        case EventKind::kOpens:
            return "# opens the line";
        case EventKind::kCloses:
            return "# closes the line";
        case EventKind::kSets:
            return "# sets the line to " + event.text;
        case EventKind::kSends:
            return (event.who == kProgram ? "> " : "< ") + Printable(event.text);
        case EventKind::kNotes:
            return "# " + PrintableText(event.text);
        case EventKind::kDials:
            return "# answers " + event.text;
        case EventKind::kDelivers:
            return Page(event);
        case EventKind::kEnds:
            return "# the call is over";
    }
    return {};
}

std::string Line(const Event& event) {
    return Prefix(event) + Body(event) + "\n";
}

}  // namespace

bool Transcript::Continues(const Event& event) const {
    return open_ && event.kind == EventKind::kSends && event.who == open_->who &&
           event.line == open_->line && event.at - latest_ <= kLongestPause;
}

std::string Transcript::Add(const Event& event) {
    std::string lines;
    if (Continues(event)) {
        open_->text += event.text;
    } else {
        lines = Finish();
        if (event.kind == EventKind::kSends) {
            open_ = event;
        } else {
            lines += Line(event);
        }
    }
    latest_ = event.at;
    return lines;
}

std::string Transcript::Finish() {
    std::string line = open_ ? Line(*open_) : "";
    open_.reset();
    return line;
}

}  // namespace pagersim
