// Memory and descriptors. Tested by soak_memory_test.cpp.
#include "tests/proof/soak_memory.h"

#include <malloc.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

namespace proof::soak {
namespace {

constexpr long kHalfABlock = 8;        // bytes: the smallest block of the heap is 16
constexpr long kHeapNoise = 8 * 1024;  // bytes that the heap's own caches vary by
constexpr long kResidentNoise = 256;   // pages: a megabyte
constexpr int kHoursOfDay = 24;

long ResidentPages() {
    long all = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> all >> resident;
    return resident;
}

int Descriptors() {
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return static_cast<int>(std::distance(begin(open), end(open))) - 1;  // the folder's own
}

template <typename Keep, typename Value>
auto Most(const std::vector<Sample>& samples, Keep keep, Value value) {
    decltype(value(samples.front())) most = 0;
    for (const Sample& sample : samples) {
        if (keep(sample)) {
            most = std::max(most, value(sample));
        }
    }
    return most;
}

void Compare(std::vector<std::string>& grown, const char* what, long first, long last, long noise) {
    if (last > first + noise) {
        grown.push_back(std::string(what) + " from " + std::to_string(first) + " to " +
                        std::to_string(last));
    }
}

}  // namespace

Sample TakeSample(int hour, bool engine_up, long pages_sent, long kept_bytes) {
    Sample sample;
    sample.hour = hour;
    sample.engine_up = engine_up;
    sample.pages_sent = pages_sent;
    sample.bytes_in_use = static_cast<long>(mallinfo2().uordblks) - kept_bytes;
    sample.resident_pages = ResidentPages();
    sample.descriptors = Descriptors();
    return sample;
}

std::vector<std::string> Growth(const std::vector<Sample>& samples) {
    std::vector<std::string> grown;
    std::vector<Sample> up;
    std::vector<Sample> down;
    std::partition_copy(samples.begin(), samples.end(), std::back_inserter(up),
                        std::back_inserter(down),
                        [](const Sample& sample) { return sample.engine_up; });
    if (up.empty() || down.size() < 2) {
        return {"too few samples"};
    }
    const Sample& first = down.front();
    const Sample& last = down.back();
    const long pages = last.pages_sent - first.pages_sent;
    Compare(grown, "heap, engine down,", first.bytes_in_use, last.bytes_in_use,
            kHeapNoise + pages * kHalfABlock);
    Compare(grown, "descriptors, engine down,", first.descriptors, last.descriptors, 0);

    const auto in_first = [](const Sample& each) { return each.hour <= kHoursOfDay; };
    const auto in_last = [&](const Sample& each) {
        return each.hour > up.back().hour - kHoursOfDay;
    };
    const auto resident = [](const Sample& each) { return each.resident_pages; };
    const auto open = [](const Sample& each) { return each.descriptors; };
    Compare(grown, "resident pages", Most(up, in_first, resident), Most(up, in_last, resident),
            kResidentNoise);
    Compare(grown, "descriptors", Most(up, in_first, open), Most(up, in_last, open), 0);
    return grown;
}

}  // namespace proof::soak
