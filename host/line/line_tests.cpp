// What a line is asked for besides its pages, between two of them: test pages, test calls. Tested
// by tests/e2e/run_engines_test.cpp and run_line_call_test.cpp.
#include <poll.h>

#include <algorithm>

#include "host/line/asked_call.h"
#include "host/line/line.h"
#include "host/line/send_test_page.h"
#include "host/platform/device_turn.h"
#include "host/platform/own_device.h"
#include "host/process/signals_held.h"
#include "host/store/line_view.h"
#include "host/store/tables/pagers.h"

namespace host {
namespace {

bool IsEndAskedForWithin(int milliseconds) {
    pollfd stop{StopSignal::Descriptor(), POLLIN, 0};
    return poll(&stop, 1, milliseconds) > 0;
}

bool IsStillAsked(Lease& lease, int64_t asked) {
    const std::vector<AskedTestPage> all = AskedTestPages(lease.Database(), lease.Owners());
    return std::any_of(all.begin(), all.end(),
                       [asked](const AskedTestPage& one) { return one.asked == asked; });
}

}  // namespace

// Each may take as long as two pages: the one on the line, and its own.
bool Line::AnswerTests() {
    bool has_answered = false;
    for (const AskedTestPage& asked : AskedTestPages(lease_.Database(), lease_.Owners())) {
        if (asked.line == line_.name) {
            asked.number.empty() ? SendTestPageFor(asked) : CallFor(asked);
            has_answered = true;
        }
    }
    return has_answered;
}

void Line::SendTestPageFor(const AskedTestPage& asked) {
    NoteDoing("test page to " + asked.pager);
    const int32_t answer = SendTestPageTo(asked.pager);
    log_.Info("test page to \"" + Decode(asked.pager, encoding_) + "\": result " +
              std::to_string(answer));
    AnswerTestPage(lease_.Database(), asked.asked, {answer, ""});
}

int32_t Line::SendTestPageTo(const std::string& pager) {
    const std::vector<PagerRow> rows = FindPagers(lease_.Database(), pager);
    if (rows.size() != 1) {
        return kPagerUnknown;
    }
    PagerRow row = rows.front();
    row.port = PortInView(row.port);
    const SignalsHeld held;
    return SendTestPage(library_, database_, std::move(row));
}

// The page on the line is finished first, and the next one waits for the call.
void Line::CallFor(const AskedTestPage& asked) {
    constexpr int kBetweenLooksMs = 500;
    const DeviceTurn turn;
    while (!DeviceTurn::HasCome()) {
        trace_.Look();
        NoteDoing(Doing());
        if (IsEndAskedForWithin(kBetweenLooksMs)) {
            return;
        }
    }
    if (IsStillAsked(lease_, asked.asked)) {
        doing_.clear();
        MakeAskedCall(lease_.Database(), line_, kOwnDevice, asked, log_);
    }
}

}  // namespace host
