// The time zone of tests on the host. Their times are winter's, in which the zone with summer time,
// that their second run has, shows the same as UTC.
#ifndef PAGERFWD_TESTS_SUPPORT_ZONE_H
#define PAGERFWD_TESTS_SUPPORT_ZONE_H

#include <cstdlib>
#include <ctime>

namespace test_support {

inline void UseZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
}

// PAGERFWD_TEST_ZONE, or UTC where it isn't set.
inline void UseTestZone() {
    const char* const zone = std::getenv("PAGERFWD_TEST_ZONE");
    UseZone(zone == nullptr ? "UTC" : zone);
}

// By rules, so that no table of zones is needed. In 2001 its nights are 25 March and 28 October.
inline constexpr const char* kCentralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";

}  // namespace test_support

#endif
