// What a session of SNPP asks of the site: whether somebody is to be let in, who can be paged, to
// page, and what became of a page.
//
// A message is one alarm, to all pagers that it names and to those that the routes give to the
// groups that it names. Its source is "snpp" and the pass code by which alone it can be asked for.
//
// Threads    Any.
// Errors     StoreError.
#ifndef PAGERFWD_HOST_SNPP_DESK_H
#define PAGERFWD_HOST_SNPP_DESK_H

#include <ctime>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/alarms/incoming.h"

namespace host {

// The group of what goes to pagers alone.
inline constexpr const char* kSnppGroup = "SNPP/000";

// Texts as they came: UTF-8, or in the encoding of the site.
struct SnppMessage {
    std::vector<std::string> to;  // pagers and groups
    std::string text;
    std::string from;                                 // the alarm's server
    std::string severity = IncomingAlarm().severity;  // a word
};

struct SnppTag {
    std::string number;  // of the alarm
    std::string pass;
};

struct SnppStatus {
    enum class Kind { kPending, kDelivered, kRead, kExpired };
    Kind kind = Kind::kPending;
    std::time_t at = 0;
    std::string words;  // in ASCII: "duty: pending"
};

class SnppDesk {
 public:
    explicit SnppDesk(std::string database) : database_(std::move(database)) {}

    // Whose token it is, if he may raise alarms.
    std::optional<std::string> NameOf(const std::string& token) const;

    // Whether it is a pager, or a group that a route to some pager names.
    bool Knows(const std::string& recipient) const;

    // Returned behind the commit. Throws BadField where it can't be an alarm.
    SnppTag Send(const SnppMessage& message) const;

    // None: there is no such message.
    std::optional<SnppStatus> StatusOf(const SnppTag& tag) const;

 private:
    const std::string database_;
};

}  // namespace host

#endif
