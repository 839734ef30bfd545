// An alarm as it comes from outside, in UTF-8, before it is known to be one.
#ifndef PAGERFWD_HOST_ALARMS_INCOMING_H
#define PAGERFWD_HOST_ALARMS_INCOMING_H

#include <stdexcept>
#include <string>
#include <string_view>

#include "host/store/tables/alarm_keys.h"
#include "host/store/tables/alarm_log.h"
#include "host/text/encoding.h"

namespace host {

// What is left out has its default; a server, that of whoever takes it in.
struct IncomingAlarm {
    std::string text;
    std::string group = "ALARM/000";
    std::string severity = "critical";  // a word of the site file
    std::string server = {};
    std::string source = {};
    std::string key = {};
};

// What came can't be taken in: which field of it, and why not, in a sentence.
class BadField : public std::runtime_error {
 public:
    // Either may quote what came, which may be long: only the beginning is said.
    BadField(std::string_view field, std::string_view why);
    const std::string& Field() const { return field_; }

 private:
    std::string field_;
};

// Most bytes of each. A key stands in an index, whose entries have their limits.
inline constexpr size_t kLongestText = 128 * 1024;  // a group and a server, too
inline constexpr size_t kLongestSource = 128;
inline constexpr size_t kLongestKey = 512;
inline constexpr size_t kLongestComment = 1000;  // the name of who makes it, too

// As the tables have it: in the nearest letters of the encoding, see EncodeNearest. Throws BadField
// where the text is empty, the severity is none, or something is too long.
NewAlarm Checked(const IncomingAlarm& alarm, Encoding encoding);

// Throws BadField where what somebody says to an alarm is too long, or the name that he gives.
void CheckComment(const std::string& by, const std::string& comment);

// Throws BadField where the key is empty or either is too long or has control characters.
AlarmKey CheckedKey(const std::string& source, const std::string& key);

}  // namespace host

#endif
