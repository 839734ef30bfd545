// Alarms by source and key: what raises an alarm may say by them which of its alarms it is, and
// later that it is over.
//
//   alarm_source, alarm_key   whose it is, and which; UTF-8, whatever the site's encoding. A key
//                             may be empty: then it is no such alarm
//   times_raised              how often
//   raised_last               when last, in seconds since 1970
//   withdrawn                 when it was said to be over; 0: it is open
//   last_word_of              the alarm whose end it tells somebody; empty: it tells of no end
//
// Of one source and key only one alarm is open at a time: an index of the database sees to it.
//
// Requires   A write transaction, for what changes anything.
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_TABLES_ALARM_KEYS_H
#define PAGERFWD_HOST_STORE_TABLES_ALARM_KEYS_H

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "host/store/connection.h"

namespace host {

struct AlarmKey {
    std::string source;
    std::string key;
};

// The number of the one that is open. None: there is none, or the key is empty.
std::optional<std::string> OpenAlarmOf(Connection& connection, const AlarmKey& key);
// The last that there was of it, be it open or not.
std::optional<std::string> LastAlarmOf(Connection& connection, const AlarmKey& key);

struct KeyedAlarm {
    std::string number;
    std::string key;
    bool open = true;
};
// All of a source whose key begins so, in order.
std::vector<KeyedAlarm> AlarmsOfKeys(Connection& connection, const AlarmKey& begin);

// Counts that it was raised again. Its text is another from now on, unless it is over.
void RaiseAgain(Connection& connection, const std::string& number, const std::string& details,
                std::time_t now);

// It is over: nobody is paged for it any more. False: it was withdrawn before, or there is none.
bool Withdraw(Connection& connection, const std::string& number, std::time_t now);

// Makes a new alarm the last word of another.
void MakeLastWord(Connection& connection, const std::string& number, const std::string& of);
// Last words that have been sent and that nobody has acknowledged: there is nothing more to say.
std::vector<std::string> LastWordsSent(Connection& connection);

}  // namespace host

#endif
