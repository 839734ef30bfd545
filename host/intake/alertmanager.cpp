// Alertmanager. Tested by tests/unit/host/alertmanager_test.cpp, tests/fuzz/alertmanager.cpp.
#include "host/intake/alertmanager.h"

#include <strings.h>

#include <algorithm>
#include <optional>

#include "host/intake/json_input.h"
#include "host/site/words.h"

namespace host {
namespace {

// Words of severities that are usual there; ours are themselves.
constexpr Word kUsualSeverities[] = {{"page", "critical"},      {"emergency", "critical"},
                                     {"error", "major"},        {"high", "major"},
                                     {"warning", "minor"},      {"low", "informational"},
                                     {"info", "informational"}, {"none", "informational"}};

constexpr std::string_view kLabels = "labels.";
constexpr std::string_view kAnnotations = "annotations.";
constexpr const char* kAlertTexts[] = {"fingerprint", "startsAt", "generatorURL"};
constexpr const char* kMessageTexts[] = {"receiver", "externalURL"};

template <size_t count>
bool IsAmong(const char* const (&names)[count], const std::string& name) {
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

bool BeginsWith(const std::string& name, std::string_view begin) {
    return name.compare(0, begin.size(), begin) == 0 && name.size() > begin.size();
}

std::optional<std::string> TextIn(const Json& object, const std::string& name) {
    const auto found = object.find(name);
    return found != object.end() && found->is_string()
               ? std::optional<std::string>(found->get<std::string>())
               : std::nullopt;
}

std::optional<std::string> TextWithin(const Json& alert, const char* part,
                                      const std::string& name) {
    const auto found = alert.find(part);
    return found != alert.end() && found->is_object() ? TextIn(*found, name) : std::nullopt;
}

Template::Values ValuesOf(const Json& message, const Json& alert) {
    return [&message, &alert](const std::string& name) {
        if (BeginsWith(name, kLabels)) {
            return TextWithin(alert, "labels", name.substr(kLabels.size()));
        }
        if (BeginsWith(name, kAnnotations)) {
            return TextWithin(alert, "annotations", name.substr(kAnnotations.size()));
        }
        return TextIn(IsAmong(kMessageTexts, name) ? message : alert, name);
    };
}

// An alert that says how bad it is in words of its own is no less bad for that.
std::string SeverityFor(const std::string& word) {
    if (word.empty()) {
        return IncomingAlarm().severity;
    }
    for (const Word& known : kSeverities) {
        if (strcasecmp(known.word, word.c_str()) == 0) {
            return known.word;
        }
    }
    for (const Word& known : kUsualSeverities) {
        if (strcasecmp(known.word, word.c_str()) == 0) {
            return known.cell;
        }
    }
    return "unknown";
}

// It isn't sent again where it is refused.
std::string Cut(std::string text) {
    text.resize(std::min(text.size(), kLongestText));
    return text;
}

std::string Required(const Json& alert, const char* field) {
    std::string text;
    ReadText(alert, field, text);
    if (text.empty()) {
        throw BadField(field, "it is missing");
    }
    return text;
}

class Reader {
 public:
    explicit Reader(const AlertTemplates& templates)
        : group_(templates.group),
          severity_(templates.severity),
          server_(templates.server),
          text_(templates.text) {}

    Alert Read(const Json& message, const Json& alert) const {
        const Template::Values values = ValuesOf(message, alert);
        Alert read;
        read.resolved = Required(alert, "status") == "resolved";
        read.alarm.group = Cut(group_.Fill(values));
        read.alarm.severity = SeverityFor(severity_.Fill(values));
        read.alarm.server = Cut(server_.Fill(values));
        read.alarm.text = Cut(text_.Fill(values));
        read.alarm.source = kAlertmanagerSource;
        read.fingerprint = Required(alert, "fingerprint");
        const std::string starts = Required(alert, "startsAt");
        read.began = ReadInstant(starts);
        read.ended =
            read.resolved ? ReadInstant(TextIn(alert, "endsAt").value_or("")) : std::nullopt;
        // Peers may write one instant in several zones.
        read.alarm.key =
            KeysOfAlert(read.fingerprint) + (read.began ? Written(*read.began) : starts);
        if (read.alarm.text.find_first_not_of(" \t\r\n") == std::string::npos) {
            read.alarm.text = "an alert without a text";
        }
        return read;
    }

 private:
    const Template group_;
    const Template severity_;
    const Template server_;
    const Template text_;
};

}  // namespace

std::string KeysOfAlert(const std::string& fingerprint) {
    return fingerprint + " ";
}

std::optional<AlertInstant> BeganByKey(const std::string& key) {
    return ReadInstant(std::string_view(key).substr(std::min(key.rfind(' ') + 1, key.size())));
}

std::string WhyNoAlertTemplate(const std::string& text) {
    try {
        for (const std::string& name : Template(text).Names()) {
            if (!BeginsWith(name, kLabels) && !BeginsWith(name, kAnnotations) &&
                !IsAmong(kAlertTexts, name) && !IsAmong(kMessageTexts, name)) {
                return "an alert has no \"" + name + "\"";
            }
        }
    } catch (const BadTemplate& error) {
        return error.what();
    }
    return {};
}

std::vector<Alert> AlertsFromJson(std::string_view text, const AlertTemplates& templates) {
    const Json message = ParseJson(text);
    if (!message.is_object()) {
        throw BadField("", "a message of Alertmanager is an object");
    }
    if (TextIn(message, "version") != "4") {
        throw BadField("version", "only version \"4\" of the webhook is known");
    }
    const auto list = message.find("alerts");
    if (list == message.end() || !list->is_array()) {
        throw BadField("alerts", "a list is expected here");
    }
    const Reader reader(templates);
    std::vector<Alert> alerts;
    const size_t count = list->size();
    for (size_t i = 0; i < count; ++i) {
        const Json& alert = (*list)[i];
        try {
            if (!alert.is_object()) {
                throw BadField("", "an object is expected here");
            }
            alerts.push_back(reader.Read(message, alert));
        } catch (const BadField& error) {
            throw BadField("alerts[" + std::to_string(i) + "]." + error.Field(), error.what());
        }
    }
    return alerts;
}

}  // namespace host
