// The parts of a site file, one function each. Tested by tests/unit/host/site_writer_test.cpp.
#include "host/site/site_writer.h"

#include <array>
#include <cstdio>
#include <tuple>
#include <utility>

#include "host/intake/alertmanager.h"
#include "host/text/printable.h"

namespace host {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

// "key = value", a line.
class TomlWriter {
 public:
    void Table(const char* header) { text_ += "\n" + std::string(header) + "\n"; }

    void Key(const std::string& key, const SaidText& text) { Line(key, TomlText(text.value)); }
    void Key(const std::string& key, const SaidNumber& number) {
        Line(key, std::to_string(number.value));
    }
    void Key(const std::string& key, const Said<bool>& flag) {
        Line(key, flag.value ? "true" : "false");
    }
    void Key(const std::string& key, const std::vector<SaidText>& texts) {
        std::string list;
        for (const SaidText& text : texts) {
            list += (list.empty() ? "" : ", ") + TomlText(text.value);
        }
        Line(key, "[" + list + "]");
    }
    // What is left out where it is empty.
    void KeyIfAny(const std::string& key, const SaidText& text) {
        if (!text.value.empty()) {
            Key(key, text);
        }
    }

    void Lines(const LineSettings& settings) {
        Key("data", settings.data);
        Key("parity", settings.parity);
        Key("stop", settings.stop);
    }

    std::string Take() { return std::move(text_); }

 private:
    void Line(const std::string& key, const std::string& value) {
        text_ += key + " = " + value + "\n";
    }

    std::string text_;
};

// Keys of letters, digits and dashes stand as they are.
std::string TomlKey(const std::string& key) {
    const bool bare =
        !key.empty() &&
        key.find_first_not_of("abcdefghijklmnopqrstuvwxyz-_0123456789") == std::string::npos;
    return bare ? key : TomlText(key);
}

void WriteService(TomlWriter& writer, const char* header, const SmsService& service) {
    writer.Table(header);
    writer.Key("protocol", service.protocol);
    writer.Key("dial", service.dial);
    writer.Lines(service.settings);
}

void WritePort(TomlWriter& writer, const Port& port) {
    writer.Table("[[port]]");
    writer.Key("name", port.name);
    writer.KeyIfAny("device", port.device);
    writer.KeyIfAny("node", port.node);
    writer.Key("baud", port.baud);
    writer.Key("flow", port.flow);
    writer.Key("modem", port.modem);
    writer.Key("init", port.init);
    writer.Key("reset", port.reset);
    writer.Table("[port.pager]");
    writer.Key("dial", port.pager.dial);
    writer.Key("prompt", port.pager.prompt);
    writer.Lines(port.pager.settings);
    WriteService(writer, "[port.sms1]", port.sms1);
    WriteService(writer, "[port.sms2]", port.sms2);
}

void WriteTimeModel(TomlWriter& writer, const TimeModel& model) {
    writer.Table("[[hours]]");
    writer.Key("name", model.name);
    if (model.all.value) {
        writer.Key("all", model.all);
    }
    for (const DayHours& hours : model.days) {
        writer.Key(TomlKey(hours.days.value), hours.ranges);
    }
}

void WritePager(TomlWriter& writer, const Pager& pager) {
    writer.Table("[[pager]]");
    writer.Key("description", pager.description);
    writer.KeyIfAny("owner", pager.owner);
    writer.KeyIfAny("port", pager.port);
    writer.KeyIfAny("node", pager.node);
    writer.Key("type", pager.type);
    writer.Key("number", pager.number);
    writer.Key("retries", pager.retries);
    writer.Key("delay", pager.delay);
    writer.Key("hours", pager.hours);
}

void WriteRoute(TomlWriter& writer, const Route& route) {
    writer.Table("[[route]]");
    writer.Key("groups", route.groups);
    if (!route.severities.empty()) {
        writer.Key("severities", route.severities);
    }
    writer.Key("pagers", route.pagers);
}

void WriteCommand(TomlWriter& writer, const char* header, const Command& command) {
    if (!command.empty()) {
        writer.Table(header);
        writer.Key("command", command);
    }
}

void WriteNotify(TomlWriter& writer, const Site& site) {
    WriteCommand(writer, "[notify]", site.notify);
    if (site.answers.value) {
        if (site.notify.empty()) {
            writer.Table("[notify]");
        }
        writer.Key("answers", site.answers);
    }
}

// Only what isn't as usual.
void WriteAlertmanager(TomlWriter& writer, const AlertmanagerPart& part) {
    const std::tuple<const char*, const SaidText&, const char*> keys[] = {
        {"group", part.group, kAlertGroup},
        {"severity", part.severity, kAlertSeverity},
        {"server", part.server, kAlertServer},
        {"text", part.text, kAlertText}};
    bool is_open = false;
    for (const auto& [key, text, usual] : keys) {
        if (text.value == usual) {
            continue;
        }
        if (!std::exchange(is_open, true)) {
            writer.Table("[alertmanager]");
        }
        writer.Key(key, text);
    }
}

std::string EscapedCode(uint32_t code) {
    std::array<char, 16> escaped{};
    std::snprintf(escaped.data(), escaped.size(), "\\u%04X", static_cast<unsigned>(code));
    return escaped.data();
}

}  // namespace

std::string TomlText(std::string_view utf8) {
    std::string text = "\"";
    while (!utf8.empty()) {
        const Utf8Character character = FirstCharacter(utf8);
        if (!character.valid) {
            text += kReplacement;
        } else if (character.code == '"' || character.code == '\\') {
            text += '\\';
            text += utf8.front();
        } else if (character.code < 0x20 || (character.code >= 0x7F && character.code < 0xA0)) {
            text += EscapedCode(character.code);
        } else {
            text += utf8.substr(0, character.length);
        }
        utf8.remove_prefix(character.length);
    }
    return text + "\"";
}

std::string WriteSite(const Site& site) {
    TomlWriter writer;
    writer.Key("encoding", site.encoding);
    WriteNotify(writer, site);
    WriteCommand(writer, "[heartbeat]", site.heartbeat);
    WriteAlertmanager(writer, site.alertmanager);
    if (site.page_resolved.value) {
        writer.Table("[resolved]");
        writer.Key("page", site.page_resolved);
    }
    if (!site.unknown_outcome.value.empty() && site.unknown_outcome.value != kSendAgain) {
        writer.Table("[site]");
        writer.Key("unknown_outcome", site.unknown_outcome);
    }
    for (const SiteNode& node : site.nodes) {
        writer.Table("[[node]]");
        writer.Key("name", node.name);
    }
    for (const Port& port : site.ports) {
        WritePort(writer, port);
    }
    for (const TimeModel& model : site.timeModels) {
        WriteTimeModel(writer, model);
    }
    for (const Pager& pager : site.pagers) {
        WritePager(writer, pager);
    }
    for (const Route& route : site.routes) {
        WriteRoute(writer, route);
    }
    return writer.Take();
}

}  // namespace host
