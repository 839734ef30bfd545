// An exchange in a shared world. Tested by tests/unit/sim/pagersim_test.cpp and
// pagersim_commands_test.cpp.
#include "sim/server/served_exchange.h"

#include <memory>
#include <utility>

#include "sim/file/build_exchange.h"
#include "sim/file/clock_file.h"
#include "sim/phone/modem.h"

namespace pagersim {

ServedExchange::ServedExchange(WorldServer& world, const ExchangeFile& file, std::time_t start,
                               std::string clock, User user)
    : world_(world), start_(start), clock_(std::move(clock)), user_(std::move(user)) {
    for (const CentreEntry& centre : file.centres) {
        exchange_.Add(BuildSubscriber(centre, start));
    }
    for (const LineEntry& line : file.lines) {
        world.AddLine(line.com, std::make_unique<Modem>(PortName(line.com), line.modem, exchange_,
                                                        static_cast<Recorder&>(*this)));
        Plan(line);
    }
    for (const PlannedCommand& command : file.commands) {
        Plan(command);
    }
}

ServedExchange::~ServedExchange() {
    ForgetCommands();
    for (int com = 1; com <= kLines; ++com) {
        world_.RemoveLine(com);
    }
}

void ServedExchange::Plan(const LineEntry& line) {
    if (!line.IsThereAt(start_)) {
        world_.LineOn(line.com)->PlugOut();
    }
    PlanAt(line.there_from, [this, com = line.com] { world_.LineOn(com)->PlugIn(); });
    PlanAt(line.there_until, [this, com = line.com] { world_.LineOn(com)->PlugOut(); });
}

// What has passed has been.
void ServedExchange::PlanAt(std::time_t when, std::function<void()> what) {
    if (when > start_) {
        world_.Events().Add(std::chrono::seconds(when - start_), nullptr, std::move(what));
    }
}

// Those whose time has passed ran in the run before this one.
void ServedExchange::Plan(const PlannedCommand& command) {
    if (command.time > start_) {
        world_.Events().Add(std::chrono::seconds(command.time - start_), this,
                            [this, run = command.run] { Run(run); });
    }
}

void ServedExchange::Run(const std::string& command) {
    Record({Now(), "", "at", EventKind::kNotes, command});
    user_.runs(command);
}

void ServedExchange::Record(const Event& event) {
    user_.happens(event);
    Advance(event.at);
}

Milliseconds ServedExchange::Now() const {
    return std::chrono::duration_cast<Milliseconds>(world_.Now());
}

void ServedExchange::Advance(Milliseconds now) {
    const std::time_t instant = NextSecond(start_, now);
    if (!clock_.empty() && instant != written_) {
        AdvanceClock(clock_, instant);
    }
    written_ = instant;
}

}  // namespace pagersim
