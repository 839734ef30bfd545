// A call: what was said over the line, and its picture, from the trace of the line. Tested by
// tests/unit/host/web_call_test.cpp.
#include <filesystem>
#include <fstream>
#include <optional>

#include "host/lines/line_folder.h"
#include "host/pages/sends.h"
#include "host/text/markup.h"
#include "host/trace/read_trace.h"
#include "host/trace_view/page_svg.h"
#include "host/trace_view/page_text.h"
#include "host/web/page_parts.h"

namespace host {
namespace {

namespace fs = std::filesystem;

// Traces that were moved aside are read, too.
constexpr int kMostAside = 5;
// What became of a page is recorded within these seconds of its end.
constexpr std::time_t kRecordedWithin = 2;

class CallFinder final : public TraceSink {
 public:
    CallFinder(Connection& connection, const Send& send) : connection_(connection), send_(send) {}

    const std::optional<TracedPage>& Found() const { return found_; }

 private:
    void OnPage(const TracedPage& page) override {
        if (!found_ && page.pager == send_.pager && page.seconds == send_.seconds &&
            page.outcome == send_.outcome && IsOfAlarmAndTime(page)) {
            found_ = page;
        }
    }
    void OnEvent(const TraceEvent& /*event*/) override {}

    bool IsOfAlarmAndTime(const TracedPage& page) const {
        const Send other = SendOf(connection_, page, send_.at);
        return other.alarm == send_.alarm && other.at <= send_.at &&
               other.at >= send_.at - kRecordedWithin;
    }

    Connection& connection_;
    const Send& send_;
    std::optional<TracedPage> found_;
};

struct Call {
    Send send;
    std::optional<TracedPage> page;
    std::string why_not;  // in words, where there is none
};

std::optional<TracedPage> FindIn(const std::string& path, CallFinder& finder) {
    std::ifstream file(path, std::ios::binary);
    if (file) {
        ReadTrace(file, finder);
    }
    return finder.Found();
}

bool CanBeRead(const std::string& path) {
    return std::ifstream(path, std::ios::binary).good();
}

Call FindCall(const PageAsked& asked) {
    const std::optional<RecordedSend> recorded =
        FindSend(asked.connection, NumberInAddress(asked.target, "send", 0));
    if (!recorded) {
        throw NotFound();
    }
    Call call{recorded->send, std::nullopt, ""};
    const std::string trace = LineFolder(asked.database, call.send.port) + "/" + kTraceFile;
    CallFinder finder(asked.connection, call.send);
    call.page = FindIn(trace, finder);
    for (int aside = 1; !call.page && aside <= kMostAside; ++aside) {
        call.page = FindIn(trace + "." + std::to_string(aside), finder);
    }
    if (!call.page) {
        std::error_code ignored;
        call.why_not = CanBeRead(trace) ? "The trace of this line doesn't have it any more."
                       : fs::exists(trace, ignored) ? "The trace of this line can't be read by the "
                                                      "user that this page is served by."
                                                    : "This host has no trace of this line: it "
                                                      "lies on the host whose modem dialled.";
    }
    return call;
}

std::string Dialogue(const PageAsked& asked, const Call& call) {
    if (!call.page) {
        return "<p>" + Escaped(call.why_not) + "</p>\n";
    }
    const std::string picture = Url("/picture", {{"send", InAddress(asked.target, "send")}});
    return "<h2>What was said</h2>\n<pre tabindex=\"0\" aria-label=\"Dialogue\">" +
           EscapedMarkup(PageText(asked.encoding, Colours(false)).Dialogue(*call.page)) +
           "</pre>\n<h2>Picture</h2>\n<p class=\"picture\"><a href=\"" + Escaped(picture) +
           "\"><img src=\"" + Escaped(picture) +
           "\" alt=\"Timeline of the call: who spoke, who waited, for how long; "
           "all of it stands in the dialogue above\"></a></p>\n";
}

}  // namespace

std::string CallPage(const PageAsked& asked) {
    const Call call = FindCall(asked);
    const Send& send = call.send;
    return Framed(
        asked, "Call " + InAddress(asked.target, "send"),
        HtmlFacts({{"Alarm", send.alarm.empty() ? "none: a test" : LinkToAlarm(asked, send.alarm)},
                   {"Pager", Shown(asked, send.pager)},
                   {"Line", send.port.empty() ? "-" : Shown(asked, send.port)},
                   {"Ended", HtmlTime(send.at)},
                   {"Took", std::to_string(send.seconds) + " s"},
                   {"Outcome", Escaped(WordOf(send.outcome))},
                   {"Reason", send.reason.empty() ? "-" : Shown(asked, send.reason)}}) +
            Dialogue(asked, call));
}

std::string CallPicture(const PageAsked& asked) {
    const Call call = FindCall(asked);
    if (!call.page) {
        throw NotFound();
    }
    return PageAsSvg(*call.page, asked.encoding);
}

}  // namespace host
