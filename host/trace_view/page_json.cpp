// Pages as JSON. Tested by tests/unit/host/trace_view_test.cpp.
#include "host/trace_view/page_json.h"

#include "host/text/json.h"
#include "host/trace/calendar.h"
#include "host/trace_view/page_text.h"

namespace host {
namespace {

Json TurnAsJson(const Turn& turn, Encoding encoding) {
    const std::string text = Decode(turn.text, encoding);
    Json json = {{"from", turn.from}, {"to", turn.to}, {"phase", NameOf(turn.phase)}};
    switch (turn.kind) {
        case Turn::Kind::kSaid:
            json["said"] = text;
            break;
        case Turn::Kind::kHeard:
            json["heard"] = text;
            break;
        case Turn::Kind::kWaited:
            json["waited_for"] = text;
            json["limit_ms"] = turn.limit_ms;
            json["found"] = turn.found;
            break;
        case Turn::Kind::kPaused:
            json["paused"] = true;
            break;
        case Turn::Kind::kFailure:
            json["failure"] = text;
            break;
        case Turn::Kind::kUnknown:
            json["unknown"] = text;
            break;
    }
    return json;
}

}  // namespace

std::string PageAsJson(const TracedPage& page, Encoding encoding) {
    const auto text = [encoding](const std::string& bytes) { return Decode(bytes, encoding); };
    Json json = {
        {"page", page.number},
        {"line", page.first_line},
        {"date", page.day ? Json(IsoDate(*page.day)) : Json()},
        {"time", ClockTime(page.second)},
        {"seconds", page.seconds},
        {"test", page.test},
        {"pager", text(page.pager)},
        {"type", page.type},
        {"number", text(page.number_called)},
        {"port", text(page.Port())},
        {"port_asked", text(page.port)},
        {"settings", text(page.settings)},
        {"hours", text(page.hours)},
        {"alarm", text(page.alarm)},
        {"server", text(page.server)},
        {"severity", text(page.severity)},
        {"text", text(page.message)},
        {"outcome", NameOf(page.outcome)},
        {"result", page.outcome == TracedPage::Outcome::kNotSent ? Json(page.result) : Json()},
        {"reason", text(page.reason)},
        {"phases", Json::object()},
        {"dialogue", Json::array()},
        {"dialogue_left_out", page.turns_left_out}};
    for (size_t phase = 0; phase < kPagePhases; ++phase) {
        json["phases"][std::string(NameOf(static_cast<PagePhase>(phase)))] =
            page.phase_seconds.at(phase);
    }
    for (const Turn& turn : page.turns) {
        json["dialogue"].push_back(TurnAsJson(turn, encoding));
    }
    return Written(json);
}

}  // namespace host
