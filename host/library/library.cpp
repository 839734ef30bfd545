// Loading of the library. Tested by tests/unit/host/cli_test.cpp.
#include "host/library/library.h"

#include <dlfcn.h>

#include <filesystem>
#include <system_error>

namespace host {
namespace {

constexpr const char* kFileName = "libPagerFwd.so";

std::string ProgramFolder() {
    std::error_code none;
    return std::filesystem::read_symlink("/proc/self/exe", none).parent_path().string();
}

std::string LastError() {
    const char* error = dlerror();
    return error == nullptr ? "unknown reason" : error;
}

// All names are resolved at once, so that a function this program lacks shows now and not in the
// middle of a page.
void* Load(const std::string& path) {
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (library == nullptr) {
        throw LibraryError("the library can't be loaded: " + LastError() +
                           "; name it with --library FILE");
    }
    return library;
}

// The first that is there, or the last, which the system's own search is left with.
std::string FirstThere(const std::vector<std::string>& candidates) {
    for (const std::string& candidate : candidates) {
        if (std::filesystem::exists(candidate)) {
            return std::filesystem::absolute(candidate).string();
        }
    }
    return candidates.back();
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

std::vector<std::string> LibraryCandidates(const std::string& folder) {
    return {folder + "/" + kFileName, folder + "/../lib/" + kFileName, kFileName};
}

Library::Library(const std::string& path) {
    const std::vector<std::string> said{path};
    void* const library =
        Load(FirstThere(path.empty() ? LibraryCandidates(ProgramFolder()) : said));
    Resolve(library, "AlarmFwdPager", AlarmFwdPager);
    Resolve(library, "StartAlarmFwdPager", StartAlarmFwdPager);
    Resolve(library, "StopAlarmFwdPager", StopAlarmFwdPager);
    Resolve(library, "TestPager", TestPager);
    Resolve(library, "NXIsInTimeModel", NXIsInTimeModel);
}

}  // namespace host
