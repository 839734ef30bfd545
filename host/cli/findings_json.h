// Findings as JSON.
#ifndef PAGERFWD_HOST_CLI_FINDINGS_JSON_H
#define PAGERFWD_HOST_CLI_FINDINGS_JSON_H

#include <string>

#include "host/site/findings.h"
#include "host/text/json.h"

namespace host {

inline Json FindingsAsJson(const std::string& file, const Findings& findings) {
    Json list = Json::array();
    for (const Finding& finding : findings.All()) {
        const bool isError = finding.severity == Finding::Severity::kError;
        Json json = {{"severity", isError ? "error" : "warning"},
                     {"what", finding.what},
                     {"consequence", finding.consequence},
                     {"remedy", finding.remedy}};
        if (finding.place.empty()) {
            json["line"] = finding.line;
        } else {
            json["place"] = finding.place;
        }
        list.push_back(std::move(json));
    }
    return {{"file", file},
            {"errors", findings.Count(Finding::Severity::kError)},
            {"warnings", findings.Count(Finding::Severity::kWarning)},
            {"findings", std::move(list)}};
}

}  // namespace host

#endif
