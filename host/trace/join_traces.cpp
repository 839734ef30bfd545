// Joining traces. Tested by tests/unit/host/join_traces_test.cpp.
#include "host/trace/join_traces.h"

#include <algorithm>
#include <array>
#include <deque>
#include <optional>
#include <utility>

namespace host {
namespace {

constexpr size_t kPieceSize = size_t{64} << 10;

// A page, or what stands between pages.
struct Item {
    std::optional<TracedPage> page;
    TraceEntry entry;
    std::string text;  // of the entry
    std::optional<int64_t> day;
    int second = 0;
};

class OneTrace : private TraceSink {
 public:
    OneTrace(const TraceOfLine& trace, const std::function<bool(size_t)>& went_on)
        : trace_(trace), went_on_(went_on), reader_(*this) {}

    // Reads as far as it takes to know. False at the end of the trace.
    bool HasMore() {
        while (items_.empty() && !ended_) {
            ReadPiece();
        }
        return !items_.empty();
    }

    // When what comes next began.
    std::pair<int64_t, int> When() const {
        const auto dated = std::find_if(items_.begin(), items_.end(),
                                        [](const Item& item) { return item.day.has_value(); });
        return {dated == items_.end() ? 0 : *dated->day, items_.front().second};
    }

    void GiveNext(TraceSink& sink, uint64_t& pages) {
        Item item = std::move(items_.front());
        items_.pop_front();
        if (item.page) {
            item.page->number = ++pages;
            sink.OnPage(*item.page);
        } else {
            item.entry.text = item.text;
            sink.OnEvent({item.entry, Understand(item.text), item.day, trace_.line});
        }
    }

 private:
    void ReadPiece() {
        std::array<char, kPieceSize> piece{};
        trace_.bytes.read(piece.data(), piece.size());
        const auto count = static_cast<size_t>(trace_.bytes.gcount());
        reader_.Feed({piece.data(), count});
        ended_ = !went_on_(count) || !trace_.bytes;
        if (ended_) {
            reader_.Finish();
        }
    }

    void OnPage(const TracedPage& page) override {
        Item item{page, {}, {}, page.day, page.second};
        if (!trace_.line.empty()) {
            item.page->port_used = trace_.line;
            item.page->port = page.port.empty() ? std::string() : trace_.line;
        }
        items_.push_back(std::move(item));
    }

    void OnEvent(const TraceEvent& event) override {
        items_.push_back({std::nullopt, event.entry, std::string(event.entry.text), event.day,
                          event.entry.second});
    }

    const TraceOfLine trace_;
    const std::function<bool(size_t)>& went_on_;
    TraceReader reader_;
    std::deque<Item> items_;
    bool ended_ = false;
};

}  // namespace

void JoinTraces(const std::vector<TraceOfLine>& traces, TraceSink& sink,
                const std::function<bool(size_t)>& went_on) {
    std::vector<std::unique_ptr<OneTrace>> open;
    open.reserve(traces.size());
    for (const TraceOfLine& trace : traces) {
        open.push_back(std::make_unique<OneTrace>(trace, went_on));
    }
    uint64_t pages = 0;
    while (true) {
        open.erase(std::remove_if(open.begin(), open.end(),
                                  [](const auto& trace) { return !trace->HasMore(); }),
                   open.end());
        if (open.empty()) {
            return;
        }
        const auto next = std::min_element(
            open.begin(), open.end(),
            [](const auto& one, const auto& other) { return one->When() < other->When(); });
        (*next)->GiveNext(sink, pages);
    }
}

}  // namespace host
