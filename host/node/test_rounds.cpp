// Test pages and calls. Tested by tests/e2e/run_engines_test.cpp and run_line_call_test.cpp.
#include "host/node/test_rounds.h"
#include "host/store/tables/pagers.h"

#include "host/store/tables/deliveries.h"
#include "host/store/tables/test_pages.h"

namespace host {
namespace {

constexpr int32_t kNoLine = 5;  // the library's result

void Give(Connection& connection, const AskedTestPage& asked, const Dispatch& dispatch) {
    const std::vector<PagerRow> pagers = FindPagers(connection, asked.pager);
    if (pagers.size() != 1) {
        AnswerTestPage(connection, asked.asked, {kPagerUnknown, ""});
        return;
    }
    const PagerRow& pager = pagers.front();
    if (const ServedLine* const line = dispatch.LineFor(pager)) {
        GiveTestPage(connection, asked.asked, line->Line().name);
        line->Ring();
    } else if (dispatch.LineOfSite(pager) == nullptr) {
        AnswerTestPage(connection, asked.asked, {kNoLine, ""});
    }
}

bool IsCall(const AskedTestPage& asked) {
    return !asked.number.empty();
}

// A line that is served sees its calls; any other makes them by a process that is there for no
// more.
void GiveCalls(Connection& connection, const std::vector<AskedTestPage>& all, ServedLine& line) {
    const std::string failure = line.TakeFailedCall();
    bool open = false;
    for (const AskedTestPage& asked : all) {
        if (!IsCall(asked) || asked.line != line.Line().name) {
            continue;
        }
        open = open || failure.empty();
        if (!failure.empty()) {
            AnswerTestPage(connection, asked.asked, {kNoLine, failure});
        }
    }
    line.SetToCall(open);
    if (open) {
        line.Ring();
    }
}

void GivePage(Connection& connection, const AskedTestPage& asked, const ServedLines& lines,
              const Dispatch& dispatch) {
    if (asked.line.empty()) {
        Give(connection, asked, dispatch);
        return;
    }
    const ServedLine* const line = lines.Find(asked.line);
    if (line == nullptr || !line->IsWanted()) {
        AnswerTestPage(connection, asked.asked, {kNoLine, ""});
    } else {
        line->Ring();  // who has asked can't
    }
}

}  // namespace

void GiveTestPages(Lease& lease, const ServedLines& lines, const Dispatch& dispatch) {
    Connection& connection = lease.Database();
    const std::vector<AskedTestPage> all = AskedTestPages(connection, lease.Owners());
    for (const std::unique_ptr<ServedLine>& line : lines.All()) {
        GiveCalls(connection, all, *line);
    }
    for (const AskedTestPage& asked : all) {
        if (!IsCall(asked)) {
            GivePage(connection, asked, lines, dispatch);
        } else if (lines.Find(asked.line) == nullptr) {
            AnswerTestPage(connection, asked.asked,
                           {kNoLine, "the site has no such port any more"});
        }
    }
}

}  // namespace host
