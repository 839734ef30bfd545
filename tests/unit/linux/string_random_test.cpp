// CString against StringModel: random operations on a few texts that share with one another.
//
// After every operation all texts are compared with their models. A run is repeated by its seed:
// PAGERFWD_SEED=17 <program>.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "tests/unit/linux/string_operations.h"

namespace {

using string_operations::kCount;
using string_operations::kOperations;
using string_operations::Texts;

constexpr int kSteps = 160'000;
constexpr int kLeastSteps = 100'000;
constexpr int kLeastOfEach = 1'000;

unsigned Seed() {
    const char* seed = std::getenv("PAGERFWD_SEED");
    return seed != nullptr ? static_cast<unsigned>(std::strtoul(seed, nullptr, 10)) : 20010108;
}

TEST(RandomOperations, LeaveEveryTextAsItsModel) {
    const unsigned seed = Seed();
    std::printf("PAGERFWD_SEED=%u\n", seed);
    RecordProperty("seed", static_cast<int>(seed));

    std::mt19937 random(seed);
    Texts texts(
        [&random](int limit) { return std::uniform_int_distribution<int>(0, limit)(random); });
    std::vector<int> counts(kCount);
    for (int i = 0; i < kSteps; ++i) {
        const auto chosen = static_cast<size_t>(texts.Upto(static_cast<int>(kCount) - 1));
        kOperations[chosen].run(texts);
        ++counts[chosen];
        texts.ExpectToFitTheirModels();
        ASSERT_FALSE(HasFailure())
            << "after operation " << i << ", " << kOperations[chosen].name << "; seed " << seed;
        texts.KeepShort();
    }

    int total = 0;
    for (size_t i = 0; i < kCount; ++i) {
        EXPECT_LE(kLeastOfEach, counts[i]) << kOperations[i].name;
        total += counts[i];
    }
    EXPECT_LE(kLeastSteps, total);
}

}  // namespace
