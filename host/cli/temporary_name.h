// Names for what lasts as long as a command.
#ifndef PAGERFWD_HOST_CLI_TEMPORARY_NAME_H
#define PAGERFWD_HOST_CLI_TEMPORARY_NAME_H

#include <filesystem>
#include <string>
#include <system_error>

#include "host/cli/program.h"

namespace host {

// For mkstemp and mkdtemp, which put something else in the place of its X: in the folder that
// TMPDIR names. Throws Failure where there is none.
inline std::string TemporaryName(const std::string& name) {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    if (error) {
        throw Failure(kCannot, "TMPDIR names no folder: " + error.message());
    }
    return (folder / name).string();
}

}  // namespace host

#endif
