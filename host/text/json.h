// JSON as this program writes it.
#ifndef PAGERFWD_HOST_TEXT_JSON_H
#define PAGERFWD_HOST_TEXT_JSON_H

#include <nlohmann/json.hpp>
#include <string>

namespace host {

// Keys in the order in which they were set.
using Json = nlohmann::ordered_json;

// In ASCII only, so that nothing in a text can steer a terminal; bytes that aren't UTF-8 become
// U+FFFD.
inline std::string Written(const Json& json) {
    return json.dump(2, ' ', true, Json::error_handler_t::replace);
}
inline std::string WrittenInOneLine(const Json& json) {
    return json.dump(-1, ' ', true, Json::error_handler_t::replace);
}

}  // namespace host

#endif
