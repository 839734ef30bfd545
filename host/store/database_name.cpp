// Names of databases. Tested by tests/unit/host/database_name_test.cpp.
#include "host/store/database_name.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>
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

namespace {

bool IsHex(char c) {
    return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

// A key of an address may be spelt so: "%70assword".
std::string Decoded(std::string_view text) {
    std::string decoded;
    for (size_t i = 0; i < text.size(); ++i) {
        const std::string digits(text.substr(i + 1, 2));
        if (text[i] == '%' && digits.size() == 2 && IsHex(digits[0]) && IsHex(digits[1])) {
            decoded += static_cast<char>(std::stoi(digits, nullptr, 16));
            i += 2;
        } else {
            decoded += text[i];
        }
    }
    return decoded;
}

bool IsPassword(std::string_view parameter) {
    const std::string key = Decoded(parameter.substr(0, parameter.find('=')));
    return key == "password" || key == "sslpassword";
}

// The parameters of an address, behind its '?'.
std::string WithoutPasswords(std::string_view parameters) {
    std::string kept;
    while (!parameters.empty()) {
        const std::string_view parameter = parameters.substr(0, parameters.find('&'));
        if (!IsPassword(parameter)) {
            kept += (kept.empty() ? "" : "&") + std::string(parameter);
        }
        parameters.remove_prefix(std::min(parameter.size() + 1, parameters.size()));
    }
    return kept;
}

std::string ShownAddress(const std::string& name) {
    // One with a ? in it ends at the host, too; one with a / is none, but was meant so.
    const std::regex with_password("^(postgres(?:ql)?://[^:@/?]*):(?:[^/]*|[^?]*)@");
    const std::string address = std::regex_replace(name, with_password, "$1@");
    const size_t query = std::min(address.find('?'), address.size());
    const std::string kept =
        WithoutPasswords(std::string_view(address).substr(std::min(query + 1, address.size())));
    return address.substr(0, query) + (kept.empty() ? "" : "?" + kept);
}

}  // namespace

std::string ShownName(const std::string& name) {
    if (!IsOnServer(name)) {
        return name;
    }
    if (name.size() > kLongestDatabaseName) {
        return "postgresql://...";
    }
    if (name.find("://") != std::string::npos) {
        return ShownAddress(name);
    }
    const std::regex in_list(R"(\s*\b(?:ssl)?password\s*=\s*('(?:\\.|[^'\\])*'|(?:\\.|[^\s\\])*))");
    return std::regex_replace(name, in_list, "");
}

bool HasPassword(const std::string& name) {
    return name.size() <= kLongestDatabaseName && ShownName(name) != name;
}

namespace {

using Parameters = std::map<std::string, std::string>;

// "?host=a&dbname=b", and "postgresql://user@host:port/dbname" before it.
Parameters OfAddress(const std::string& address) {
    static const std::regex parts(
        R"(postgres(?:ql)?://(?:([^@/?]*)@)?([^/?]*)(?:/([^?]*))?(?:\?(.*))?)");
    std::smatch found;
    std::regex_match(address, found, parts);
    Parameters parameters = {
        {"user", found[1]}, {"host", found[2]}, {"dbname", Decoded(found[3].str())}};
    static const std::regex parameter("([^=&]*)=([^&]*)");
    const std::string query = found[4];
    for (std::sregex_iterator each(query.begin(), query.end(), parameter), end; each != end;
         ++each) {
        parameters[Decoded((*each)[1].str())] = Decoded((*each)[2].str());
    }
    return parameters;
}

Parameters OfList(const std::string& list) {
    static const std::regex parameter(R"((\w+)\s*=\s*('(?:\\.|[^'\\])*'|(?:\\.|[^\s\\])*))");
    Parameters parameters;
    for (std::sregex_iterator each(list.begin(), list.end(), parameter), end; each != end; ++each) {
        const std::string value = (*each)[2];
        const bool quoted = value.size() > 1 && value.front() == '\'';
        parameters[(*each)[1]] = quoted ? value.substr(1, value.size() - 2) : value;
    }
    return parameters;
}

}  // namespace

// All who use one database have its locks in common, whoever they are to the server.
std::string BesideName(const std::string& name) {
    if (!IsOnServer(name)) {
        return name;
    }
    const std::string shown = ShownName(name);
    Parameters of = shown.find("://") == std::string::npos ? OfList(shown) : OfAddress(shown);
    const std::string& database = of["dbname"].empty() ? of["user"] : of["dbname"];
    std::string file = "postgresql";
    for (const std::string& part :
         {of["service"], of["hostaddr"], of["host"], of["port"], database}) {
        file += part.empty() ? "" : ":" + part;
    }
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
