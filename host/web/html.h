// Pages of HTML, put together from texts of which none is trusted.
#ifndef PAGERFWD_HOST_WEB_HTML_H
#define PAGERFWD_HOST_WEB_HTML_H

#include <ctime>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// What stands for the text between tags and in the quotes of an attribute: it is shown as it is,
// what isn't printable as on a terminal.
std::string Escaped(std::string_view text);

// A table with its caption and the names of its columns. Cells are HTML already.
std::string HtmlTable(const std::string& caption, const std::vector<std::string>& columns,
                      const std::vector<std::vector<std::string>>& rows);

// "2001-01-08 10:00:00 CET"; "-" where there is none.
std::string HtmlTime(std::time_t instant);

// A whole page. navigation: what stands above its heading, HTML already.
std::string HtmlPage(const std::string& title, const std::string& navigation,
                     const std::string& content);

// How pages look: dark where the browser says so, on a telephone as on a wall.
extern const char* const kStyleSheet;

}  // namespace host

#endif
