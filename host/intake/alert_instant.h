// Instants as monitoring writes them (RFC 3339): "2001-01-08T10:00:00.123+01:00".
#ifndef PAGERFWD_HOST_INTAKE_ALERT_INSTANT_H
#define PAGERFWD_HOST_INTAKE_ALERT_INSTANT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace host {

struct AlertInstant {
    int64_t seconds = 0;  // since 1970
    int64_t nanoseconds = 0;
};
inline bool operator<(const AlertInstant& left, const AlertInstant& right) {
    return std::tie(left.seconds, left.nanoseconds) < std::tie(right.seconds, right.nanoseconds);
}

// None: it is none. What is finer than nanoseconds is left out.
std::optional<AlertInstant> ReadInstant(std::string_view text);

// In UTC, in one way for each instant: "2001-01-08T09:00:00.123Z".
std::string Written(const AlertInstant& instant);

}  // namespace host

#endif
