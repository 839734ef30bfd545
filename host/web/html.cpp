// HTML. Tested by tests/unit/host/web_pages_test.cpp.
#include "host/web/html.h"

#include <array>

#include "host/text/printable.h"

namespace host {

const char* const kStyleSheet = R"css(:root { color-scheme: light dark; }
body { font: 1rem/1.5 system-ui, sans-serif; margin: 0 auto; max-width: 75rem; padding: 1rem; }
nav { display: flex; flex-wrap: wrap; gap: 1rem; align-items: center; }
.wide { overflow-x: auto; }
table { border-collapse: collapse; width: 100%; margin: 1rem 0; }
caption { font-weight: bold; text-align: left; padding: .25rem 0; }
th, td { border-bottom: 1px solid GrayText; padding: .25rem .5rem; text-align: left; vertical-align: top; overflow-wrap: anywhere; }
form { margin: .5rem 0; }
label { display: block; margin: .5rem 0; }
input, button { font: inherit; min-height: 2rem; max-width: 100%; }
:focus-visible { outline: 3px solid Highlight; outline-offset: 2px; }
)css";

std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char c : Printable(text)) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            case '\'':
                escaped += "&#39;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

std::string HtmlTable(const std::string& caption, const std::vector<std::string>& columns,
                      const std::vector<std::vector<std::string>>& rows) {
    // By the keyboard, too, where it is wider than the screen.
    std::string html = "<div class=\"wide\" role=\"region\" tabindex=\"0\" aria-label=\"" +
                       Escaped(caption) + "\"><table><caption>" + Escaped(caption) +
                       "</caption><thead><tr>";
    for (const std::string& column : columns) {
        html += "<th scope=\"col\">" + Escaped(column) + "</th>";
    }
    html += "</tr></thead><tbody>\n";
    for (const std::vector<std::string>& row : rows) {
        html += "<tr>";
        for (const std::string& cell : row) {
            html += "<td>" + cell + "</td>";
        }
        html += "</tr>\n";
    }
    return html + "</tbody></table></div>\n";
}

std::string HtmlTime(std::time_t instant) {
    std::tm parts{};
    std::array<char, 64> text{};
    if (instant == 0 || localtime_r(&instant, &parts) == nullptr ||
        std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S %Z", &parts) == 0) {
        return "-";
    }
    return Escaped(text.data());
}

std::string HtmlPage(const std::string& title, const std::string& navigation,
                     const std::string& content) {
    return "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">"
           "<title>" +
           Escaped(title) +
           " - PagerFwd</title><link rel=\"stylesheet\" href=\"/style.css\"></head><body>\n"
           "<nav aria-label=\"PagerFwd\">" +
           navigation + "</nav>\n<main><h1>" + Escaped(title) + "</h1>\n" + content +
           "</main></body></html>\n";
}

}  // namespace host
