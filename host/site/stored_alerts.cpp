// Templates as an object in JSON. Tested by tests/unit/host/alertmanager_test.cpp.
#include "host/site/stored_alerts.h"

#include "host/store/schema.h"
#include "host/text/json.h"

namespace host {
namespace {

constexpr const char* kSetting = "alertmanager";

// What an older make, or somebody else, has put there doesn't stop an alert.
void Read(const Json& stored, const char* key, std::string& text) {
    if (stored.is_object() && stored.contains(key) && stored[key].is_string() &&
        WhyNoAlertTemplate(stored[key].get<std::string>()).empty()) {
        text = stored[key].get<std::string>();
    }
}

}  // namespace

AlertTemplates ReadAlertTemplates(Connection& connection) {
    const Json stored = Json::parse(ReadSetting(connection, kSetting), nullptr, false);
    AlertTemplates templates;
    Read(stored, "group", templates.group);
    Read(stored, "severity", templates.severity);
    Read(stored, "server", templates.server);
    Read(stored, "text", templates.text);
    return templates;
}

void StoreAlertTemplates(Connection& connection, const AlertmanagerPart& part) {
    const Json stored = {{"group", part.group.value},
                         {"severity", part.severity.value},
                         {"server", part.server.value},
                         {"text", part.text.value}};
    WriteSetting(connection, kSetting, WrittenInOneLine(stored));
}

}  // namespace host
