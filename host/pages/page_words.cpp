// The words of a page. Tested by tests/unit/host/page_words_test.cpp.
#include "host/pages/page_words.h"

namespace host {
namespace {

struct Words {
    const char* state;
    const char* end;
};

// One that has no more tries, by the most that any of them has come to.
Words OffLimit(Reached reached) {
    switch (reached) {
        case Reached::kSent:
            return {"unacknowledged", "ended: it was sent, and nobody acknowledged"};
        case Reached::kDialled:
            return {"dialled",
                    "ended: it was dialled, which nothing confirms; nobody acknowledged"};
        case Reached::kOutsideHours:
            return {"outside hours", "ended: it was always outside the pager's hours"};
        case Reached::kNothing:
            return {"undelivered", "given up: its tries are used up, and none got through"};
        case Reached::kUnknown:
            break;
    }
    return {"off limit", "given up: its tries are used up"};
}

// One that its service was to confirm.
Words Done(Reached reached) {
    switch (reached) {
        case Reached::kDialled:
            return {"dialled", "done: it was dialled, which nothing confirms"};
        case Reached::kOutsideHours:
            return {"outside hours", "done: not sent, outside the pager's hours"};
        case Reached::kSent:
        case Reached::kNothing:
        case Reached::kUnknown:
            break;
    }
    return {"done", "done"};
}

Words WordsFor(const PageStory& page) {
    switch (page.end) {
        case PageEnd::kPending:
            return {"pending", "pending"};
        case PageEnd::kDone:
            return Done(page.reached);
        case PageEnd::kOffLimit:
            return OffLimit(page.reached);
        case PageEnd::kAcknowledged:
            return {"acknowledged", "taken out: the alarm was acknowledged"};
        case PageEnd::kDropped:
            break;
    }
    return {"dropped", "dropped: its alarm was no longer being paged"};
}

}  // namespace

const char* StateOf(const PageStory& page) {
    return WordsFor(page).state;
}

const char* EndOf(const PageStory& page) {
    return WordsFor(page).end;
}

}  // namespace host
