// The page about to be on the line. Tested by tests/unit/host/page_on_line_test.cpp.
#include "host/line/page_on_line.h"

#include "host/store/connection.h"

namespace host {

void PageOnLineNotes::Read(std::string_view entry) {
    const std::lock_guard guard(mutex_);
    reader_.Feed(entry);
}

// A test page is nobody's.
const TracedPage* PageOnLineNotes::UnderWay() {
    reader_.Pause();
    const TracedPage* const page = reader_.Current();
    return page == nullptr || page->test || page->pager.empty() ? nullptr : page;
}

void PageOnLineNotes::BeforeOpening() {
    const std::lock_guard guard(mutex_);
    const TracedPage* const page = UnderWay();
    if (page == nullptr && !noted_) {
        return;
    }
    for (;;) {
        try {
            note_(page);
            noted_ = page != nullptr;
            return;
        } catch (const NotOurs&) {
            throw;
        } catch (const StoreError&) {
            pause_();
        }
    }
}

void PageOnLineNotes::Settle() {
    const std::lock_guard guard(mutex_);
    if (noted_ && UnderWay() == nullptr) {
        note_(nullptr);
        noted_ = false;
    }
}

}  // namespace host
