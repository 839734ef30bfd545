// A page's state and end in words.
#include "host/pages/page_words.h"

#include <gtest/gtest.h>

#include <string>

namespace host {
namespace {

struct Case {
    PageEnd end;
    Reached reached;
    const char* state;
    const char* words;  // that its end's text holds
};

TEST(PageWords, TellTheKindsOfAnEndApart) {
    const Case cases[] = {
        {PageEnd::kPending, Reached::kUnknown, "pending", "pending"},
        {PageEnd::kDone, Reached::kSent, "done", "done"},
        {PageEnd::kDone, Reached::kUnknown, "done", "done"},
        {PageEnd::kDone, Reached::kDialled, "dialled", "nothing confirms"},
        {PageEnd::kDone, Reached::kOutsideHours, "outside hours", "not sent"},
        {PageEnd::kOffLimit, Reached::kNothing, "undelivered", "none got through"},
        {PageEnd::kOffLimit, Reached::kSent, "unacknowledged", "nobody acknowledged"},
        {PageEnd::kOffLimit, Reached::kDialled, "dialled", "nothing confirms"},
        {PageEnd::kOffLimit, Reached::kOutsideHours, "outside hours", "outside the pager's hours"},
        {PageEnd::kOffLimit, Reached::kUnknown, "off limit", "tries are used up"},
        {PageEnd::kAcknowledged, Reached::kSent, "acknowledged", "was acknowledged"},
        {PageEnd::kByHand, Reached::kUnknown, "cancelled", "by hand"},
        {PageEnd::kDropped, Reached::kSent, "dropped", "no longer being paged"},
    };
    for (const Case& wanted : cases) {
        PageStory page;
        page.end = wanted.end;
        page.reached = wanted.reached;
        EXPECT_STREQ(wanted.state, StateOf(page));
        EXPECT_NE(std::string::npos, std::string(EndOf(page)).find(wanted.words)) << EndOf(page);
    }
}

TEST(PageWords, TellAPageThatWaitsForALine) {
    PageStory page;
    page.waits = true;
    EXPECT_STREQ("waiting", StateOf(page));
}

}  // namespace
}  // namespace host
