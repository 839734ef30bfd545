// The cells of pagerstate, and of an event's PagerState, with the words that operators read.
#ifndef PAGERFWD_HOST_STORE_TABLES_STATES_H
#define PAGERFWD_HOST_STORE_TABLES_STATES_H

#include <string>
#include <string_view>

namespace host {

inline constexpr const char* kStateNew = "0";
inline constexpr const char* kStateAcknowledged = "1";
inline constexpr const char* kStateBeingPaged = "2";
inline constexpr const char* kStateOffLimit = "3";
inline constexpr const char* kStateDone = "4";

inline std::string StateWord(std::string_view state) {
    if (state.empty() || state == kStateNew) {
        return "new";
    }
    if (state == kStateAcknowledged) {
        return "acknowledged";
    }
    if (state == kStateBeingPaged) {
        return "being paged";
    }
    if (state == kStateOffLimit) {
        return "off limit";
    }
    return state == kStateDone ? "done" : "state " + std::string(state);
}

}  // namespace host

#endif
