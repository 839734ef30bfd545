// Opening files. Tested by tests/unit/host/open_files_test.cpp.
#include "host/process/open_files.h"

#include <fcntl.h>

#include "host/files/descriptor.h"

namespace host {

bool OpenFiles::AreRefused() {
    constexpr int kMostRefused = 1;
    const Descriptor any(open("/dev/null", O_RDONLY | O_CLOEXEC));
    refused_ = any.IsOpen() ? 0 : refused_ + 1;
    return refused_ > kMostRefused;
}

}  // namespace host
