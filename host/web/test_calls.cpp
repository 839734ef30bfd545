// Test pages. Tested by tests/unit/host/web_api_test.cpp.
#include <optional>

#include "host/intake/json_input.h"
#include "host/lines/site_lines.h"
#include "host/site/site_tables.h"
#include "host/store/tables/pagers.h"
#include "host/store/tables/test_pages.h"
#include "host/store/tables/trail.h"
#include "host/web/api_calls.h"

namespace host {
namespace {

// As the tables have it; what the site's letters can't name is none of its names.
std::string CellOf(const char* field, const std::string& name, Encoding encoding) {
    try {
        return Encode(name, encoding);
    } catch (const NotEncodable&) {
        throw BadField(field, "there is none of this name");
    }
}

std::string PagerIn(const ApiCall& call, const Json& object, Encoding encoding) {
    std::string name;
    ReadText(object, "pager", name);
    std::string cell = CellOf("pager", name, encoding);
    if (FindPagers(call.connection, cell).size() != 1) {
        throw BadField("pager", "there is none of this name, or there are several");
    }
    return cell;
}

std::string LineIn(const ApiCall& call, const Json& object, Encoding encoding) {
    std::string name;
    ReadText(object, "line", name);
    std::string cell = CellOf("line", name, encoding);
    if (!cell.empty() && !FindSiteLine(call.connection, cell)) {
        throw BadField("line", "there is none of this name");
    }
    return cell;
}

void NoteTest(const ApiCall& call, const std::string& pager, Encoding encoding) {
    WriteTransaction transaction(call.connection);
    NoteInTrail(call.connection,
                {0, call.now, call.token.name, "test page", "", Decode(pager, encoding)});
    transaction.Commit();
}

}  // namespace

Json AskForTest(const ApiCall& call) {
    const Json object = ParseJson(call.body);
    if (!object.is_object()) {
        throw BadField("", "one object is expected here");
    }
    RefuseOthers(object, {"pager", "line"});
    const Encoding encoding = EncodingOf(call.connection);
    const std::string pager = PagerIn(call, object, encoding);
    const std::string line = LineIn(call, object, encoding);
    NoteTest(call, pager, encoding);
    return {{"test", AskForTestPage(call.connection, call.owners, pager, line)}};
}

Json ShowTest(const ApiCall& call, const std::string& number) {
    const std::optional<TestPageResult> result =
        TestPageAnswer(call.connection, std::stoll(number));
    if (!result) {
        return {{"test", std::stoll(number)}, {"done", false}};
    }
    return {{"test", std::stoll(number)},
            {"done", true},
            {"sent", result->answer == 0},
            {"result", result->answer}};
}

}  // namespace host
