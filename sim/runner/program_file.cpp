// Looking at program files. Tested by tests/unit/sim/report_test.cpp.
#include "sim/runner/program_file.h"

#include <elf.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string_view>

namespace pagersim {
namespace {

constexpr int kScriptsDeep = 4;  // an interpreter may be a script itself

bool IsExecutable(const std::string& path) {
    return access(path.c_str(), X_OK) == 0;
}

std::string FirstLine(const std::string& path) {
    constexpr std::size_t kEnough = 256;
    std::ifstream file(path, std::ios::binary);
    std::string text(kEnough, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text.substr(0, text.find('\n'));
}

int ElfWordSize(std::string_view head) {
    if (head.size() <= EI_CLASS || head.substr(0, SELFMAG) != std::string_view(ELFMAG, SELFMAG)) {
        return 0;
    }
    return head[EI_CLASS] == ELFCLASS32 ? 32 : 64;
}

int WordSize(const std::string& path, int scripts_left) {
    const std::string head = FirstLine(path);
    if (head.compare(0, 2, "#!") != 0 || scripts_left == 0) {
        return ElfWordSize(head);
    }
    std::istringstream words(head.substr(2));
    std::string interpreter;
    words >> interpreter;
    return WordSize(interpreter, scripts_left - 1);
}

}  // namespace

std::optional<std::string> FindProgram(const std::string& command) {
    if (command.find('/') != std::string::npos) {
        return IsExecutable(command) ? std::optional(command) : std::nullopt;
    }
    const char* const path = std::getenv("PATH");
    std::istringstream folders(path == nullptr ? "/usr/bin:/bin" : path);
    for (std::string folder; std::getline(folders, folder, ':');) {
        const std::string candidate = (folder.empty() ? "." : folder) + "/" + command;
        if (IsExecutable(candidate)) {
            return candidate;
        }
    }
    return std::nullopt;
}

int WordSizeOf(const std::string& path) {
    return WordSize(path, kScriptsDeep);
}

}  // namespace pagersim
