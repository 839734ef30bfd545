// What the templates of alerts have to be. Tested by tests/unit/host/site_check_test.cpp.
#include "host/intake/alertmanager.h"
#include "host/site/rules.h"

namespace host {
namespace {

void CheckTemplate(const char* key, const SaidText& text, Findings& findings) {
    if (const std::string why = WhyNoAlertTemplate(text.value); !why.empty()) {
        findings.Error(text.line, std::string("[alertmanager]: ") + key + ": " + why,
                       "No alert could be taken.",
                       "Write places as {labels.NAME} or {annotations.NAME}.");
    }
}

}  // namespace

void CheckAlertmanager(const Site& site, Findings& findings) {
    CheckTemplate("group", site.alertmanager.group, findings);
    CheckTemplate("severity", site.alertmanager.severity, findings);
    CheckTemplate("server", site.alertmanager.server, findings);
    CheckTemplate("text", site.alertmanager.text, findings);
}

}  // namespace host
