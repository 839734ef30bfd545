// The serial line driver over a pty.
#include <unistd.h>

#include <array>

#include "bench/measure.h"
#include "bench/real_line.h"
#include "linux/tty.h"

namespace bench {
namespace {

constexpr int kBytes = 100;  // what a modem's or a centre's answer has at most

struct Line {
    Line() : tty(tty_open(pty.Device().c_str(), nullptr, nullptr)) {
        tty_setup(tty, true, true, 9600, 8, 1, 'n');
    }
    ~Line() { tty_close(tty); }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    Pty pty;
    TtyLine* tty;
};

using Bytes = std::array<char, kBytes>;

// The bytes go through the pty; both ends are served by this thread.
template <typename Write, typename Read>
Run Through(Write write, Read read) {
    return [write, read](benchmark::State& state) {
        const Line line;
        Bytes sent{};
        sent.fill('x');
        Bytes got{};
        for ([[maybe_unused]] auto _ : state) {
            int count = write(line, sent);
            for (int arrived = 0; arrived < count;) {
                arrived += read(line, got);
            }
            benchmark::DoNotOptimize(got);
        }
        state.SetBytesProcessed(state.iterations() * kBytes);
    };
}

int WriteMaster(const Line& line, const Bytes& bytes) {
    return static_cast<int>(write(line.pty.Master(), bytes.data(), bytes.size()));
}
int ReadMaster(const Line& line, Bytes& bytes) {
    return static_cast<int>(read(line.pty.Master(), bytes.data(), bytes.size()));
}
int WriteSlave(const Line& line, const Bytes& bytes) {
    return static_cast<int>(write(line.pty.Slave(), bytes.data(), bytes.size()));
}
int ReadSlave(const Line& line, Bytes& bytes) {
    return static_cast<int>(read(line.pty.Slave(), bytes.data(), bytes.size()));
}

void CompareBytes() {
    Compare("serial line: sending 100 bytes",
            Through([](const Line& line,
                       const Bytes& bytes) { return tty_send(line.tty, bytes.data(), kBytes); },
                    ReadMaster),
            Through(WriteSlave, ReadMaster));
    Compare("serial line: receiving 100 bytes",
            Through(WriteMaster,
                    [](const Line& line, Bytes& bytes) {
                        return tty_receive(line.tty, bytes.data(), kBytes);
                    }),
            Through(WriteMaster, ReadSlave));
}

}  // namespace
}  // namespace bench

void RegisterRows() {
    bench::CompareBytes();
}
