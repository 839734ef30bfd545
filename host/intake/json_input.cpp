// JSON from outside. Tested by tests/unit/host/alarm_json_test.cpp, tests/fuzz/alarm_json.cpp.
#include "host/intake/json_input.h"

#include <algorithm>

namespace host {
namespace {

// The parser makes a value within a value for each bracket, whatever stands in it.
bool IsTooDeep(std::string_view text) {
    int depth = 0;
    bool in_text = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (in_text && c == '\\') {
            ++i;
        } else if (c == '"') {
            in_text = !in_text;
        } else if (!in_text && (c == '[' || c == '{')) {
            if (++depth > kDeepestJson) {
                return true;
            }
        } else if (!in_text && (c == ']' || c == '}')) {
            --depth;
        }
    }
    return false;
}

std::string KindOf(const Json& json) {
    return json.is_string()    ? "a text"
           : json.is_number()  ? "a number"
           : json.is_boolean() ? "true or false"
           : json.is_array()   ? "a list"
           : json.is_object()  ? "an object"
                               : "null";
}

}  // namespace

Json ParseJson(std::string_view text) {
    if (IsTooDeep(text)) {
        throw BadField(
            "", "more than " + std::to_string(kDeepestJson) + " brackets stand within each other");
    }
    try {
        return Json::parse(text);
    } catch (const Json::parse_error& error) {
        throw BadField("", "this is no JSON: it can't be read from byte " +
                               std::to_string(error.byte) + " on");
    } catch (const Json::exception&) {
        throw BadField("", "this is no JSON: a number in it is too large");
    }
}

std::vector<Json> ObjectsIn(const Json& json) {
    std::vector<Json> objects;
    if (json.is_array()) {
        objects.assign(json.begin(), json.end());
    } else {
        objects.push_back(json);
    }
    if (objects.empty()) {
        throw BadField("", "the list is empty");
    }
    if (objects.size() > kMostAtOnce) {
        throw BadField("", "more than " + std::to_string(kMostAtOnce) + " at once");
    }
    ForEachOf(objects.size(), [&objects](size_t i) {
        if (!objects[i].is_object()) {
            throw BadField("", "an object is expected here, and this is " + KindOf(objects[i]));
        }
    });
    return objects;
}

void ReadText(const Json& object, const char* field, std::string& text) {
    const auto found = object.find(field);
    if (found == object.end()) {
        return;
    }
    if (!found->is_string()) {
        throw BadField(field, "a text is expected here, and this is " + KindOf(*found));
    }
    text = found->get<std::string>();
}

void RefuseOthers(const Json& object, const std::vector<std::string_view>& fields) {
    for (const auto& [name, value] : object.items()) {
        if (std::find(fields.begin(), fields.end(), name) == fields.end()) {
            std::string known;
            for (const std::string_view field : fields) {
                known += (known.empty() ? "" : ", ") + std::string(field);
            }
            throw BadField(name, "there is no such field; there are " + known);
        }
    }
}

}  // namespace host
