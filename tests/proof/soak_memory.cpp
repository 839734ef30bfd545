// Memory and descriptors. Tested by soak_memory_test.cpp.
#include "tests/proof/soak_memory.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <system_error>

namespace proof::soak {
namespace {

constexpr long kHalfABlock = 8;        // bytes: the smallest block of the heap is 16
constexpr long kHeapNoise = 8 * 1024;  // bytes that the heap's own caches vary by
constexpr long kResidentNoise = 256;   // pages: a megabyte
constexpr int kHoursOfDay = 24;

constexpr const char* kThisProcess = "self";

long ResidentPages(const std::string& process) {
    long all = 0;
    long resident = 0;
    std::ifstream("/proc/" + process + "/statm") >> all >> resident;
    return resident;
}

int Descriptors(const std::string& process) {
    std::error_code gone;
    const std::filesystem::directory_iterator open("/proc/" + process + "/fd", gone);
    return static_cast<int>(std::distance(begin(open), end(open)));
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
    Sample sample = TakeSampleOf(kThisProcess, hour);
    --sample.descriptors;  // the look's own
    sample.engine_up = engine_up;
    sample.pages_sent = pages_sent;
    sample.bytes_in_use = static_cast<long>(mallinfo2().uordblks) - kept_bytes;
    sample.resident_pages -= kept_bytes / sysconf(_SC_PAGESIZE);
    return sample;
}

Sample TakeSampleOf(const std::string& process, int hour) {
    Sample sample;
    sample.hour = hour;
    sample.resident_pages = ResidentPages(process);
    sample.descriptors = Descriptors(process);
    return sample;
}

std::vector<std::string> GrowthSince(int hour, const std::vector<Sample>& up,
                                     const std::string& name) {
    std::vector<std::string> grown;
    const auto in_first = [=](const Sample& each) {
        return each.hour > hour && each.hour <= hour + kHoursOfDay;
    };
    const auto in_last = [&](const Sample& each) {
        return each.hour > up.back().hour - kHoursOfDay;
    };
    const auto resident = [](const Sample& each) { return each.resident_pages; };
    const auto open = [](const Sample& each) { return each.descriptors; };
    Compare(grown, (name + "resident pages").c_str(), Most(up, in_first, resident),
            Most(up, in_last, resident), kResidentNoise);
    Compare(grown, (name + "descriptors").c_str(), Most(up, in_first, open),
            Most(up, in_last, open), 0);
    return grown;
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
    const std::vector<std::string> while_up = GrowthSince(0, up);
    grown.insert(grown.end(), while_up.begin(), while_up.end());
    return grown;
}

}  // namespace proof::soak
