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

TEST(Html, HasAddressesOfPlainCharactersOnly) {
    const std::string plain = "-.0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz~";
    EXPECT_EQ(plain, UrlPart(plain));
    for (int byte = 1; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        EXPECT_EQ(plain.find(text) == std::string::npos ? 3U : 1U, UrlPart(text).size()) << byte;
    }
    EXPECT_EQ("%01%2F%3A%C3%BC", UrlPart("\x01/:\u00fc"));
}

TEST(Html, HasTablesOfHeadAndBody) {
    EXPECT_EQ(
        "<table role=\"table\"><caption>Lines</caption><thead role=\"rowgroup\"><tr role=\"row\">"
        "<th scope=\"col\" role=\"columnheader\">Line</th></tr></thead>"
        "<tbody role=\"rowgroup\">\n"
        "<tr role=\"row\"><th scope=\"row\" role=\"rowheader\" data-label=\"Line\">"
        "<div>-</div></th></tr>\n</tbody></table>\n",
        HtmlTable("Lines", {"Line"}, {{""}}));
    EXPECT_EQ("<dl><dt>A &amp; B</dt><dd><b>c</b></dd>\n</dl>\n",
              HtmlFacts({{"A & B", "<b>c</b>"}}));
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
