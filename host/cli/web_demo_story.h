// What happens at the site of the demo.
#ifndef PAGERFWD_HOST_CLI_WEB_DEMO_STORY_H
#define PAGERFWD_HOST_CLI_WEB_DEMO_STORY_H

#include <ctime>
#include <string>

namespace host {

inline constexpr const char* kDemoLines[] = {"north", "south", "west"};
inline constexpr int kDemoDays = 30;

// The site file; folder: where its devices are.
std::string DemoSite(const std::string& folder);
// When a day's trouble begins.
std::time_t DemoBegin(int day, std::time_t midnight);
// The exchange of a day, and what somebody does then: alarms that are raised, and acknowledged.
std::string DemoExchange(int day, std::time_t begin);
// The exchange from today on.
std::string DemoExchangeNow();
// What is raised at the beginning of a day, by a shell.
std::string DemoFirstAlarm(int day);

}  // namespace host

#endif
