// JSON as it comes from outside, taken apart without trust.
//
// Errors     BadField, with the place as its field: "[2].severity", or "" where it is no JSON.
#ifndef PAGERFWD_HOST_INTAKE_JSON_INPUT_H
#define PAGERFWD_HOST_INTAKE_JSON_INPUT_H

#include <string>
#include <string_view>
#include <vector>

#include "host/alarms/incoming.h"
#include "host/text/json.h"

namespace host {

// Brackets within brackets, at most.
inline constexpr int kDeepestJson = 32;
// Alarms in one text, at most.
inline constexpr size_t kMostAtOnce = 1000;

Json ParseJson(std::string_view text);

// An object, or a list of objects, as the objects; empty, or too many, is refused.
std::vector<Json> ObjectsIn(const Json& json);

// A text of an object; what it is not to have is left as it is. `field` may be missing.
void ReadText(const Json& object, const char* field, std::string& text);
// Throws where the object has others than these.
void RefuseOthers(const Json& object, const std::vector<std::string_view>& fields);

// Calls take(index) for each, and puts its place before the field of what it throws.
template <typename Take>
void ForEachOf(size_t count, Take take) {
    for (size_t i = 0; i < count; ++i) {
        try {
            take(i);
        } catch (const BadField& error) {
            throw BadField(
                count == 1 ? error.Field() : "[" + std::to_string(i) + "]." + error.Field(),
                error.what());
        }
    }
}

}  // namespace host

#endif
