// Finding the preload. Tested by tests/unit/sim/pagersim_test.cpp.
#include "sim/runner/preload.h"

#include <link.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string_view>

#include "sim/runner/program_file.h"

namespace pagersim {
namespace {

constexpr const char* kName = "libpagersim-preload.so";

constexpr int kOwnWordSize = static_cast<int>(sizeof(void*)) * 8;
constexpr int kOtherWordSize = kOwnWordSize == 32 ? 64 : 32;

// What the loader of a program puts in the place of this, and what it may be: ld.so(8).
constexpr const char* kForEach = "$LIB";
struct LoaderFolder {
    int word_size;
    const char* name;
};
constexpr LoaderFolder kLoaderFolders[] = {
    {32, "lib"},
    {32, "lib32"},
    {32, "lib/i386-linux-gnu"},
    {64, "lib64"},
    {64, "lib/x86_64-linux-gnu"},
};

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

// "/usr/lib/libpagersim-preload-64.so".
std::string BesideFor(int word_size, const std::string& preload) {
    const std::string folder = preload.substr(0, preload.rfind('/') + 1);
    return folder + "libpagersim-preload-" + std::to_string(word_size) + ".so";
}

void Link(const std::string& target, const std::string& link) {
    std::filesystem::create_directories(std::filesystem::path(link).parent_path());
    std::filesystem::create_symlink(std::filesystem::absolute(target), link);
}

void LinkForLoader(int word_size, const std::string& preload, const std::string& folder) {
    for (const LoaderFolder& each : kLoaderFolders) {
        if (each.word_size == word_size) {
            Link(preload, folder + "/" + each.name + "/preload.so");
        }
    }
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

std::string PreloadList(const std::string& preload, const std::string& folder) {
    const std::string other = BesideFor(kOtherWordSize, preload);
    std::string path = preload;
    if (IsReadable(other)) {
        LinkForLoader(kOwnWordSize, preload, folder);
        LinkForLoader(kOtherWordSize, other, folder);
        path = folder + "/" + kForEach + "/preload.so";
    } else if (path.find_first_of(" :") != std::string::npos) {
        path = folder + "/preload.so";
        Link(preload, path);
    }
    std::string list = OwnSanitizer();
    AppendTo(list, path);
    const char* const already = std::getenv("LD_PRELOAD");
    AppendTo(list, already == nullptr ? "" : already);
    return list;
}

bool Serves(const std::string& list, int word_size) {
    if (list.find(kForEach) != std::string::npos) {
        return word_size != 0;
    }
    std::istringstream libraries(list);
    for (std::string each; std::getline(libraries, each, ':');) {
        if (!IsSanitizer(each)) {
            return word_size != 0 && WordSizeOf(each) == word_size;
        }
    }
    return false;
}

}  // namespace pagersim
