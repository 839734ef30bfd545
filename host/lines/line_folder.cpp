// Folders of lines. Tested by tests/unit/host/line_loads_test.cpp.
#include "host/lines/line_folder.h"

#include <filesystem>

#include "host/files/shared_file.h"
#include "host/store/connection.h"
#include "host/store/database_name.h"

namespace host {
namespace {

bool IsPlain(char c, bool first) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || (c == '.' && !first);
}

// One name of a folder for every name of a line, and none that leads elsewhere.
std::string Encoded(const std::string& name) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : name) {
        if (IsPlain(c, encoded.empty())) {
            encoded += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            encoded.append({'%', kDigits[byte / 16], kDigits[byte % 16]});
        }
    }
    return encoded.empty() ? "%" : encoded;
}

std::string FolderOfAll(const std::string& database) {
    return std::filesystem::weakly_canonical(BesideName(database)).string() + "-lines";
}

void MakeFolder(const std::string& folder, const Ownership& ownership) {
    try {
        MakeSharedFolder(folder, ownership);
    } catch (const FileError& error) {
        throw StoreError(folder + ": the folder can't be used: " + error.what());
    }
}

}  // namespace

std::string LineFolder(const std::string& database, const std::string& line) {
    return FolderOfAll(database) + "/" + Encoded(line);
}

std::string MakeLineFolder(const std::string& database, const std::string& line) {
    try {
        const Ownership ownership = OwnershipOf(BesideOwner(database));
        MakeFolder(FolderOfAll(database), ownership);
        std::string folder = LineFolder(database, line);
        MakeFolder(folder, ownership);
        return folder;
    } catch (const FileError& error) {
        throw StoreError(BesideOwner(database) + ": " + error.what());
    }
}

}  // namespace host
