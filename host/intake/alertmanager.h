// Alertmanager's webhook, version 4: groups of alerts that fire or are resolved, each an alarm.
//
// It sends a whole group again whenever one of it changes, at every interval of its own, and from
// each of its peers; and again what was answered with 5xx. So an alert's key is its fingerprint and
// the time at which it began to fire: what comes again or late is known, also after its end. What
// then is done to alarms stands in host/alarms/alerts.h.
//
// Errors     BadField, with the place, from what reads JSON.
#ifndef PAGERFWD_HOST_INTAKE_ALERTMANAGER_H
#define PAGERFWD_HOST_INTAKE_ALERTMANAGER_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/alarms/incoming.h"
#include "host/intake/alert_instant.h"
#include "host/intake/template.h"

namespace host {

// How an alert becomes an alarm: a template each. A place is "labels.NAME", "annotations.NAME",
// "fingerprint", "startsAt", "generatorURL", "receiver" or "externalURL".
inline constexpr const char* kAlertGroup = "ALERT/{labels.alertname|'000'}";
inline constexpr const char* kAlertSeverity = "{labels.severity}";
inline constexpr const char* kAlertServer = "{labels.instance}";
inline constexpr const char* kAlertText =
    "{annotations.summary|annotations.description|labels.alertname}";
struct AlertTemplates {
    std::string group = kAlertGroup;
    std::string severity = kAlertSeverity;
    std::string server = kAlertServer;
    std::string text = kAlertText;
};

// Why a template can't be one; empty: it can.
std::string WhyNoAlertTemplate(const std::string& text);

struct Alert {
    IncomingAlarm alarm;  // what a page can't have of it is cut off or replaced
    bool resolved = false;
    std::string fingerprint;            // of its labels: the same each time it fires
    std::optional<AlertInstant> began;  // none: it can't be read
    std::optional<AlertInstant> ended;  // of one that is resolved
};
std::vector<Alert> AlertsFromJson(std::string_view text, const AlertTemplates& templates);

inline constexpr const char* kAlertmanagerSource = "alertmanager";

// With what the keys of an alert begin, whenever it fires; and when the alarm of a key began to.
std::string KeysOfAlert(const std::string& fingerprint);
std::optional<AlertInstant> BeganByKey(const std::string& key);

}  // namespace host

#endif
