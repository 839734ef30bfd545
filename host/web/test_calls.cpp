// Calls for test pages. Tested by tests/unit/host/web_look_test.cpp.
#include <optional>

#include "host/intake/json_input.h"
#include "host/store/tables/test_pages.h"
#include "host/web/api_calls.h"
#include "host/web/test_asking.h"

namespace host {

Json AskForTest(const ApiCall& call) {
    const Json object = ParseJson(call.body);
    if (!object.is_object()) {
        throw BadField("", "one object is expected here");
    }
    RefuseOthers(object, {"pager", "line"});
    std::string pager;
    std::string line;
    ReadText(object, "pager", pager);
    ReadText(object, "line", line);
    return {{"test",
             AskForTestPageBy({call.connection, call.owners, call.token, call.now}, pager, line)}};
}

Json ShowTest(const ApiCall& call, const std::string& number) {
    const int64_t test = std::stoll(number);
    if (!IsTestAskedFor(call.connection, test)) {
        throw ApiError(404, "nobody has asked for this test, or who did has ended since");
    }
    const std::optional<TestPageResult> result = TestPageAnswer(call.connection, test);
    if (!result) {
        return {{"test", test}, {"done", false}};
    }
    return {
        {"test", test}, {"done", true}, {"sent", result->answer == 0}, {"result", result->answer}};
}

}  // namespace host
