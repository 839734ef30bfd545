// Addresses of requests: any bytes are one or none, and one that is has a path, and no zero byte.
#include <string>

#include "host/web/http.h"
#include "tests/fuzz/input.h"

namespace {

using fuzz::Expect;

bool HasZero(const std::string& text) {
    return text.find('\0') != std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const auto target = host::ParseTarget(fuzz::View(data, size));
    if (!target) {
        return 0;
    }
    Expect(!target->path.empty() && target->path.front() == '/', "a path begins with a slash");
    Expect(!HasZero(target->path), "a path has no zero byte");
    for (const auto& [name, value] : target->query) {
        Expect(!HasZero(name) && !HasZero(value), "what is asked has no zero byte");
    }
    return 0;
}
