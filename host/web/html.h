// Pages of HTML, put together from texts of which none is trusted.
//
// What a function takes as `html` is put in as it is; every other text is escaped where it is put
// in.
#ifndef PAGERFWD_HOST_WEB_HTML_H
#define PAGERFWD_HOST_WEB_HTML_H

#include <ctime>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host {

// What stands for the text between tags and in the quotes of an attribute: it is shown as it is,
// what isn't printable as on a terminal.
std::string Escaped(std::string_view text);

// A text as a part of an address: "duty%20phone".
std::string UrlPart(std::string_view text);
// "/pages?group=OPS&state=waiting", without those that are empty; not escaped yet.
using UrlQuery = std::vector<std::pair<std::string, std::string>>;
std::string Url(const std::string& path, const UrlQuery& query);
std::string LinkTo(const std::string& url, const std::string& text);

// A table with its caption and the names of its columns; cells are HTML. The first cell of a row
// names the row. On a narrow screen a row is a block, and each cell has the name of its column.
std::string HtmlTable(const std::string& caption, const std::vector<std::string>& columns,
                      const std::vector<std::vector<std::string>>& rows);

// Names and what stands for them, which is HTML.
using HtmlFact = std::pair<std::string, std::string>;
std::string HtmlFacts(const std::vector<HtmlFact>& facts);

// How good something is, told by a word, a mark and a colour.
enum class Tone { kGood, kDoubtful, kBad, kPlain };
std::string HtmlState(const std::string& words, Tone tone);

// With the zone's name; "-" where there is none.
std::string HtmlTime(std::time_t instant);

// A whole page. header: what stands above its heading, html; empty: only the program's name.
std::string HtmlPage(const std::string& title, const std::string& header,
                     const std::string& content);

// The part of a page that the script loads again.
std::string Refreshed(const std::string& html);

// --- What pages load.

// How they look: dark where the browser says so, on a telephone as on a wall.
extern const char* const kStyleSheet;
// Loads a part again every five seconds, until it is told not to. Pages need none.
extern const char* const kScript;

}  // namespace host

#endif
