// Names on the terminal. Tested by tests/unit/host/cli_test.cpp.
#include "host/cli/names.h"

#include "host/text/printable.h"

namespace host {

std::string InTables(std::string_view name, Encoding encoding) {
    try {
        return Encode(name, encoding);
    } catch (const NotEncodable&) {
        return {};
    }
}

std::string Shown(std::string_view text, Encoding encoding) {
    return Printable(Decode(text, encoding));
}

std::string ListNames(const char* kind, const std::vector<std::string>& names, Encoding encoding) {
    if (names.empty()) {
        return "there is none; import a site file first";
    }
    std::string list;
    for (const std::string& name : names) {
        list += (list.empty() ? "" : ", ") + ("\"" + Shown(name, encoding) + "\"");
    }
    return std::string(kind) + " of this database: " + list;
}

}  // namespace host
