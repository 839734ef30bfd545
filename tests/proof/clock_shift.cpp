// The clock of one host, set while its programs run: a library that is loaded before the others,
// and tells as the time of day that of the machine and as many seconds as the file says that
// CLOCK_SHIFT names. Clocks that only go on are left alone, as setting a clock leaves them.
#include <dlfcn.h>
#include <sys/time.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

std::time_t Shift() {
    const char* const name = std::getenv("CLOCK_SHIFT");
    FILE* const file = name == nullptr ? nullptr : std::fopen(name, "re");
    long shift = 0;
    if (file != nullptr) {
        if (std::fscanf(file, "%ld", &shift) != 1) {  // NOLINT(cert-err34-c): written by the test
            shift = 0;
        }
        std::fclose(file);
    }
    return shift;
}

template <typename Function>
Function Next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec* now) noexcept {
    static const auto next = Next<int (*)(clockid_t, timespec*)>("clock_gettime");
    const int result = next(clock, now);
    if (result == 0 && (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE)) {
        now->tv_sec += Shift();
    }
    return result;
}

time_t time(time_t* stored) noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (stored != nullptr) {
        *stored = now.tv_sec;
    }
    return now.tv_sec;
}

int gettimeofday(timeval* stored, void* /*zone*/) noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    *stored = {now.tv_sec, now.tv_nsec / 1000};
    return 0;
}
}
