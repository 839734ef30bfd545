// The library's trace. Tested by tests/e2e/test_page_test.cpp.
#include "host/line/trace_switch.h"

#include <fcntl.h>
#include <sys/types.h>

#include <cstdlib>
#include <string>

#include "host/files/shared_file.h"
#include "host/lines/line_folder.h"

namespace host {

void TurnTraceOn() {
    constexpr mode_t kOfOthers = 0007;
    Ownership ownership = OwnershipOf(".");
    ownership.mode &= ~kOfOthers;
    try {
        CloseToOthers(OpenOrMakeShared(kTraceFile, O_WRONLY, ownership));
    } catch (const FileError& error) {
        throw FileError(std::string("the trace can't be written in this folder: ") + error.what());
    }
    setenv("NX_PAGEPROT", "1", 1);
}

}  // namespace host
