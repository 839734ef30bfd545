// Waiting for an answer: what it costs, and how soon an answer is noticed, with the select of our
// own host against the system's.
#include <sys/select.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

#include "bench/device.h"
#include "bench/folder.h"
#include "bench/measure.h"
#include "bench/real_line.h"
#include "host/platform/patient_select.h"
#include "host/store/pool.h"
#include "host/store/schema.h"
#include "linux/win_serial.h"
#include "modem/COMHdl.h"

namespace {

bool is_patient = false;

}  // namespace

// The library is linked into this program, and asks this instead of the system.
extern "C" int __real_select(int limit, fd_set* read, fd_set* write, fd_set* except,
                             timeval* timeout);
extern "C" int __wrap_select(int limit, fd_set* read, fd_set* write, fd_set* except,
                             timeval* timeout);

extern "C" int __wrap_select(int limit, fd_set* read, fd_set* write, fd_set* except,
                             timeval* timeout) {
    return is_patient ? host::PatientSelect(__real_select, limit, read, write, except, timeout)
                      : __real_select(limit, read, write, except, timeout);
}

namespace bench {
namespace {

// A handler of modems with a port, whose far end is this program's.
struct Waiting {
    explicit Waiting(bool patient) {
        is_patient = patient;
        StandIn(pty.Device());
        port = CreateFile("COM1");
        SetCommMask(port, EV_RXCHAR);
    }
    ~Waiting() {
        CloseHandle(port);
        host::CloseDatabases();
    }
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;

    static std::string MakeDatabase(const Folder& folder) {
        host::Connection database(folder.File("site.db"), host::Connection::Mode::kCreate);
        host::CreateTables(database);
        return database.Path();
    }

    const Folder folder;
    CCOMHdl handler{MakeDatabase(folder).c_str()};
    const Pty pty;
    HANDLE port = nullptr;
};

Run Wait(bool patient) {
    return [patient](benchmark::State& state) {
        for ([[maybe_unused]] auto _ : state) {
            Waiting waiting(patient);
            const double used = ProcessorSecondsNow();
            waiting.handler.WaitString(waiting.port, "never said", 1000, false);
            SetSeconds(state, ProcessorSecondsNow() - used);
        }
    };
}

// From the byte that completes an answer to the end of the wait for it, in seconds.
double Notice(Waiting& waiting) {
    double said = 0;
    std::thread modem([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        said = SecondsNow();
        [[maybe_unused]] const ssize_t count = write(waiting.pty.Master(), "OK", 2);
    });
    waiting.handler.WaitString(waiting.port, "OK", 10000, false);
    const double noticed = SecondsNow();
    modem.join();
    return noticed - said;
}

Run NoticeAsARule(bool patient) {
    return [patient](benchmark::State& state) {
        for ([[maybe_unused]] auto _ : state) {
            Waiting waiting(patient);
            std::array<double, 100> seconds{};
            std::generate(seconds.begin(), seconds.end(), [&] { return Notice(waiting); });
            const auto middle = seconds.begin() + seconds.size() / 2;
            std::nth_element(seconds.begin(), middle, seconds.end());
            SetSeconds(state, *middle);
        }
    };
}

}  // namespace
}  // namespace bench

void RegisterRows() {
    bench::Compare("processor time of 1 s waiting for an answer", bench::Wait(true),
                   bench::Wait(false), bench::Length::kOnce);
    bench::Compare("noticing an answer, median of 100", bench::NoticeAsARule(true),
                   bench::NoticeAsARule(false), bench::Length::kOnce);
}
