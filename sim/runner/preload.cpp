// Finding the preload. Tested by tests/unit/sim/pagersim_test.cpp.
#include "sim/runner/preload.h"

#include <link.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string_view>
#include <system_error>

namespace pagersim {
namespace {

constexpr const char* kName = "libpagersim-preload.so";

std::string OwnFolder() {
    std::array<char, PATH_MAX> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    const std::string_view own(path.data(), length < 0 ? 0 : static_cast<std::size_t>(length));
    return std::string(own.substr(0, own.rfind('/')));
}

bool IsReadable(const std::string& path) {
    return access(path.c_str(), R_OK) == 0;
}

bool IsSanitizer(std::string_view path) {
    const std::string_view name = path.substr(path.rfind('/') + 1);
    return name.substr(0, 7) == "libasan" || name.substr(0, 7) == "libtsan";
}

int KeepSanitizer(dl_phdr_info* object, std::size_t, void* kept) {
    const std::string_view path = object->dlpi_name;
    if (!IsSanitizer(path)) {
        return 0;
    }
    *static_cast<std::string*>(kept) = path;
    return 1;
}

std::string OwnSanitizer() {
    std::string path;
    dl_iterate_phdr(KeepSanitizer, &path);
    return path;
}

void AppendTo(std::string& list, std::string_view library) {
    if (!list.empty() && !library.empty()) {
        list += ':';
    }
    list += library;
}

}  // namespace

std::optional<std::string> FindPreload() {
    const char* const named = std::getenv("PAGERSIM_PRELOAD");
    if (named != nullptr) {
        return IsReadable(named) ? std::optional<std::string>(named) : std::nullopt;
    }
    const std::string folder = OwnFolder();
    for (const char* const place : {"/", "/../lib/", "/../" PAGERSIM_LIBRARY_FOLDER "/"}) {
        const std::string path = folder + place + kName;
        if (IsReadable(path)) {
            return path;
        }
    }
    return std::nullopt;
}

std::string PreloadList(const std::string& preload, const std::string& link) {
    std::string path = preload;
    if (path.find_first_of(" :") != std::string::npos) {
        if (symlink(preload.c_str(), link.c_str()) != 0) {
            throw std::system_error(errno, std::generic_category(), link);
        }
        path = link;
    }
    std::string list = OwnSanitizer();
    AppendTo(list, path);
    const char* const already = std::getenv("LD_PRELOAD");
    AppendTo(list, already == nullptr ? "" : already);
    return list;
}

}  // namespace pagersim
