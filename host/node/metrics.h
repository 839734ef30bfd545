// The engine's figures, in the text exposition format that node exporters collect from files.
//
// Threads    One.
#ifndef PAGERFWD_HOST_NODE_METRICS_H
#define PAGERFWD_HOST_NODE_METRICS_H

#include <cstdint>
#include <ctime>
#include <map>
#include <string>

#include "host/store/tables/sends.h"
#include "host/text/encoding.h"

namespace host {

struct Metrics {
    std::time_t started = 0;
    std::time_t heartbeat = 0;  // when all was as it should be, at last
    // Since the engine started. Sendings: by result, then by the port that was used.
    std::map<std::string, std::map<std::string, uint64_t>> sendings;
    std::map<std::string, uint64_t> ended;  // pages, by what they came to
    uint64_t given_up = 0;
    uint64_t line_seconds = 0;
    // Now.
    uint64_t pending = 0;
    std::map<std::string, std::time_t> last_success;  // by port

    void Count(const Send& send);
    // Over all ports.
    uint64_t Total(const std::string& result) const;
};

inline constexpr const char* kResultSent = "sent";
inline constexpr const char* kResultDialled = "dialled";
inline constexpr const char* kResultFailed = "failed";
inline constexpr const char* kResultOutsideHours = "outside_hours";

// ports: in the encoding of the tables; shown as UTF-8.
std::string AsText(const Metrics& metrics, Encoding encoding);

}  // namespace host

#endif
