// What is pending, and what has ended last: as tables and as JSON.
#ifndef PAGERFWD_HOST_CLI_STATUS_VIEW_H
#define PAGERFWD_HOST_CLI_STATUS_VIEW_H

#include <string>
#include <vector>

#include "host/cli/lines_view.h"
#include "host/pages/history.h"
#include "host/text/encoding.h"

namespace host {

struct EngineStatus {
    Encoding encoding = Encoding::kLatin1;
    std::string engine;  // who serves the database: "run, process 12", or the nodes; empty: nobody
    std::vector<LineStatus> lines;
    std::vector<PageStory> pending;
    size_t all_pending = 0;  // also where only the first are shown
    std::vector<PageStory> ended;
};

// Looking changes nothing. Throws StoreError.
EngineStatus ReadStatus(const std::string& database, int64_t ended);

// As much of it as so many lines of a screen hold: the modems' lines, the pages that are pending,
// and of those that have ended the last.
EngineStatus Fitting(EngineStatus status, size_t rows);

std::string AsTables(const EngineStatus& status);
std::string AsJson(const EngineStatus& status);

}  // namespace host

#endif
