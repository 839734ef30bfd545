// Names of databases. Tested by tests/unit/host/database_name_test.cpp.
#include "host/store/database_name.h"

#include <cstdlib>
#include <regex>

namespace host {

bool IsOnServer(std::string_view name) {
    for (const std::string_view begin : {"postgresql://", "postgres://"}) {
        if (name.substr(0, begin.size()) == begin) {
            return true;
        }
    }
    // A path that begins so is written "./host=…".
    const std::string_view word = name.substr(0, name.find_first_of("= "));
    for (const std::string_view known : {"host", "hostaddr", "port", "dbname", "user", "service",
                                         "password", "passfile", "sslmode"}) {
        if (word == known && word.size() < name.size()) {
            return true;
        }
    }
    return false;
}

std::string ShownName(const std::string& name) {
    if (!IsOnServer(name)) {
        return name;
    }
    // One with a ? in it ends at the host, too; one with a / is none, but was meant so.
    const std::regex in_address("^(postgres(?:ql)?://[^:@/?]*):(?:[^/]*|[^?]*)@");
    const std::regex in_query("([?&])(?:ssl)?password=[^&]*&?");
    const std::regex in_list(R"(\s*\b(?:ssl)?password\s*=\s*('(?:\\.|[^'\\])*'|(?:\\.|[^\s\\])*))");
    if (name.find("://") == std::string::npos) {
        return std::regex_replace(name, in_list, "");
    }
    return std::regex_replace(std::regex_replace(name, in_address, "$1@"), in_query, "$1");
}

std::string BesideName(const std::string& name) {
    if (!IsOnServer(name)) {
        return name;
    }
    std::string file = ShownName(name);
    for (char& c : file) {
        c = c == '/' || c == ' ' ? '_' : c;
    }
    return BesideOwner(name) + "/" + file;
}

std::string BesideOwner(const std::string& name) {
    if (!IsOnServer(name)) {
        return name;
    }
    const char* const folder = std::getenv("PAGERFWD_STATE");
    return folder == nullptr || *folder == '\0' ? "/var/lib/pagerfwd" : folder;
}

}  // namespace host
