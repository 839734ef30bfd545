// Markup. Tested by tests/unit/host/web_html_test.cpp and trace_view_test.cpp.
#include "host/text/markup.h"

namespace host {

std::string EscapedMarkup(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
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

}  // namespace host
