// The story of one page. Tested by tests/unit/host/history_test.cpp.
#include <algorithm>

#include "host/pages/history.h"
#include "host/store/schema.h"
#include "host/store/tables/states.h"

namespace host {
namespace {

constexpr std::time_t kDelayUnit = 60;
constexpr std::time_t kFirstFailure = 5 * kDelayUnit;

class Teller {
 public:
    Teller(int64_t delay, PageEnd removed) : delay_(delay), removed_(removed) {}

    void Hear(const PageChange& change) {
        if (change.change == kEngineStarts) {
            starts_ = starts_ || IsOf(change.line);
            return;
        }
        story_.line = change.line;
        if (change.change == kRemoved) {
            Removed(change);
        } else if (change.change == kMoved) {
            Moved(change);
        } else if (change.change == kCancelled) {
            End(change, PageEnd::kByHand);
        } else if (change.change != kTakenOut && change.change != kBroughtBack) {
            Written(change);
        }
    }

    PageStory Tell() const { return story_; }

 private:
    void Written(const PageChange& change) {
        if (change.state == kStateBeingPaged) {
            BeingPaged(change);
        } else {
            End(change, change.state == kStateDone       ? PageEnd::kDone
                        : change.state == kStateOffLimit ? PageEnd::kOffLimit
                        : removed_ == PageEnd::kResolved ? PageEnd::kResolved
                                                         : PageEnd::kAcknowledged);
        }
        // The library doesn't count the try that a centre has confirmed.
        story_.tries = change.tries + (change.state == kStateDone ? 1 : 0);
        starts_ = false;
    }

    // Whether an engine of this line, or of none, has the page. One without an owner is anybody's.
    bool IsOf(const std::string& line) const {
        return line.empty() || story_.line.empty() || line == story_.line;
    }

    // The row of a page on the line while its alarm is acknowledged is removed and written again:
    // the library does not queue it anew.
    void BeingPaged(const PageChange& change) {
        const bool goes_on = story_.end == PageEnd::kPending ||
                             story_.end == PageEnd::kAcknowledged ||
                             story_.end == PageEnd::kResolved;
        const bool is_queued = story_.queued == 0 || !goes_on;
        if (is_queued) {
            story_.queued = change.at;
        }
        if (is_queued || starts_) {
            story_.due = change.at;
        } else if (change.tries > story_.tries) {
            story_.due += static_cast<std::time_t>(delay_) * kDelayUnit;
        } else {
            story_.due += kFirstFailure;
        }
        story_.end = PageEnd::kPending;
        story_.ended = 0;
        story_.ended_by = 0;
    }

    // The row that the next line writes is a new page's.
    void Moved(const PageChange& change) {
        story_.tries = 0;
        story_.due = change.at;
        story_.moves.push_back({change.at, change.line, change.note});
        starts_ = true;
    }

    // An ended page's row is only tidied up. One that is owed has been acknowledged, or its alarm
    // is over, or has gone.
    void Removed(const PageChange& change) {
        if (change.state == kStateBeingPaged) {
            End(change, removed_);
        }
    }

    void End(const PageChange& change, PageEnd end) {
        story_.end = end;
        story_.queued = story_.queued == 0 ? change.at : story_.queued;
        story_.note = change.note;
        story_.ended = change.at;
        story_.ended_by = change.row;
    }

    const int64_t delay_;
    const PageEnd removed_;
    bool starts_ = false;
    PageStory story_;
};

}  // namespace

bool IsUndelivered(const PageStory& page) {
    return page.end == PageEnd::kOffLimit && page.reached != Reached::kSent &&
           page.reached != Reached::kDialled;
}

PageStory TellStory(const std::vector<PageChange>& changes, int64_t delay, PageEnd removed) {
    Teller teller(delay, removed);
    for (const PageChange& change : changes) {
        teller.Hear(change);
    }
    return teller.Tell();
}

}  // namespace host
