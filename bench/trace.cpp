// The paging trace: a line written, and a call while it is off.
#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "bench/folder.h"
#include "bench/measure.h"
#include "linux/XString.h"
#include "modem/COMHdl.h"
#include "modem/trace.h"

namespace bench {
namespace {

constexpr const char* kLine = "10:20:30\tCheck4DialThreadLoop: duty phone\n\n";

// In a folder of its own, since the trace lies in the working directory.
class TraceFolder {
 public:
    explicit TraceFolder(bool on) : before_(std::filesystem::current_path()) {
        std::filesystem::current_path(folder_.Path());
        CCOMHdl::PageProtocol = on ? CCOMHdl::kTracingOn : CCOMHdl::kTracingOff;
    }
    ~TraceFolder() {
        CCOMHdl::PageProtocol = CCOMHdl::kTracingOff;
        std::filesystem::current_path(before_);
    }
    TraceFolder(const TraceFolder&) = delete;
    TraceFolder& operator=(const TraceFolder&) = delete;

 private:
    Folder folder_;
    const std::filesystem::path before_;
};

void WriteBare() {
    const int file = open("pageprot.txt", O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    const ssize_t written = write(file, kLine, std::strlen(kLine));
    benchmark::DoNotOptimize(written);
    close(file);
}

template <typename Work>
Run WithTrace(bool on, Work work) {
    return [on, work](benchmark::State& state) {
        const TraceFolder folder(on);
        for ([[maybe_unused]] auto _ : state) {
            work();
        }
    };
}

void TraceFormatted() {
    TraceUnlocked("Check4DialThreadLoop: %s\n", "duty phone");
}

}  // namespace
}  // namespace bench

void RegisterRows() {
    using namespace bench;
    Compare("trace on: a line (reference: open, write, close)", WithTrace(true, TraceFormatted),
            WithTrace(true, WriteBare));
    Compare("trace off: a call with a format (reference: formatting)",
            WithTrace(false, TraceFormatted), WithTrace(false, [] {
                CString text;
                text.Format("Check4DialThreadLoop: %s\n", "duty phone");
                benchmark::DoNotOptimize(text);
            }));
    Compare("trace off: a call with a fixed text (reference: copying)",
            WithTrace(false, [] { CCOMHdl::WritePageProtocolEntry("TransMsg: jy + rn"); }),
            WithTrace(false, [] {
                const CString text("TransMsg: jy + rn");
                benchmark::DoNotOptimize(text);
            }));
}
