// Test pages. Tested by tests/e2e/run_engines_test.cpp.
#include "host/node/test_rounds.h"

#include "host/pages/deliveries.h"
#include "host/pages/test_pages.h"
#include "host/site/site_tables.h"

namespace host {
namespace {

constexpr int32_t kNoLine = 5;  // the library's result

void Give(Connection& connection, const AskedTestPage& asked, const Dispatch& dispatch) {
    const std::vector<PagerRow> pagers = FindPagers(connection, asked.pager);
    if (pagers.size() != 1) {
        AnswerTestPage(connection, asked.asked, kPagerUnknown);
        return;
    }
    const PagerRow& pager = pagers.front();
    if (const ServedLine* const line = dispatch.LineFor(pager.port, pager.type)) {
        GiveTestPage(connection, asked.asked, line->Line().name);
        line->Ring();
    } else if (dispatch.LineOfSite(pager.port, pager.type) == nullptr) {
        AnswerTestPage(connection, asked.asked, kNoLine);
    }
}

}  // namespace

void GiveTestPages(Lease& lease, const ServedLines& lines, const Dispatch& dispatch) {
    for (const AskedTestPage& asked : AskedTestPages(lease.Database(), lease.Owners())) {
        if (asked.line.empty()) {
            Give(lease.Database(), asked, dispatch);
            continue;
        }
        const ServedLine* const line = lines.Find(asked.line);
        if (line == nullptr || !line->IsWanted()) {
            AnswerTestPage(lease.Database(), asked.asked, kNoLine);
        }
    }
}

}  // namespace host
