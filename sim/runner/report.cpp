// Reports and expectations. Tested by tests/unit/sim/report_test.cpp.
#include "sim/runner/report.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "sim/record/printable.h"

namespace pagersim {
namespace {

double Seconds(Milliseconds time) {
    constexpr double kSecond = 1000.0;
    return static_cast<double>(time.count()) / kSecond;
}

std::string SecondsText(Milliseconds time) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3f s", Seconds(time));
    return text.data();
}

std::string Counted(std::size_t count, const std::string& thing) {
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

bool Matches(const Expectation& expected, const DeliveredPage& page) {
    return expected.centre == page.centre && expected.recipient == page.recipient &&
           PrintableText(expected.text) == page.text;
}

std::string Quoted(const std::string& text) {
    return "\"" + text + "\"";
}

std::string PageLine(const std::string& recipient, const std::string& text) {
    return recipient + ": " + Quoted(text);
}

nlohmann::ordered_json ToJson(const Expectation& expected) {
    return {{"centre", expected.centre},
            {"recipient", expected.recipient},
            {"text", PrintableText(expected.text)}};
}

nlohmann::ordered_json ToJson(const DeliveredPage& page) {
    return {{"centre", page.centre},
            {"recipient", page.recipient},
            {"text", page.text},
            {"at_seconds", Seconds(page.at)},
            {"call", page.call}};
}

nlohmann::ordered_json ToJson(const CallRecord& call) {
    return {{"line", call.line},
            {"centre", call.centre},
            {"number", call.number},
            {"from_seconds", Seconds(call.from)},
            {"to_seconds", Seconds(call.to)}};
}

template <typename Item>
nlohmann::ordered_json ListOf(const std::vector<Item>& items) {
    auto list = nlohmann::ordered_json::array();
    for (const Item& item : items) {
        list.push_back(ToJson(item));
    }
    return list;
}

}  // namespace

void Report::Add(const Event& event) {
    end_ = std::max(end_, event.at);
    if (event.kind == EventKind::kDials) {
        calls_.push_back({event.line, event.who, event.text, event.at, event.at});
    }
    CallRecord* const call = CallOn(event.line, event.who);
    if (call == nullptr) {
        return;
    }
    call->to = event.at;
    if (event.kind == EventKind::kDelivers) {
        pages_.push_back({event.who, PrintableText(event.recipient), PrintableText(event.text),
                          event.at, static_cast<std::size_t>(call - calls_.data())});
    }
}

// The latest; a line has one at a time.
CallRecord* Report::CallOn(const std::string& line, const std::string& centre) {
    const auto found = std::find_if(calls_.rbegin(), calls_.rend(), [&](const CallRecord& call) {
        return call.line == line && call.centre == centre;
    });
    return found == calls_.rend() ? nullptr : &*found;
}

std::optional<Expectation> ParseExpectation(const std::string& text) {
    const auto colon = text.find(':');
    const auto equals = text.find('=', colon == std::string::npos ? 0 : colon);
    if (colon == std::string::npos || equals == std::string::npos) {
        return std::nullopt;
    }
    return Expectation{text.substr(0, colon), text.substr(colon + 1, equals - colon - 1),
                       text.substr(equals + 1)};
}

Comparison Compare(const std::vector<Expectation>& expected,
                   const std::vector<DeliveredPage>& pages) {
    Comparison comparison{{}, pages};
    for (const Expectation& one : expected) {
        auto& left = comparison.unexpected;
        const auto found = std::find_if(left.begin(), left.end(), [&](const DeliveredPage& page) {
            return Matches(one, page);
        });
        if (found == left.end()) {
            comparison.missing.push_back(one);
        } else {
            left.erase(found);
        }
    }
    return comparison;
}

namespace {

std::string DescribePage(const DeliveredPage& page, const CallRecord& call) {
    return "  " + PageLine(page.recipient, page.text) + ", in a call of " +
           SecondsText(call.to - call.from) + " on " + call.line + "\n";
}

std::string DescribeCentre(const std::string& centre, const Report& report) {
    std::string pages;
    std::size_t count = 0;
    for (const DeliveredPage& page : report.Pages()) {
        if (page.centre == centre) {
            ++count;
            pages += DescribePage(page, report.Calls()[page.call]);
        }
    }
    return centre + " received " + (count == 0 ? "nothing" : Counted(count, "page") + ":") + "\n" +
           pages;
}

}  // namespace

std::string DescribePages(const std::vector<std::string>& centres, const Report& report,
                          const std::string& time) {
    std::string text;
    for (const std::string& centre : centres) {
        text += DescribeCentre(centre, report);
    }
    return text + time + ": " + SecondsText(report.End()) + "\n";
}

std::string DescribeComparison(const Comparison& comparison) {
    if (comparison.Met()) {
        return "received exactly what was expected\n";
    }
    std::string text;
    for (const Expectation& missing : comparison.missing) {
        text += "expected, but not received: " + missing.centre + ", " +
                PageLine(missing.recipient, PrintableText(missing.text)) + "\n";
    }
    for (const DeliveredPage& page : comparison.unexpected) {
        text += "received, but not expected: " + page.centre + ", " +
                PageLine(page.recipient, page.text) + "\n";
    }
    return text;
}

std::string ReportAsJson(const Report& report, int status, const Comparison* comparison) {
    nlohmann::ordered_json json = {{"status", status},
                                   {"virtual_seconds", Seconds(report.End())},
                                   {"calls", ListOf(report.Calls())},
                                   {"pages", ListOf(report.Pages())}};
    if (comparison != nullptr) {
        json["expected"] = {{"met", comparison->Met()},
                            {"missing", ListOf(comparison->missing)},
                            {"unexpected", ListOf(comparison->unexpected)}};
    }
    constexpr int kIndent = 2;
    return json.dump(kIndent, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace pagersim
