// Loading of the library. Tested by tests/unit/host/cli_test.cpp.
#include "host/library/library.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace host {
namespace {

constexpr const char* kFileName = "libPagerFwd.so";

std::string ProgramFolder() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        throw LibraryError(
            "/proc doesn't say where this program lies; name the library with "
            "--library FILE");
    }
    return program.parent_path().string();
}

std::string LastError() {
    const char* error = dlerror();
    return error == nullptr ? "unknown reason" : error;
}

// In this order, when the program lies in `folder`.
std::vector<std::string> LibraryCandidates(const std::string& folder) {
    return {folder + "/" + kFileName, folder + "/../lib/" + kFileName,
            folder + "/" PAGERFWD_LIBRARY_FROM_PROGRAM "/" + kFileName};
}

// A name without a slash would be looked for along paths that others may have set.
std::string Named(const std::string& path) {
    if (path.find('/') == std::string::npos) {
        throw LibraryError("--library " + path + ": a file is named by its path, such as ./" +
                           path);
    }
    return path;
}

// The first that is there, or the last, for the message to name where it belongs.
std::string FirstThere(const std::vector<std::string>& candidates) {
    for (const std::string& candidate : candidates) {
        std::error_code none;
        if (std::filesystem::exists(candidate, none)) {
            return candidate;
        }
    }
    return candidates.back();
}

std::string FileOf(const std::string& path) {
    return path.empty() ? FirstThere(LibraryCandidates(ProgramFolder())) : Named(path);
}

[[noreturn]] void CannotBeLoaded(const std::string& why) {
    throw LibraryError("the library can't be loaded: " + why + "; name it with --library FILE");
}

// All names are resolved at once, so that a function this program lacks shows now and not in the
// middle of a page.
void* Load(const std::string& file) {
    void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (library == nullptr) {
        CannotBeLoaded(LastError());
    }
    return library;
}

template <typename Function>
void Resolve(void* library, const char* name, Function& function) {
    void* const found = dlsym(library, name);
    if (found == nullptr) {
        throw LibraryError(std::string("the library lacks a function: ") + LastError());
    }
    function = reinterpret_cast<Function>(found);
}

}  // namespace

Library::Library(const std::string& path) {
    void* const library = Load(FileOf(path));
    Resolve(library, "AlarmFwdPager", AlarmFwdPager);
    Resolve(library, "StartAlarmFwdPager", StartAlarmFwdPager);
    Resolve(library, "StopAlarmFwdPager", StopAlarmFwdPager);
    Resolve(library, "TestPager", TestPager);
    Resolve(library, "NXIsInTimeModel", NXIsInTimeModel);
}

void RequireLibraryFile(const std::string& path) {
    const std::string file = FileOf(path);
    if (access(file.c_str(), R_OK) != 0) {
        CannotBeLoaded(file + ": " + std::strerror(errno));
    }
}

}  // namespace host
