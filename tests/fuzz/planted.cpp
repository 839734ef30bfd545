// A rule that is broken on purpose: scripts/test sees that the fuzzer finds it and says so.
#include "tests/fuzz/input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Expect(fuzz::View(data, size).find("??") == std::string_view::npos,
                 "nobody asks twice (planted)");
    return 0;
}
