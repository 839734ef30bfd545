// Commands as lists of texts in JSON. Tested by tests/unit/host/stored_commands_test.cpp.
#include "host/site/stored_commands.h"

#include <algorithm>

#include "host/store/schema.h"
#include "host/text/json.h"

namespace host {

std::vector<std::string> ReadCommand(Connection& connection, const char* name) {
    const Json words = Json::parse(ReadSetting(connection, name), nullptr, false);
    if (!words.is_array() || !std::all_of(words.begin(), words.end(),
                                          [](const Json& word) { return word.is_string(); })) {
        return {};
    }
    return words.get<std::vector<std::string>>();
}

void StoreCommand(Connection& connection, const char* name, const Command& command) {
    Json words = Json::array();
    for (const SaidText& word : command) {
        words.push_back(word.value);
    }
    WriteSetting(connection, name, WrittenInOneLine(words));
}

}  // namespace host
