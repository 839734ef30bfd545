// Trace files: any bytes are a trace. What is read of them is the same however the bytes come in
// pieces; what is shown can't steer a terminal, and is JSON and a picture where that is asked for.
//
// The first bytes say how the rest is cut into pieces.
#include <iconv.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "host/trace/read_trace.h"
#include "host/trace_view/page_json.h"
#include "host/trace_view/page_svg.h"
#include "host/trace_view/page_text.h"
#include "tests/fuzz/input.h"
#include "tests/fuzz/printed.h"

namespace {

using fuzz::Expect;
using host::Encoding;

// Everything that was read, one field after the other.
class Record : public host::TraceSink {
 public:
    void OnPage(const host::TracedPage& page) override {
        Expect(page.number == ++pages_, "pages are counted from 1");
        Expect(page.turns.size() <= host::kMostTurns, "a page is bounded");
        Expect(page.seconds >= 0, "no page ends before it begins");
        Add("page", page.first_line, page.day.value_or(-1), page.second, page.seconds, page.test);
        for (const std::string* text :
             {&page.raised, &page.pager, &page.number_called, &page.type, &page.port, &page.hours,
              &page.alarm, &page.server, &page.severity, &page.settings, &page.message,
              &page.reason}) {
            Add(*text);
        }
        Add(static_cast<int>(page.outcome), page.result, page.turns_left_out);
        for (const host::Turn& turn : page.turns) {
            Add(static_cast<int>(turn.kind), static_cast<int>(turn.phase), turn.from, turn.to,
                turn.text, turn.found, turn.limit_ms);
        }
    }

    void OnEvent(const host::TraceEvent& event) override {
        Add("event", event.entry.line, event.entry.second, event.entry.text, event.entry.left_out,
            static_cast<int>(event.meaning.kind), event.meaning.field);
    }

    std::string All() const { return all_.str(); }

 private:
    template <typename... Fields>
    void Add(const Fields&... fields) {
        ((all_ << fields << '\0'), ...);
    }

    uint64_t pages_ = 0;
    std::ostringstream all_;
};

// Looks at everything that can be shown of a trace.
class Show : public host::TraceSink {
 public:
    explicit Show(Encoding encoding) : encoding_(encoding), text_(encoding, host::Colours(false)) {}

    void OnPage(const host::TracedPage& page) override {
        fuzz::ExpectFitForTerminal(text_.Summary(page));
        fuzz::ExpectFitForTerminal(text_.Dialogue(page));
        const std::string json = host::PageAsJson(page, encoding_);
        Expect(nlohmann::json::accept(json), "a page is JSON");
        fuzz::ExpectFitForTerminal(json);
        const std::string svg = host::PageAsSvg(page, encoding_);
        Expect(svg.find("<script") == std::string::npos, "nothing in a picture runs");
        fuzz::ExpectFitForTerminal(svg);
    }

    void OnEvent(const host::TraceEvent& event) override {
        const std::string line = text_.Event(event);
        fuzz::ExpectFitForTerminal(line);
        Expect(line.find('\n') == line.size() - 1, "an event is one line");
    }

 private:
    Encoding encoding_;
    host::PageText text_;
};

std::string Whole(const std::string& trace) {
    Record record;
    std::istringstream stream(trace);
    host::ReadTrace(stream, record);
    return record.All();
}

std::string InPieces(const std::string& trace, const std::vector<size_t>& sizes) {
    Record record;
    host::TraceReader reader(record);
    size_t next = 0;
    for (size_t at = 0; at < trace.size();) {
        const size_t size = sizes[next++ % sizes.size()];
        reader.Feed(std::string_view(trace).substr(at, size));
        at += size;
    }
    reader.Finish();
    return record.All();
}

}  // namespace

// The system's converters stay loaded from one text to the next as long as one is open.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    static iconv_t open[] = {iconv_open("UTF-8", "ISO-8859-1"), iconv_open("UTF-8", "CP932")};
    return open[0] == open[1] ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const Encoding encoding = input.OnceIn(2) ? Encoding::kShiftJis : Encoding::kLatin1;
    std::vector<size_t> sizes(3);
    for (size_t& each : sizes) {
        each = static_cast<size_t>(input.Upto(40)) + 1;
    }
    const std::string trace = input.Rest();

    const std::string whole = Whole(trace);
    Expect(whole == InPieces(trace, sizes), "the pieces in which a trace comes don't matter");
    Expect(whole == InPieces(trace, {1}), "nor do single bytes");

    Show show(encoding);
    std::istringstream stream(trace);
    host::ReadTrace(stream, show);
    return 0;
}
