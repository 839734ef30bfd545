// The exchange of a file, in a shared world: its lines with their modems, its centres, and the
// commands that run at moments of the clock.
#ifndef PAGERFWD_SIM_SERVER_SERVED_EXCHANGE_H
#define PAGERFWD_SIM_SERVER_SERVED_EXCHANGE_H

#include <ctime>
#include <functional>
#include <string>

#include "sim/file/exchange_file.h"
#include "sim/phone/exchange.h"
#include "sim/record/event.h"
#include "sim/server/world_server.h"

namespace pagersim {

// The clock file is written with each event, so that it is right also when this process is killed.
//
// Ownership  The world's lines refer to this, and end with it. The world outlives it.
class ServedExchange final : public Recorder {
 public:
    struct User {
        std::function<void(const Event&)> happens;
        std::function<void(const std::string&)> runs;  // a planned command
    };

    // The world begins at `start`; `clock` may be empty.
    ServedExchange(WorldServer& world, const ExchangeFile& file, std::time_t start,
                   std::string clock, User user);
    ~ServedExchange() override;
    ServedExchange(const ServedExchange&) = delete;
    ServedExchange& operator=(const ServedExchange&) = delete;

    void Record(const Event& event) override;

    // No command runs any more.
    void ForgetCommands() { world_.Events().Drop(this); }

    // The time that has passed without an event counts, too.
    void KeepClock() { Advance(Now()); }

 private:
    Milliseconds Now() const;
    void Advance(Milliseconds now);
    void Plan(const LineEntry& line);
    void Plan(const PlannedCommand& command);
    void PlanAt(std::time_t when, std::function<void()> what);
    void Run(const std::string& command);

    WorldServer& world_;
    const std::time_t start_;
    const std::string clock_;
    const User user_;
    std::time_t written_ = 0;
    Exchange exchange_;
};

}  // namespace pagersim

#endif
