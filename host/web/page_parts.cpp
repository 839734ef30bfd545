// The frame of a page. Tested by tests/unit/host/web_pages_test.cpp.
#include "host/web/page_parts.h"

#include <charconv>
#include <cstdlib>

#include "host/text/times.h"

namespace host {
namespace {

struct Way {
    const char* path;
    const char* name;
};
constexpr Way kWays[] = {{"/", "Overview"},          {"/pages", "Pending pages"},
                         {"/failed", "What failed"}, {"/alarms", "Alarms"},
                         {"/hours", "Hours"},        {"/tests", "Tests"},
                         {"/trail", "Trail"}};

std::string Ways(const std::string& here) {
    std::string html = "<nav aria-label=\"Pages\"><ul>";
    for (const Way& way : kWays) {
        html += std::string("<li><a href=\"") + way.path + "\"" +
                (here == way.path ? " aria-current=\"page\"" : "") + ">" + way.name + "</a></li>";
    }
    return html + "</ul></nav>\n";
}

std::string Hidden(const std::string& name, const std::string& value) {
    return "<input type=\"hidden\" name=\"" + Escaped(name) + "\" value=\"" + Escaped(value) +
           "\">";
}

}  // namespace

PageMistake NotFound() {
    return PageMistake(404, "Not found", "There is nothing of this name.");
}

std::string Framed(const PageAsked& asked, const std::string& title, const std::string& content) {
    return HtmlPage(title,
                    "<span class=\"name\">PagerFwd</span>\n" + Ways(asked.target.path) +
                        FormBegin(asked, "/sign-out") + "<span>Signed in as " +
                        Escaped(asked.viewer.token.name) +
                        "</span><button>Sign out</button></form>",
                    content);
}

std::string Shown(const PageAsked& asked, const std::string& text) {
    return Escaped(Decode(text, asked.encoding));
}

std::string FormBegin(const PageAsked& asked, const std::string& action, const UrlQuery& hidden) {
    std::string html = "<form method=\"post\" action=\"" + Escaped(action) + "\">" +
                       Hidden("form", asked.viewer.form);
    for (const auto& [name, value] : hidden) {
        html += Hidden(name, value);
    }
    return html;
}

std::string Option(const std::string& value, const std::string& chosen, const std::string& text) {
    return "<option value=\"" + Escaped(value) + "\"" + (value == chosen ? " selected" : "") + ">" +
           Escaped(text) + "</option>";
}

std::string InAddress(const WebTarget& target, const char* name) {
    const auto found = target.query.find(name);
    return found == target.query.end() ? std::string() : found->second;
}

int64_t NumberInAddress(const WebTarget& target, const char* name, int64_t otherwise) {
    const std::string text = InAddress(target, name);
    int64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc() && read.ptr == end && number > 0 ? number : otherwise;
}

std::string SignInPage(const std::string& mistake) {
    return HtmlPage("Sign in", "",
                    (mistake.empty() ? "" : "<p role=\"alert\">" + Escaped(mistake) + "</p>\n") +
                        std::string("<form method=\"post\" action=\"/sign-in\">"
                                    "<label>Token <input type=\"password\" name=\"token\""
                                    " autocomplete=\"current-password\" required></label>"
                                    "<button>Sign in</button></form>\n"));
}

std::string MistakePage(const std::string& title, const std::string& what) {
    return HtmlPage(title,
                    "<span class=\"name\">PagerFwd</span>\n<nav aria-label=\"Pages\">"
                    "<a href=\"/\">Overview</a></nav>",
                    "<p role=\"alert\">" + Escaped(what) + "</p>\n");
}

}  // namespace host
