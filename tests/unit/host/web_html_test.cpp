// What pages are put together from.
#include "host/web/html.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/text/markup.h"
#include "host/text/times.h"
#include "tests/support/zone.h"

namespace host {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

TEST(Markup, HasNoTagAndEndsNoAttribute) {
    EXPECT_EQ("&lt;b a=&quot;1&quot; c=&#39;2&#39;&gt;&amp;amp;",
              EscapedMarkup("<b a=\"1\" c='2'>&amp;"));
    EXPECT_EQ("", EscapedMarkup(""));
}

TEST(Html, ShowsWhatSteersATextAsOnATerminal) {
    EXPECT_EQ("a\\x1b[2Jb", Escaped("a\x1b[2Jb"));
    EXPECT_EQ("\\xe2\\x80\\xaeb", Escaped("\xe2\x80\xae"
                                          "b"))
        << "a mark that turns the writing";
    EXPECT_EQ("\\xff&lt;", Escaped("\xff<"));
    EXPECT_EQ("Störung", Escaped("Störung"));
}

TEST(Html, HasAddressesOfAnyText) {
    EXPECT_EQ("/pages", Url("/pages", {{"group", ""}}));
    EXPECT_EQ("/pages?group=a%26b%3D%22%3C&pager=duty%20phone",
              Url("/pages", {{"group", "a&b=\"<"}, {"state", ""}, {"pager", "duty phone"}}));
    EXPECT_EQ("<a href=\"/x?a=1&amp;b=2\">&lt;x&gt;</a>",
              LinkTo(Url("/x", {{"a", "1"}, {"b", "2"}}), "<x>"));
}

TEST(Html, HasTablesWhoseCellsKnowTheirColumns) {
    EXPECT_THAT(HtmlTable("\"Lines\"", {"Line", "<Health>"}, {{"north", "<b>well</b>"}}),
                AllOf(HasSubstr("<caption>&quot;Lines&quot;</caption>"),
                      HasSubstr("role=\"columnheader\">&lt;Health&gt;</th>"),
                      HasSubstr("<th scope=\"row\" role=\"rowheader\" data-label=\"Line\">"
                                "<div>north</div></th>"),
                      HasSubstr("data-label=\"&lt;Health&gt;\"><div><b>well</b></div></td>")));
}

TEST(Html, TellsAStateByAWordToo) {
    EXPECT_EQ("<span class=\"state bad\">sick</span>", HtmlState("sick", Tone::kBad));
    EXPECT_EQ("<span class=\"state good\">well</span>", HtmlState("well", Tone::kGood));
    EXPECT_EQ("<span class=\"state doubtful\">paused</span>", HtmlState("paused", Tone::kDoubtful));
    EXPECT_EQ("<span class=\"state plain\">new</span>", HtmlState("new", Tone::kPlain));
}

TEST(Times, HaveTheNameOfTheirZone) {
    test_support::UseZone("UTC");
    EXPECT_EQ("2001-01-08 10:00:00 UTC", LocalTimeWithZone(978948000));
    EXPECT_EQ("2001-01-08 10:00:00", LocalTime(978948000));
    EXPECT_EQ("-", LocalTimeWithZone(0));
    test_support::UseZone("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ("2001-01-08 11:00:00 CET", LocalTimeWithZone(978948000));
    EXPECT_EQ("2001-07-08 12:00:00 CEST", LocalTimeWithZone(978948000 + 181 * 86400));
}

}  // namespace
}  // namespace host
