// Small, fixed pieces of work for counting instructions: `bench_counted tap_block` under
// valgrind --tool=callgrind --toggle-collect=CountedWork. Without a name it lists them.
#include <pagerfwd/pagerfwd.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "bench/folder.h"
#include "bench/scale_site.h"
#include "engine/pager_hdl.h"
#include "host/store/pool.h"
#include "linux/XList.h"
#include "linux/XString.h"
#include "modem/COMHdl.h"
#include "modem/printable_form.h"
#include "modem/tap_block.h"
#include "modem/trace.h"
#include "modem/ucp_frame.h"

namespace bench {
namespace {

constexpr int kRounds = 100;
constexpr int32_t kPages = 1000;
constexpr const char* kMessage =
    "operators/Critical/PLANT-SRV-2/Boiler 2: the pressure is 9.3 bar, the limit is 9.0 bar";

using Work = std::function<void()>;

// The engine with its pages, and no worker.
class Engine {
 public:
    Engine() {
        MakeSite(database_, kPages);
        info_.dbName = database_.data();
        info_.alarmLogId = &alarm_;
        info_.alarmGroups = groups_;
        CPagerHdl::checkAlready = true;
    }
    ~Engine() {
        StopAlarmFwdPager();
        host::CloseDatabases();
    }
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    void Start() { StartAlarmFwdPager(&info_); }
    void QueueFresh() {
        for (int i = 1; i <= kRounds; ++i) {
            alarm_ = kPages + i;
            AlarmFwdPager(&info_, server_.data(), nullptr, pagers_, 1);
        }
    }
    static void AcknowledgeFresh() {
        for (int i = kRounds; i > 0; --i) {
            CPagerHdl::AckPagingAlarm(kPages + i);
        }
    }

 private:
    Folder folder_;
    std::string database_ = folder_.File("site.db");
    int32_t alarm_ = 0;
    std::string server_ = kServer;
    std::string group_ = kGroup;
    std::string pager_ = kPager;
    char* groups_[1] = {group_.data()};
    char* pagers_[1] = {pager_.data()};
    FwdSpecialInfoStr info_{};
};

template <typename Once>
Work Rounds(Once once) {
    return [once] {
        for (int i = 0; i < kRounds; ++i) {
            once();
        }
    };
}

Work EngineWork(const std::string& name) {
    const auto engine = std::make_shared<Engine>();
    if (name == "start_up_1000") {
        return [engine] { engine->Start(); };
    }
    engine->Start();
    if (name == "queue_100") {
        return [engine] { engine->QueueFresh(); };
    }
    engine->QueueFresh();
    return [engine] { engine->AcknowledgeFresh(); };
}

const std::map<std::string, std::function<Work()>>& Works() {
    static const std::map<std::string, std::function<Work()>> works = {
        {"text_append", [] { return Rounds([] { CString(kMessage) += kMessage; }); }},
        {"text_format",
         [] {
             return Rounds([] {
                 CString text;
                 text.Format("%s/%d/%s %04x", "operators", 7, kMessage, 255);
             });
         }},
        {"text_replace", [] { return Rounds([] { CString(kMessage).Replace("the ", "a "); }); }},
        {"list",
         [] {
             return Work([] {
                 CPtrList list;
                 for (int i = 0; i < kPages; ++i) {
                     list.AddTail(&list);
                 }
                 while (!list.IsEmpty()) {
                     list.RemoveHead();
                 }
             });
         }},
        {"tap_block", [] { return Rounds([] { CreateD1Block("5550111", kMessage); }); }},
        {"ucp_frame", [] { return Rounds([] { CreateUCPFrame("5550112", kMessage); }); }},
        {"ntt_code", [] { return Rounds([] { CCOMHdl::FormatNTT(kMessage); }); }},
        {"printable_form",
         [] { return Rounds([] { PrintableForm(kMessage, std::strlen(kMessage)); }); }},
        {"trace_off", [] { return Rounds([] { TraceUnlocked("Found: %s %d\n", kMessage, 7); }); }},
        {"start_up_1000", [] { return EngineWork("start_up_1000"); }},
        {"queue_100", [] { return EngineWork("queue_100"); }},
        {"acknowledge_100", [] { return EngineWork("acknowledge_100"); }},
    };
    return works;
}

}  // namespace
}  // namespace bench

// The one function whose instructions, and those of all that it calls, are counted.
extern "C" [[gnu::noinline]] void CountedWork(const std::function<void()>& work) {
    work();
}

int main(int argc, char** argv) {
    if (argc < 2) {
        for (const auto& [name, make] : bench::Works()) {
            std::printf("%s\n", name.c_str());
        }
        return 0;
    }
    const auto found = bench::Works().find(argv[1]);
    if (found == bench::Works().end()) {
        std::fprintf(stderr, "bench_counted: there is no work %s\n", argv[1]);
        return 2;
    }
    CountedWork(found->second());
    return 0;
}
