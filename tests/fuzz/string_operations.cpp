// String operations against their model: the fuzzer chooses what comes next.
#include "tests/unit/linux/string_operations.h"

#include <gtest/gtest.h>

#include "tests/fuzz/input.h"

// What the operations expect ends the process when it isn't so.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    testing::GTEST_FLAG(break_on_failure) = true;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    string_operations::Texts texts([&input](int limit) {
        const int number = limit < 256 ? input.Byte() : input.Byte() * 256 + input.Byte();
        return number % (limit + 1);
    });
    while (!input.AtEnd()) {
        const int last = static_cast<int>(string_operations::kCount) - 1;
        string_operations::kOperations[texts.Upto(last)].run(texts);
        texts.ExpectToFitTheirModels();
        texts.KeepShort();
    }
    return 0;
}
