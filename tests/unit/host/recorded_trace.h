// What a trace comes to, kept for a test to look at.
#ifndef PAGERFWD_TESTS_UNIT_HOST_RECORDED_TRACE_H
#define PAGERFWD_TESTS_UNIT_HOST_RECORDED_TRACE_H

#include <sstream>
#include <string>
#include <vector>

#include "host/trace/read_trace.h"

class RecordedTrace : public host::TraceSink {
 public:
    struct Event {
        uint64_t line;
        int second;
        host::TraceKind kind;
        std::string field;
    };

    void OnPage(const host::TracedPage& page) override { pages.push_back(page); }
    void OnEvent(const host::TraceEvent& event) override {
        events.push_back({event.entry.line, event.entry.second, event.meaning.kind,
                          std::string(event.meaning.field)});
    }

    static RecordedTrace Of(const std::string& text) {
        RecordedTrace recorded;
        std::istringstream stream(text);
        host::ReadTrace(stream, recorded);
        return recorded;
    }

    std::vector<host::TracedPage> pages;
    std::vector<Event> events;
};

// " 7: 5: 9<tab>", as the library writes a time of day.
inline std::string Stamp(int second) {
    char text[32];
    std::snprintf(text, sizeof text, "%2d:%2d:%2d\t", second / 3600, second / 60 % 60, second % 60);
    return text;
}

// A trace, written entry by entry; time passes only where it is said to.
class TraceWriter {
 public:
    explicit TraceWriter(int second = 10 * 3600) : second_(second) {}

    TraceWriter& Say(const std::string& text) {
        text_ += Stamp(second_) + text + "\n";
        return *this;
    }
    TraceWriter& Pass(int seconds) {
        second_ = (second_ + seconds + 86400) % 86400;
        return *this;
    }

    TraceWriter& Begin(const std::string& pager = "duty", const std::string& date = "01/08/01") {
        return Say("*** START PAGING ***")
            .Say("Try to page for " + pager + " at " + date + "\t10:00:00\t: ")
            .Say("COM: COM 1")
            .Say("Pagernumber: 5550111 (SMS1(TAP) )")
            .Say("Timemodel: always")
            .Say("Caused through alarm: OPS/7 (approximately logging time:01/01/70 / 00:00:00)")
            .Say("Server: SERVER\tSeverity: Major");
    }
    TraceWriter& Message() { return Say("Message to send: OPS/Major/SERVER/door"); }
    // Waits so long for it, and hears what is heard first.
    TraceWriter& Wait(const std::string& expected, int limitMs, const std::string& heard,
                      int seconds, bool found) {
        Say("WaitString( int 7, CString " + expected + ", DWORD " + std::to_string(limitMs) +
            ", BOOL 1 ) L:%d %s");
        if (!heard.empty()) {
            Say("WaitString [modemsay=" + heard.substr(0, 80) + "] L:%d");
        }
        Pass(seconds);
        return Say(found ? "WaitString() == 1 L:%d %" : "WaitString() == 0 L:%d %");
    }
    TraceWriter& End() { return Say("*** END PAGING ***"); }

    const std::string& Text() const { return text_; }

 private:
    int second_;
    std::string text_;
};

#endif
