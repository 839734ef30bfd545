// Following the trace. Tested by tests/unit/host/trace_follower_test.cpp.
#include "host/line/trace_follower.h"

namespace host {

void TraceFollower::Read(std::string_view bytes, std::time_t now) {
    if (bytes.empty()) {
        reader_.Pause();
    } else {
        reader_.Feed(bytes);
    }
    LookAtPageUnderWay(now);
}

void TraceFollower::Restart() {
    reader_.Finish();
    under_way_ = 0;
}

void TraceFollower::Excuse(std::time_t now) {
    since_ = now;
    told_ = false;
}

void TraceFollower::OnPage(const TracedPage& page) {
    listener_.page_ended(page);
}

void TraceFollower::LookAtPageUnderWay(std::time_t now) {
    const TracedPage* const page = reader_.Current();
    if (page == nullptr) {
        under_way_ = 0;
    } else if (page->number != under_way_) {
        under_way_ = page->number;
        since_ = now;
        told_ = false;
    } else if (!told_ && now - since_ > kLong) {
        told_ = true;
        listener_.page_lasts_long(*page);
    }
}

}  // namespace host
