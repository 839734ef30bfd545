// Running an editor. Tested by tests/unit/host/cli_hours_test.cpp.
#include "host/cli/text_editor.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "host/cli/program.h"
#include "host/cli/temporary_name.h"

namespace host {
namespace {

std::string Editor() {
    for (const char* variable : {"VISUAL", "EDITOR"}) {
        const char* const editor = std::getenv(variable);
        if (editor != nullptr && *editor != '\0') {
            return editor;
        }
    }
    return "vi";
}

// By the shell, since the variables may hold options; the file is no part of the command's text.
int Run(const std::string& editor, const std::string& path) {
    const std::string command = "exec " + editor + " \"$1\"";
    const pid_t child = fork();
    if (child == 0) {
        execl("/bin/sh", "sh", "-c", command.c_str(), "sh", path.c_str(), nullptr);
        _exit(127);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) < 0) {
        throw Failure(kCannot, "the editor can't be started: " + std::string(std::strerror(errno)));
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

EditedText::EditedText(const std::string& text) : path_(TemporaryName("pagerfwd-XXXXXX")) {
    const int file = mkstemp(path_.data());
    if (file < 0) {
        throw Failure(kCannot, path_ + ": can't be made: " + std::strerror(errno));
    }
    close(file);
    std::ofstream(path_, std::ios::binary) << text;
}

EditedText::~EditedText() {
    if (!kept_) {
        unlink(path_.c_str());
    }
}

std::string EditedText::Edit() const {
    const std::string editor = Editor();
    const int status = Run(editor, path_);
    if (status != 0) {
        throw Failure(kCannot, "the editor \"" + editor + "\" has failed (" +
                                   std::to_string(status) + "); name another with EDITOR");
    }
    return ReadFile(path_);
}

const std::string& EditedText::Keep() {
    kept_ = true;
    return path_;
}

}  // namespace host
