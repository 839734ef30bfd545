// Building centres. Tested by tests/unit/sim/exchange_file_test.cpp.
#include "sim/file/build_exchange.h"

#include "sim/centres/ntt_exchange.h"
#include "sim/centres/signal_service.h"

namespace pagersim {
namespace {

struct MakeCentre {
    std::time_t start;

    std::unique_ptr<Centre> operator()(const TapOptions& options) const {
        return std::make_unique<TapCentre>(options);
    }
    std::unique_ptr<Centre> operator()(UcpOptions options) const {
        options.start = start;
        return std::make_unique<UcpCentre>(options);
    }
    std::unique_ptr<Centre> operator()(const PlainOptions& options) const {
        return std::make_unique<PlainService>(options);
    }
    std::unique_ptr<Centre> operator()(const NttOptions&) const {
        return std::make_unique<NttExchange>();
    }
    std::unique_ptr<Centre> operator()(const SignalOptions&) const {
        return std::make_unique<SignalService>();
    }
};

}  // namespace

Subscriber BuildSubscriber(const CentreEntry& entry, std::time_t start) {
    Subscriber subscriber = entry.subscriber;
    subscriber.make_centre = [options = entry.options, faults = entry.faults, start] {
        return std::make_unique<FaultyCentre>(std::visit(MakeCentre{start}, options), faults);
    };
    return subscriber;
}

std::string PortName(int com) {
    return "COM " + std::to_string(com);
}

}  // namespace pagersim
