// The exchange file: lines with their modems, the centres that can be called, and what is expected.
// examples/exchange.toml explains each key.
#ifndef PAGERFWD_SIM_FILE_EXCHANGE_FILE_H
#define PAGERFWD_SIM_FILE_EXCHANGE_FILE_H

#include <ctime>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "sim/centres/plain_service.h"
#include "sim/centres/tap_centre.h"
#include "sim/centres/ucp_centre.h"
#include "sim/phone/exchange.h"
#include "sim/phone/faults.h"
#include "sim/phone/modem.h"

namespace pagersim {

struct LineEntry {
    int com = 0;                  // 1 to kLines
    std::time_t there_from = 0;   // until then the device can't be opened
    std::time_t there_until = 0;  // from then on it is gone; until there_from, if that is later
    ModemOptions modem;

    bool IsThereAt(std::time_t instant) const;
};

struct NttOptions {};
struct SignalOptions {};
using CentreOptions = std::variant<TapOptions, UcpOptions, PlainOptions, NttOptions, SignalOptions>;

struct CentreEntry {
    Subscriber subscriber;  // without make_centre
    CentreOptions options;
    Faults faults;
};

// A page that a centre is to receive.
struct Expectation {
    std::string centre, recipient, text;
};

// A command, and when it runs.
struct PlannedCommand {
    std::time_t time = 0;
    std::string run;
};

struct ExchangeFile {
    std::vector<LineEntry> lines;
    std::vector<CentreEntry> centres;
    std::vector<Expectation> expectations;
    std::vector<PlannedCommand> commands;

    // "exchange.toml:12: ..."; when there are any, the rest isn't to be used.
    std::vector<std::string> mistakes;
};

// Reads the file; one that can't be read is a mistake too.
ExchangeFile LoadExchangeFile(const std::string& path);

// The same from a text; `path` is only for the mistakes.
ExchangeFile ReadExchangeFile(std::string_view text, const std::string& path);

// As LoadExchangeFile, but throws std::runtime_error that tells all mistakes, where there are any.
ExchangeFile LoadSoundExchange(const std::string& path);

// In the order of the file.
std::vector<std::string> CentreNames(const ExchangeFile& file);

}  // namespace pagersim

#endif
