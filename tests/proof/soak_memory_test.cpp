// Tests of the soak's growth check: the soak is worth what it notices.
#include "tests/proof/soak_memory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <memory>

namespace proof::soak {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr int kDays = 30;
constexpr int kHours = kDays * 24;
constexpr long kPagesAnHour = 37;
constexpr long kHeap = 300000;

// A month as the soak samples it: each hour with the engine up; once a day, and at the end, with
// the engine down. `change` gets each sample before it is judged.
std::vector<std::string> GrowthOfAMonth(const std::function<void(Sample&)>& change) {
    std::vector<Sample> samples;
    const auto add = [&](int hour, bool engine_up) {
        Sample sample;
        sample.hour = hour;
        sample.engine_up = engine_up;
        sample.pages_sent = hour * kPagesAnHour;
        sample.bytes_in_use = kHeap + (engine_up ? 100000 : 0);
        sample.resident_pages = 2000;
        sample.descriptors = engine_up ? 18 : 7;
        change(sample);
        samples.push_back(sample);
    };
    for (int hour = 1; hour <= kHours; ++hour) {
        add(hour, true);
        if (hour == 1 || hour % 24 == 3) {
            add(hour, false);
        }
    }
    add(kHours + 24, false);
    return Growth(samples);
}

TEST(SoakGrowth, HasNothingAgainstAMonthThatStaysTheSame) {
    EXPECT_THAT(GrowthOfAMonth([](Sample&) {}), IsEmpty());
}

TEST(SoakGrowth, NoticesASmallestBlockAPage) {
    constexpr long kSmallestBlock = 16;
    const auto leaks = [](Sample& sample) {
        sample.bytes_in_use += sample.pages_sent * kSmallestBlock;
    };
    EXPECT_THAT(GrowthOfAMonth(leaks), ElementsAre(StartsWith("heap, engine down,")));
}

// What is there once, however late it comes.
TEST(SoakGrowth, LetsTheHeapsCachesVary) {
    const auto varies = [](long bytes) {
        return GrowthOfAMonth([bytes](Sample& sample) {
            sample.bytes_in_use += sample.hour > kHours / 2 ? bytes : 0;
        });
    };
    EXPECT_THAT(varies(8 * 1024), IsEmpty());
    EXPECT_THAT(varies(-8 * 1024), IsEmpty());
    EXPECT_THAT(varies(1024 * 1024), ElementsAre(StartsWith("heap, engine down,")));
}

// Pending pages take memory while the engine is up.
TEST(SoakGrowth, LooksAtTheHeapWhileTheEngineIsDown) {
    EXPECT_THAT(GrowthOfAMonth([](Sample& sample) {
                    sample.bytes_in_use += sample.engine_up ? sample.hour * 10000 : 0;
                }),
                IsEmpty());
}

TEST(SoakGrowth, NoticesADescriptorADay) {
    const auto leaks = [](Sample& sample) { sample.descriptors += sample.hour / 24; };
    EXPECT_THAT(GrowthOfAMonth(leaks), ElementsAre(StartsWith("descriptors, engine down, from 7"),
                                                   StartsWith("descriptors from ")));
}

TEST(SoakGrowth, NoticesASingleDescriptor) {
    EXPECT_THAT(GrowthOfAMonth([](Sample& sample) {
                    sample.descriptors += sample.engine_up && sample.hour > kHours - 2 ? 1 : 0;
                }),
                ElementsAre("descriptors from 18 to 19"));
    EXPECT_THAT(GrowthOfAMonth([](Sample& sample) {
                    sample.descriptors += !sample.engine_up && sample.hour > kHours ? 1 : 0;
                }),
                ElementsAre("descriptors, engine down, from 7 to 8"));
}

TEST(SoakGrowth, NoticesResidentMemory) {
    const auto grows = [](long pages) {
        return GrowthOfAMonth([pages](Sample& sample) {
            sample.resident_pages += sample.hour > kHours - 24 ? pages : 0;
        });
    };
    EXPECT_THAT(grows(256), IsEmpty()) << "a megabyte is the system's own";
    EXPECT_THAT(grows(257), ElementsAre("resident pages from 2000 to 2257"));
}

TEST(SoakGrowth, NeedsTwoSamplesWithTheEngineDown) {
    EXPECT_THAT(Growth({}), ElementsAre("too few samples"));
    EXPECT_THAT(Growth({Sample{1, false, 0, 0, 0, 0}, Sample{2, true, 0, 0, 0, 0}}),
                ElementsAre("too few samples"));
}

// What is measured is what is there.
TEST(SoakSample, SeesADescriptorAndABlock) {
    const Sample before = TakeSample(1, true, 5, 0);
    EXPECT_EQ(1, before.hour);
    EXPECT_TRUE(before.engine_up);
    EXPECT_EQ(5, before.pages_sent);
    EXPECT_GT(before.resident_pages, 0);

    constexpr long kKept = 4096L * 100;
    EXPECT_LT(TakeSample(1, true, 5, kKept).resident_pages, before.resident_pages)
        << "what is kept by rule doesn't count";

    const int descriptor = dup(STDOUT_FILENO);
    EXPECT_EQ(before.descriptors + 1, TakeSample(1, true, 5, 0).descriptors);
    close(descriptor);
    EXPECT_EQ(before.descriptors, TakeSample(1, true, 5, 0).descriptors);

#ifndef PAGERFWD_SANITIZED  // a sanitizer has another heap
    constexpr long kBlock = 5000;
    const long without = TakeSample(1, true, 5, 0).bytes_in_use;
    const auto block = std::make_unique<char[]>(kBlock);
    EXPECT_GE(TakeSample(1, true, 5, 0).bytes_in_use, without + kBlock);
    EXPECT_LT(TakeSample(1, true, 5, kBlock).bytes_in_use, without + kBlock)
        << "what is kept by rule doesn't count";
#endif
}

}  // namespace
}  // namespace proof::soak
