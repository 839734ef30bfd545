// HTML. Tested by tests/unit/host/web_html_test.cpp.
#include "host/web/html.h"

#include "host/text/markup.h"
#include "host/text/printable.h"
#include "host/text/times.h"

namespace host {
namespace {

bool IsPlain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == '.' || c == '~';
}

// A table that is shown as blocks is one all the same to whoever has it read aloud: by its roles.
std::string Row(const std::vector<std::string>& columns, const std::vector<std::string>& cells) {
    std::string html = "<tr role=\"row\">";
    for (size_t i = 0; i < cells.size(); ++i) {
        const std::string cell = "<div>" + (cells[i].empty() ? "-" : cells[i]) + "</div>";
        const std::string label = " data-label=\"" + Escaped(columns.at(i)) + "\">";
        html += i == 0 ? "<th scope=\"row\" role=\"rowheader\"" : "<td role=\"cell\"";
        html.append(label).append(cell).append(i == 0 ? "</th>" : "</td>");
    }
    return html + "</tr>\n";
}

const char* ClassOf(Tone tone) {
    switch (tone) {
        case Tone::kGood:
            return "good";
        case Tone::kDoubtful:
            return "doubtful";
        case Tone::kBad:
            return "bad";
        case Tone::kPlain:
            break;
    }
    return "plain";
}

}  // namespace

std::string Escaped(std::string_view text) {
    return EscapedMarkup(Printable(text));
}

std::string UrlPart(std::string_view text) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    std::string part;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        part += IsPlain(c) ? std::string(1, c)
                           : std::string{'%', kDigits[byte / 16], kDigits[byte % 16]};
    }
    return part;
}

std::string Url(const std::string& path, const UrlQuery& query) {
    std::string url = path;
    char before = '?';
    for (const auto& [name, value] : query) {
        if (!value.empty()) {
            url += before + name + "=" + UrlPart(value);
            before = '&';
        }
    }
    return url;
}

std::string LinkTo(const std::string& url, const std::string& text) {
    return "<a href=\"" + Escaped(url) + "\">" + Escaped(text) + "</a>";
}

std::string HtmlTable(const std::string& caption, const std::vector<std::string>& columns,
                      const std::vector<std::vector<std::string>>& rows) {
    std::string html = "<table role=\"table\"><caption>" + Escaped(caption) +
                       "</caption><thead role=\"rowgroup\"><tr role=\"row\">";
    for (const std::string& column : columns) {
        html += R"(<th scope="col" role="columnheader">)" + Escaped(column) + "</th>";
    }
    html += "</tr></thead><tbody role=\"rowgroup\">\n";
    for (const std::vector<std::string>& row : rows) {
        html += Row(columns, row);
    }
    return html + "</tbody></table>\n";
}

std::string HtmlFacts(const std::vector<HtmlFact>& facts) {
    std::string html = "<dl>";
    for (const auto& [name, value] : facts) {
        html += "<dt>" + Escaped(name) + "</dt><dd>" + value + "</dd>\n";
    }
    return html + "</dl>\n";
}

std::string HtmlState(const std::string& words, Tone tone) {
    return std::string("<span class=\"state ") + ClassOf(tone) + "\">" + Escaped(words) + "</span>";
}

std::string HtmlTime(std::time_t instant) {
    return "<span class=\"time\">" + Escaped(LocalTimeWithZone(instant)) + "</span>";
}

std::string HtmlPage(const std::string& title, const std::string& header,
                     const std::string& content) {
    return "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">"
           "<title>" +
           Escaped(title) +
           " - PagerFwd</title><link rel=\"stylesheet\" href=\"/style.css\">"
           "<script src=\"/page.js\" defer></script></head><body>\n"
           "<a class=\"skip\" href=\"#main\">Skip to the content</a>\n<header>" +
           (header.empty() ? "<span class=\"name\">PagerFwd</span>" : header) +
           "</header>\n<main id=\"main\" tabindex=\"-1\"><h1>" + Escaped(title) + "</h1>\n" +
           content + "</main></body></html>\n";
}

std::string Refreshed(const std::string& html) {
    return "<div id=\"refreshed\">\n" + html + "</div>\n";
}

}  // namespace host
