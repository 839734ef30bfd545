// Tests of pagers and lines: asked for, and what came of them. Tested by
// tests/unit/host/web_changes_test.cpp.
#include <optional>

#include "host/status/test_results.h"
#include "host/store/tables/lines.h"
#include "host/store/tables/pagers.h"
#include "host/store/tables/test_pages.h"
#include "host/web/page_parts.h"
#include "host/web/token.h"

namespace host {
namespace {

std::string Options(const PageAsked& asked, const std::vector<std::string>& names) {
    std::string html;
    for (const std::string& name : names) {
        const std::string text = Decode(name, asked.encoding);
        html += Option(text, "", text);
    }
    return html;
}

std::string PagerForm(const PageAsked& asked, const std::string& lines) {
    return FormBegin(asked, "/test-page") +
           "<fieldset><legend>Send a test page</legend><p>It leaves at once, whatever the pager's "
           "hours are.</p><label>Pager <select name=\"pager\" required>" +
           Options(asked, PagerNames(asked.connection)) +
           "</select></label><label>Line <select name=\"line\"><option value=\"\">any that its "
           "pages may go by</option>" +
           lines + "</select></label><button>Send</button></fieldset></form>\n";
}

std::string LineForm(const PageAsked& asked, const std::string& lines) {
    return FormBegin(asked, "/test-call") +
           "<fieldset><legend>Try a line</legend><p>It dials a number, and hangs up when it is "
           "answered. Nobody is paged.</p><label>Line <select name=\"line\" required>" +
           lines +
           "</select></label><label>Number, whole, with the digit for an outside line <input "
           "name=\"number\" inputmode=\"tel\" required maxlength=\"60\"></label><button>Dial"
           "</button></fieldset></form>\n";
}

// In the words of `pagerfwd test` and `line test`.
std::string Came(const PageAsked& asked, const TestPageResult& result) {
    const Tone tone = result.answer == 0 ? Tone::kGood : Tone::kBad;
    if (!result.said.empty()) {
        return HtmlState((result.answer == 0 ? "connected, and hung up: " : "not connected: ") +
                             Decode(result.said, asked.encoding),
                         tone);
    }
    const TestResult* const meaning = FindTestResult(result.answer, false);
    const std::string number = "result " + std::to_string(result.answer);
    return meaning == nullptr
               ? HtmlState("not sent: " + number, Tone::kBad)
               : HtmlState(meaning->meaning, tone) +
                     (result.answer == 0 ? "" : " (" + number + ")<br>" + Escaped(meaning->remedy));
}

}  // namespace

std::string TestsPage(const PageAsked& asked) {
    if (!May(asked.viewer.token, kMayManage)) {
        return Framed(asked, "Tests", "<p>Your token is not good for this.</p>\n");
    }
    const std::string lines = Options(asked, LineNames(asked.connection));
    return Framed(asked, "Tests",
                  "<p>The running engine does it, behind the page that is on the line.</p>\n" +
                      PagerForm(asked, lines) + LineForm(asked, lines));
}

std::string TestPage(const PageAsked& asked) {
    const int64_t number = NumberInAddress(asked.target, "number", 0);
    if (!IsTestAskedFor(asked.connection, number)) {
        throw PageMistake(404, "Not found",
                          "Nobody has asked for this test, or this page was served anew since: ask "
                          "for another one.");
    }
    const std::optional<TestPageResult> result = TestPageAnswer(asked.connection, number);
    return Framed(asked, "Test " + std::to_string(number),
                  Refreshed("<p role=\"status\">" +
                            (result ? Came(asked, *result)
                                    : "Not done yet. A page, or a call, takes up to some minutes; "
                                      "without an engine that runs, nobody does it.") +
                            "</p>\n") +
                      "<p class=\"more\">" + LinkTo("/tests", "Another test") + "</p>\n");
}

}  // namespace host
