// Events to JSON and back. Tested by tests/unit/sim/record_test.cpp.
#include "sim/record/event.h"

#include <array>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace pagersim {
namespace {

constexpr std::array<std::pair<EventKind, const char*>, 8> kKindNames = {{
    {EventKind::kOpens, "opens"},
    {EventKind::kCloses, "closes"},
    {EventKind::kSets, "sets"},
    {EventKind::kSends, "sends"},
    {EventKind::kNotes, "notes"},
    {EventKind::kDials, "dials"},
    {EventKind::kDelivers, "delivers"},
    {EventKind::kEnds, "ends"},
}};

const char* KindName(EventKind kind) {
    for (const auto& [known, name] : kKindNames) {
        if (known == kind) {
            return name;
        }
    }
    return "";
}

EventKind KindNamed(std::string_view name) {
    for (const auto& [kind, known] : kKindNames) {
        if (known == name) {
            return kind;
        }
    }
    throw std::invalid_argument("no such event: " + std::string(name));
}

// Bytes as code points of the same value, in UTF-8; and back.
std::string Widened(std::string_view bytes) {
    std::string wide;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80) {
            wide += static_cast<char>(0xc0 | byte >> 6);
        }
        wide += static_cast<char>(byte >= 0x80 ? 0x80 | (byte & 0x3f) : byte);
    }
    return wide;
}

std::string Narrowed(std::string_view wide) {
    std::string bytes;
    for (std::size_t i = 0; i < wide.size(); ++i) {
        const auto byte = static_cast<unsigned char>(wide[i]);
        if (byte < 0x80) {
            bytes += wide[i];
        } else if ((byte == 0xc2 || byte == 0xc3) && i + 1 < wide.size()) {
            bytes += static_cast<char>(byte << 6 | (wide[++i] & 0x3f));
        } else {
            throw std::invalid_argument("a character beyond U+00FF");
        }
    }
    return bytes;
}

}  // namespace

bool Event::operator==(const Event& other) const {
    return at == other.at && line == other.line && who == other.who && kind == other.kind &&
           text == other.text && recipient == other.recipient;
}

std::string ToJson(const Event& event) {
    nlohmann::ordered_json json = {{"ms", event.at.count()},
                                   {"line", Widened(event.line)},
                                   {"who", Widened(event.who)},
                                   {"what", KindName(event.kind)}};
    if (!event.recipient.empty() || event.kind == EventKind::kDelivers) {
        json["recipient"] = Widened(event.recipient);
    }
    if (!event.text.empty() || event.kind == EventKind::kDelivers) {
        json["text"] = Widened(event.text);
    }
    return json.dump();
}

Event EventFromJson(const std::string& line) try {
    const auto json = nlohmann::json::parse(line);
    Event event;
    event.at = Milliseconds{json.at("ms").get<Milliseconds::rep>()};
    event.line = Narrowed(json.at("line").get<std::string>());
    event.who = Narrowed(json.at("who").get<std::string>());
    event.kind = KindNamed(json.at("what").get<std::string>());
    event.recipient = Narrowed(json.value("recipient", std::string{}));
    event.text = Narrowed(json.value("text", std::string{}));
    return event;
} catch (const nlohmann::json::exception& bad) {
    throw std::invalid_argument(bad.what());
}

}  // namespace pagersim
