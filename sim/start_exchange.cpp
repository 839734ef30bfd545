// The exchange of a program around which this library is preloaded: built from the file that
// PAGERSIM_EXCHANGE names. Tested by tests/unit/sim/pagersim_test.cpp.
//
//   PAGERSIM_START   the wall clock's first instant, seconds since 1970
//   PAGERSIM_CLOCK   a file with the instant at which the program before this one ended
//   PAGERSIM_STEP    milliseconds that a look at the time on a quiet line takes
//   PAGERSIM_EVENTS  where the record goes
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

#include "sim/commands.h"
#include "sim/file/build_exchange.h"
#include "sim/file/clock_file.h"
#include "sim/file/exchange_file.h"
#include "sim/phone/exchange.h"
#include "sim/phone/modem.h"
#include "sim/record/event_stream.h"
#include "sim/start.h"
#include "sim/world/locked.h"
#include "sim/world/world.h"

namespace pagersim {
namespace {

std::string Environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

long long NumberIn(const char* name, long long otherwise) {
    const std::string value = Environment(name);
    return value.empty() ? otherwise : std::strtoll(value.c_str(), nullptr, 10);
}

// The record, and with each event the clock file: it is right also when the program is killed.
class ClockedStream : public EventStream {
 public:
    ClockedStream(std::string events, std::string clock, std::time_t start, Milliseconds begun)
        : EventStream(std::move(events), begun), clock_(std::move(clock)), start_(start) {}

    void Record(const Event& event) override {
        EventStream::Record(event);
        Advance(event.at);
    }

    void Advance(Milliseconds now) {
        const std::time_t instant = NextSecond(start_, now);
        if (!clock_.empty() && instant != written_) {
            AdvanceClock(clock_, instant);
        }
        written_ = instant;
    }

 private:
    const std::string clock_;
    const std::time_t start_;
    std::time_t written_ = 0;
};

// Lives as long as the process: the lines of the world refer to it.
struct RunningExchange {
    ClockedStream record;
    Exchange exchange;
};
RunningExchange* running = nullptr;

// Without its lines the program must not run: it would find no port, or wait for answers for ever.
[[noreturn]] void Refuse(const ExchangeFile& file) {
    for (const std::string& mistake : file.mistakes) {
        std::fprintf(stderr, "pagersim: %s\n", mistake.c_str());
    }
    constexpr int kUsageError = 2;
    _exit(kUsageError);
}

void PlugInLater(const LineEntry& entry, std::time_t start) {
    const Locked locked;
    TheWorld().LineOn(entry.com)->PlugOut();
    TheWorld().Threads().Events().Add(std::chrono::seconds(entry.there_from - start), nullptr,
                                      [com = entry.com] { TheWorld().LineOn(com)->PlugIn(); });
}

void StartWorld(const ExchangeFile& file, std::time_t start) {
    World& world = TheWorld();
    world.Start(start);
    world.SetStep(Milliseconds{NumberIn("PAGERSIM_STEP", Milliseconds{10}.count())});
    for (const CentreEntry& centre : file.centres) {
        running->exchange.Add(BuildSubscriber(centre, start));
    }
    for (const LineEntry& line : file.lines) {
        world.AddLine(line.com, std::make_unique<Modem>(PortName(line.com), line.modem,
                                                        running->exchange, running->record));
        if (line.there_from > start) {
            PlugInLater(line, start);
        }
    }
}

// Runs a command of the file. The clock file has this instant first: for the command, and for the
// program that comes next, should the command kill this one.
void RunPlanned(const PlannedCommand& command) {
    const auto now = std::chrono::duration_cast<Milliseconds>(TheWorld().Now());
    running->record.Record({now, "", "at", EventKind::kNotes, command.run});
    running->record.Advance(now);
    RunShell(command.run);
}

// Those whose time has passed ran in the program before this one.
void PlanCommands(const ExchangeFile& file, std::time_t start) {
    if (std::getenv(kIsCommand) != nullptr) {
        return;
    }
    const Locked locked;
    for (const PlannedCommand& command : file.commands) {
        if (command.time > start) {
            TheWorld().Threads().Events().Add(std::chrono::seconds(command.time - start), nullptr,
                                              [command] { RunPlanned(command); });
        }
    }
}

// A time that passes without an event counts too.
[[gnu::destructor]] void Leave() {
    if (running != nullptr) {
        running->record.Advance(std::chrono::duration_cast<Milliseconds>(TheWorld().Now()));
    }
}

}  // namespace

void StartExchangeFromEnvironment() {
    const ExchangeFile file = LoadExchangeFile(Environment("PAGERSIM_EXCHANGE"));
    if (!file.mistakes.empty()) {
        Refuse(file);
    }
    const std::string clock = Environment("PAGERSIM_CLOCK");
    const auto first = static_cast<std::time_t>(NumberIn("PAGERSIM_START", std::time(nullptr)));
    const std::time_t start = clock.empty() ? first : ReadClock(clock).value_or(first);
    const Milliseconds begun{(static_cast<Milliseconds::rep>(start) - first) * 1000};
    running = new RunningExchange{{Environment("PAGERSIM_EVENTS"), clock, start, begun}, {}};
    StartWorld(file, start);
    PlanCommands(file, start);
}

}  // namespace pagersim
