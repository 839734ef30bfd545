// Pages out of a trace. Tested by tests/unit/host/traced_pages_test.cpp.
#include "host/trace/read_trace.h"

#include <array>
#include <istream>
#include <string>
#include <utility>
#include <vector>

#include "host/trace/page_builder.h"
#include "host/trace/trace_clock.h"

namespace host {
namespace {

constexpr size_t kPieceSize = size_t{64} << 10;

// News of the engine, which any thread may write while another sends a page.
bool IsOfEngine(TraceKind kind) {
    switch (kind) {
        case TraceKind::kEngineMade:
        case TraceKind::kAsked:
        case TraceKind::kAskedUnknown:
        case TraceKind::kQueued:
        case TraceKind::kRequeued:
        case TraceKind::kAcknowledged:
        case TraceKind::kDone:
        case TraceKind::kGivenUp:
        case TraceKind::kEngine:
            return true;
        default:
            return false;
    }
}

}  // namespace

struct TraceReader::State {
    explicit State(TraceSink& receiver)
        : sink(receiver), entries([this](const TraceEntry& entry) { Take(entry); }) {}

    void Take(const TraceEntry& entry) {
        if (entry.second != TraceEntry::kNoTime) {
            clock.Advance(entry.second);
        }
        const TraceMeaning meaning = Understand(entry.text);
        if (page && page->BytesFollow() && IsBytes(entry, meaning)) {
            return;
        }
        if (meaning.kind == TraceKind::kPageStart) {
            CutOff();
            page.emplace(++pages, entry.line, clock);
        } else if (meaning.kind == TraceKind::kPageEnd && page) {
            End(false);
        } else if (page && !IsOfEngine(meaning.kind)) {
            page->Take(entry, meaning);
        } else {
            if (meaning.kind == TraceKind::kEngineMade) {
                CutOff();
            }
            sink.OnEvent({entry, meaning, clock.Day()});
        }
    }

    // What goes over the line is traced as it is, whatever it looks like: as an end of the page, or
    // as news of the engine. Such news may also be another thread's, which came before the bytes.
    // Then the bytes are still to come; where the line that says that they went out comes first,
    // they were no news.
    bool IsBytes(const TraceEntry& entry, const TraceMeaning& meaning) {
        if (IsOfEngine(meaning.kind)) {
            perhaps_news.push_back({entry, std::string(entry.text)});
            return true;
        }
        page->TakeBytes();
        if (meaning.kind == TraceKind::kOut) {
            perhaps_news.clear();
            return false;
        }
        for (Kept& news : std::exchange(perhaps_news, {})) {
            news.entry.text = news.text;
            sink.OnEvent({news.entry, Understand(news.text), clock.Day()});
        }
        return true;
    }

    void CutOff() {
        perhaps_news.clear();
        if (page) {
            End(true);
        }
    }

    void End(bool cutOff) {
        sink.OnPage(page->End(cutOff));
        page.reset();
    }

    struct Kept {
        TraceEntry entry;
        std::string text;
    };

    TraceSink& sink;
    TraceClock clock;
    std::vector<Kept> perhaps_news;
    uint64_t pages = 0;
    std::optional<PageBuilder> page;
    EntrySplitter entries;
};

TraceReader::TraceReader(TraceSink& sink) : state_(std::make_unique<State>(sink)) {}
TraceReader::~TraceReader() = default;

void TraceReader::Feed(std::string_view bytes) {
    state_->entries.Feed(bytes);
}

void TraceReader::Pause() {
    state_->entries.Pause();
}

void TraceReader::Finish() {
    state_->entries.Finish();
    state_->CutOff();
}

const TracedPage* TraceReader::Current() const {
    return state_->page ? &state_->page->Page() : nullptr;
}

void ReadTrace(std::istream& trace, TraceSink& sink) {
    TraceReader reader(sink);
    std::array<char, kPieceSize> piece{};
    do {
        trace.read(piece.data(), piece.size());
        reader.Feed({piece.data(), static_cast<size_t>(trace.gcount())});
    } while (trace);
    reader.Finish();
}

std::string_view NameOf(PagePhase phase) {
    switch (phase) {
        case PagePhase::kOpen:
            return "open";
        case PagePhase::kModem:
            return "modem";
        case PagePhase::kDial:
            return "dial";
        case PagePhase::kTransfer:
            return "transfer";
        case PagePhase::kHangUp:
            return "hang up";
    }
    return {};
}

}  // namespace host
