// A database with many pending pages, each of an alarm of its own, all for one pager.
#ifndef PAGERFWD_BENCH_SCALE_SITE_H
#define PAGERFWD_BENCH_SCALE_SITE_H

#include <cstdint>
#include <string>

namespace bench {

inline constexpr const char* kPager = "duty phone";
inline constexpr const char* kGroup = "operators/003";
inline constexpr const char* kServer = "PLANT-SRV-2";

// Alarms that have no page yet, with the numbers behind those of the pending ones.
inline constexpr int32_t kFreshAlarms = 200;

// Makes the database: alarms 1 to pages + kFreshAlarms, pages pending for the first.
void MakeSite(const std::string& database, int32_t pages);

}  // namespace bench

#endif
