// The document of the API: that it says what the API does, and nothing that its readers don't know.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "tests/unit/host/api_fixture.h"

namespace host {
namespace {

using ::testing::HasSubstr;

class TheDocument : public ApiTest {
 protected:
    TheDocument() {
        AddPager("duty");
        AddAlarm("978948000");
        WriteEvent(978948000, "duty", 2);
        Execute("INSERT INTO AlarmFwd_COMProperties (Description) VALUES ('north')");
        Execute("INSERT INTO Host_Nodes (node, place, holder) VALUES ('east', 0, 'web1')");
    }

    // As one who may all, and whom nobody knows yet.
    WebAnswer AskAsAnother(const std::string& method, const std::string& target,
                           const std::string& body) {
        token = TokenOf("another " + std::to_string(++others), "manage");
        return Ask(method, target, body);
    }

    const nlohmann::json document = nlohmann::json::parse(kOpenApi);
    int others = 0;
};

// Also of a document in its own order.
template <typename Document>
Document Resolved(const Document& document, const Document& part) {
    return part.contains("$ref") ? document.at(typename Document::json_pointer(
                                       part["$ref"].template get<std::string>().substr(1)))
                                 : part;
}

struct Call {
    std::string method;
    std::string target;  // with the examples of its parameters
    nlohmann::json operation;
    std::vector<std::string> bodies;  // one without any, where none is taken
};

std::string TargetOf(const nlohmann::json& document, std::string path,
                     const nlohmann::json& operation) {
    std::string query;
    for (const nlohmann::json& reference : operation.value("parameters", nlohmann::json::array())) {
        const nlohmann::json parameter = Resolved(document, reference);
        const std::string name = parameter["name"];
        const std::string example = parameter["example"].dump();
        if (parameter["in"] == "path") {
            path.replace(path.find("{" + name + "}"), name.size() + 2, example);
        } else {
            EXPECT_EQ("query", parameter["in"]);
            query += (query.empty() ? "?" : "&") + name + "=" + example;
        }
    }
    return path + query;
}

std::vector<Call> CallsOf(const nlohmann::json& document) {
    std::vector<Call> calls;
    for (const auto& [path, operations] : document["paths"].items()) {
        for (const auto& [method, operation] : operations.items()) {
            Call call{method == "get" ? "GET" : "POST",
                      TargetOf(document, path, operation),
                      operation,
                      {}};
            if (method == "get") {
                call.bodies.emplace_back();
            } else {
                const auto& content = operation["requestBody"]["content"]["application/json"];
                for (const auto& [name, example] : content["examples"].items()) {
                    call.bodies.push_back(example["value"].dump());
                }
            }
            calls.push_back(call);
        }
    }
    return calls;
}

// --- What is promised.

bool IsA(const std::string& type, const nlohmann::json& value) {
    return type == "object"    ? value.is_object()
           : type == "array"   ? value.is_array()
           : type == "string"  ? value.is_string()
           : type == "integer" ? value.is_number_integer()
                               : type == "boolean" && value.is_boolean();
}

// Where a value isn't what a schema says; empty: it is.
std::string BreachIn(const nlohmann::json& document, const nlohmann::json& reference,
                     const nlohmann::json& value, const std::string& place) {
    const nlohmann::json schema = Resolved(document, reference);
    if (schema.contains("oneOf")) {
        return BreachIn(document, schema["oneOf"][value.is_array() ? 1 : 0], value, place);
    }
    if (value.is_null() && schema.value("nullable", false)) {
        return "";
    }
    if (!IsA(schema["type"], value)) {
        return place + " is " + value.dump();
    }
    std::string breach;
    if (value.is_array()) {
        for (size_t i = 0; i < value.size() && breach.empty(); ++i) {
            breach = BreachIn(document, schema["items"], value[i],
                              place + "[" + std::to_string(i) + "]");
        }
    } else if (value.is_object() && schema.contains("properties")) {
        for (const auto& [name, field] : value.items()) {
            breach +=
                !schema["properties"].contains(name)
                    ? place + " has " + name
                    : BreachIn(document, schema["properties"][name], field, place + "." + name);
        }
    }
    return breach;
}

TEST_F(TheDocument, HasExamplesThatAreAnsweredAsItSays) {
    const std::vector<Call> calls = CallsOf(document);
    EXPECT_EQ(12U, calls.size());
    for (const Call& call : calls) {
        const nlohmann::json& schema =
            call.operation["responses"]["200"]["content"]["application/json"]["schema"];
        for (const std::string& body : call.bodies) {
            Execute("DELETE FROM AlarmLog");
            AddAlarm("978948000");
            const WebAnswer answer = AskAsAnother(call.method, call.target, body);
            EXPECT_EQ(200, answer.status) << call.target << " " << body;
            EXPECT_EQ("", BreachIn(document, schema, nlohmann::json::parse(answer.body), "answer"))
                << call.target << ": " << answer.body;
        }
    }
}

TEST_F(TheDocument, HasExamplesOfWhatItSaysIsTaken) {
    for (const Call& call : CallsOf(document)) {
        for (const std::string& body : call.bodies) {
            if (!body.empty()) {
                const nlohmann::json& schema =
                    call.operation["requestBody"]["content"]["application/json"]["schema"];
                EXPECT_EQ("", BreachIn(document, schema, nlohmann::json::parse(body), "example"))
                    << call.target;
            }
        }
    }
}

TEST_F(TheDocument, SaysOfWhichBodiesNoFurtherFieldIsTaken) {
    for (const Call& call : CallsOf(document)) {
        for (const std::string& example : call.bodies) {
            nlohmann::json body = nlohmann::json::parse(example, nullptr, false);
            if (!body.is_object()) {
                continue;
            }
            nlohmann::json schema = Resolved(
                document, call.operation["requestBody"]["content"]["application/json"]["schema"]);
            if (schema.contains("oneOf")) {
                schema = Resolved(document, schema["oneOf"][0]);
            }
            body["further"] = "x";
            const int status = AskAsAnother(call.method, call.target, body.dump()).status;
            EXPECT_EQ(schema.value("additionalProperties", true) ? 200 : 400, status)
                << call.target << " " << body;
        }
    }
}

// Each status with what is said of it.
TEST_F(TheDocument, NamesEveryAnswerOfACall) {
    const std::map<std::string, std::string> known = {
        {"400", "Mistake"},  {"401", "NoToken"}, {"403", "NoRight"}, {"404", "Mistake"},
        {"413", "TooLarge"}, {"429", "TooMany"}, {"503", "Away"}};
    for (const Call& call : CallsOf(document)) {
        std::set<std::string> given = {"200", "429", "503"};  // of the server, and without database
        const auto ask = [&](const std::string& target, const std::string& as) {
            token = as;
            given.insert(std::to_string(Ask(call.method, target, call.bodies[0]).status));
        };
        ask(call.target + "?%", token);
        ask(call.target, "");
        ask(call.target, TokenOf("idle " + std::to_string(++others), ""));
        const bool has_number = std::isdigit(call.target.back()) != 0;
        ask(call.target + (has_number ? "7" : ""), TokenOf("", "manage"));
        Execute("DELETE FROM Host_Tokens WHERE name = ''");
        if (call.method == "POST") {
            given.insert("413");
        }
        std::set<std::string> named;
        for (const auto& [status, answer] : call.operation["responses"].items()) {
            named.insert(status);
            if (status != "200") {
                EXPECT_EQ("#/components/responses/" + known.at(status), answer["$ref"]);
            }
        }
        EXPECT_EQ(given, named) << call.method << " " << call.target;
    }
}

TEST_F(TheDocument, AsksForTheTokenThatEveryCallNeeds) {
    EXPECT_EQ(R"([{"token":[]}])", document["security"].dump());
    EXPECT_EQ(R"({"token":{"scheme":"bearer","type":"http"}})",
              document["components"]["securitySchemes"].dump());
}

// The fields of a message are known from the monitor's own description of its webhook.
TEST_F(TheDocument, ShowsAMessageOfAlertmanagerAsItComes) {
    const nlohmann::json message =
        document["paths"]["/api/v1/alertmanager"]["post"]["requestBody"]["content"]
                ["application/json"]["examples"]["group"]["value"];
    std::set<std::string> fields;
    for (const auto& [name, field] : message.items()) {
        fields.insert(name);
    }
    EXPECT_EQ((std::set<std::string>{"alerts", "commonAnnotations", "commonLabels", "externalURL",
                                     "groupKey", "groupLabels", "receiver", "status",
                                     "truncatedAlerts", "version"}),
              fields);
    for (const nlohmann::json& alert : message["alerts"]) {
        EXPECT_TRUE(alert["status"] == "firing" || alert["status"] == "resolved");
        fields.clear();
        for (const auto& [name, field] : alert.items()) {
            fields.insert(name);
        }
        EXPECT_EQ((std::set<std::string>{"annotations", "endsAt", "fingerprint", "generatorURL",
                                         "labels", "startsAt", "status"}),
                  fields);
    }
}

// --- What its readers know.

// What each kind of part may have, and of which kind that is: {} of any name, [] a list.
const std::map<std::string, std::map<std::string, std::string>> kKinds = {
    {"document",
     {{"openapi", "value"},
      {"info", "info"},
      {"security", "value"},
      {"paths", "{}path"},
      {"components", "components"}}},
    {"info", {{"title", "text"}, {"version", "value"}, {"description", "text"}}},
    {"components",
     {{"securitySchemes", "value"},
      {"parameters", "{}parameter"},
      {"schemas", "{}schema"},
      {"responses", "{}response"}}},
    {"path", {{"get", "call"}, {"post", "call"}}},
    {"call",
     {{"summary", "text"},
      {"description", "text"},
      {"parameters", "[]parameter"},
      {"requestBody", "body"},
      {"responses", "{}response"}}},
    {"parameter",
     {{"$ref", "value"},
      {"name", "value"},
      {"in", "value"},
      {"required", "value"},
      {"description", "text"},
      {"schema", "schema"},
      {"example", "value"}}},
    {"body", {{"required", "value"}, {"content", "content"}}},
    {"response", {{"$ref", "value"}, {"description", "text"}, {"content", "content"}}},
    {"content", {{"application/json", "media"}}},
    {"media", {{"schema", "schema"}, {"examples", "{}example"}}},
    {"example", {{"value", "value"}}},
    {"schema",
     {{"$ref", "value"},
      {"type", "type"},
      {"format", "format"},
      {"description", "text"},
      {"nullable", "value"},
      {"required", "value"},
      {"properties", "{}schema"},
      {"additionalProperties", "value"},
      {"items", "schema"},
      {"oneOf", "[]schema"},
      {"enum", "value"},
      {"default", "value"},
      {"minimum", "value"},
      {"maximum", "value"},
      {"maxLength", "value"},
      {"maxItems", "value"}}},
};

bool IsOneOf(const std::set<std::string>& known, const nlohmann::json& value) {
    return known.count(value.get<std::string>()) == 1;
}

void ExpectKnown(const nlohmann::json& part, const std::string& kind, const std::string& place) {
    if (kind == "text") {
        EXPECT_NE(0, std::isalpha(part.get<std::string>()[0])) << place;
    } else if (kind == "type") {
        EXPECT_TRUE(IsOneOf({"object", "array", "string", "integer", "boolean"}, part)) << place;
    } else if (kind == "format") {
        EXPECT_TRUE(IsOneOf({"date-time"}, part)) << place;
    } else if (kind != "value") {
        const bool any_name = kind[0] == '{' || kind[0] == '[';
        for (const auto& [name, field] : part.items()) {
            const auto& known = kKinds.at(any_name ? "document" : kind);
            ASSERT_TRUE(any_name || known.count(name) == 1) << place << "/" << name;
            ExpectKnown(field, any_name ? kind.substr(2) : known.at(name), place + "/" + name);
        }
    }
}

TEST_F(TheDocument, HasNothingThatItsStandardLacks) {
    EXPECT_EQ("3.0.3", document["openapi"]);
    ExpectKnown(document, "document", "");
}

// "`alarm`, `new`": what an object of this kind has, or each of a list.
std::string FieldsOf(const nlohmann::ordered_json& document, const nlohmann::ordered_json& schema) {
    const nlohmann::ordered_json part = Resolved(document, schema);
    if (part.contains("oneOf") || part.contains("items")) {
        return FieldsOf(document, part.contains("oneOf") ? part["oneOf"][0] : part["items"]);
    }
    const nlohmann::ordered_json properties =
        part.value("properties", nlohmann::ordered_json::object());
    std::string fields;
    for (const auto& [name, value] : properties.items()) {
        fields += (fields.empty() ? "`" : ", `") + name + "`";
    }
    return fields.empty() ? "-" : fields;
}

std::string ContentOf(const nlohmann::ordered_json& document,
                      const nlohmann::ordered_json& message) {
    return FieldsOf(document, message["content"]["application/json"]["schema"]);
}

std::string RowOf(const nlohmann::ordered_json& document, const std::string& call,
                  const nlohmann::ordered_json& operation) {
    const std::string description = operation["description"];
    const std::string before = "Right: ";
    const size_t at = description.find(before) + before.size();
    return "| `" + call + "` | `" + description.substr(at, description.find('.', at) - at) +
           "` | " + operation["summary"].get<std::string>() + " | " +
           (operation.contains("requestBody") ? ContentOf(document, operation["requestBody"])
                                              : "-") +
           " | " + ContentOf(document, operation["responses"]["200"]) + " |\n";
}

TEST_F(TheDocument, IsInTheGuide) {
    const nlohmann::ordered_json ordered = nlohmann::ordered_json::parse(kOpenApi);
    std::string calls;
    for (const auto& [path, operations] : ordered["paths"].items()) {
        for (const auto& [method, operation] : operations.items()) {
            calls += RowOf(ordered, (method == "get" ? "GET " : "POST ") + path, operation);
        }
    }
    std::string objects;
    for (const auto& [name, schema] : ordered["components"]["schemas"].items()) {
        objects += "| " + name + " | " + FieldsOf(ordered, schema) + " |\n";
    }
    std::ifstream file(API_GUIDE);
    const std::string guide{std::istreambuf_iterator<char>(file), {}};
    EXPECT_THAT(guide, HasSubstr("\n" + calls + "\n"));
    EXPECT_THAT(guide, HasSubstr("\n" + objects + "\n"));
}

TEST_F(TheDocument, HasReferencesThatLeadSomewhere) {
    int references = 0;
    const nlohmann::json flat = document.flatten();
    for (const auto& [pointer, value] : flat.items()) {
        const std::string name = pointer.substr(pointer.rfind('/') + 1);
        if (name == "$ref") {
            const std::string to = value.get<std::string>().substr(1);
            EXPECT_EQ("#" + to, value);
            EXPECT_TRUE(document.contains(nlohmann::json::json_pointer(to))) << to;
            ++references;
        }
    }
    EXPECT_GT(references, 20);
}

}  // namespace
}  // namespace host
